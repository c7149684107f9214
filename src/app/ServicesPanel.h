#pragma once

#include <QKeySequence>
#include <QString>
#include <QWidget>
#include <array>

class QListWidget;
class QPushButton;
class QToolButton;

namespace corvalent {

// The four service buttons (chkServices), their drop-down arrows (chkdropdown) and lists (lstServices). A button
// remembers a service through the settings file's "Buttons" section; pressing it makes that service the current
// one. The window does the rest of a press (capture, captions, layout) when serviceSelected arrives.
class ServicesPanel : public QWidget {
    Q_OBJECT
public:
    static constexpr int kButtons = 4;
    static constexpr int kCaptionLength = 22;
    static inline const QString kButtonsSection = QStringLiteral("Buttons");

    // `filling` is the window's flag that silences the click handlers while the program itself changes the
    // controls. The lists are children of `listParent`, so that an open list lies over the controls below.
    ServicesPanel(bool& filling, QWidget* listParent, QWidget* parent = nullptr);

    // The button GO is: it takes the focus when a service is pressed.
    void setGoButton(QPushButton* go) { m_go = go; }

    QPushButton* button(int index) const { return m_buttons.at(size_t(index)); }
    QToolButton* arrow(int index) const { return m_arrows.at(size_t(index)); }
    // Alt+1 to Alt+4 press the four buttons.
    static QKeySequence shortcut(int index);
    QString caption(int index) const;
    // The button that is down; -1 when none is.
    int pressedButton() const;
    // The full path of the current service file; "" until a button has been pressed.
    QString currentServiceFile() const { return m_serviceFile; }

    // The service file a button stands for: the Presets folder, the file name under its "Buttons" key, ".isf".
    static QString ButtonServiceFile(int index);
    // The display name of a button's service, whole; "" when the file is missing, which leaves the button inert.
    static QString ButtonServiceName(int index);

    // Presses the stored "Pressed" button again, without capturing: start-up captures afterwards.
    void Press_Button();
    // A service's file was renamed from `oldStem` to `newStem`: every button that stood for it stands for it again.
    void followRename(const QString& oldStem, const QString& newStem);
    // Writes the four captions from the settings file.
    void refreshCaptions();

    void chkServices_Click(int Index);
    void chkdropdown_MouseDown(int Index);
    void lstServices_GotFocus(int Index);
    void lstServices_LostFocus(int Index);
    void lstServices_Click(int Index);

signals:
    // A button was pressed and its service is now the current one.
    void serviceSelected(int index);
    // A button was pressed with another mouse button than the left one, or the context-menu key.
    void popupRequested(const QPoint& globalPos);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setChecked(QPushButton* button, bool checked);
    // Shows a service's display name on a button: cut to 22 characters, and whole in the tooltip when cut.
    void showCaption(int index, const QString& name);
    void placeList(int index);
    void setServiceFile(int index);

    bool& m_filling;
    QPushButton* m_go = nullptr;
    std::array<QPushButton*, kButtons> m_buttons{};
    std::array<QToolButton*, kButtons> m_arrows{};
    std::array<QListWidget*, kButtons> m_lists{};
    QString m_serviceFile;
};

} // namespace corvalent
