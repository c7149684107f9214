#pragma once

#include "grab/SmartDataCollector.h"

#include <QWidget>

class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace corvalent {

// frmSmartParser, "Smart Data Collector": a small always-on-top window beside the main window that shows the
// current line (txtCurrent), the lines still to come (txtGrabbed) and the two buttons that walk them (cmdUp next,
// cmdDown previous). It never takes the keyboard from the main window when it appears.
class SmartParserWindow : public QWidget {
    Q_OBJECT
public:
    // Loads `grabbed`, places itself to the left of `mainWindow`, centred on it vertically, and shows itself (the
    // caller need not call show()). Deletes itself when closed. With nothing to hand out it never shows and closes
    // as soon as the event loop runs again, so a caller that connects to unloaded() right away still hears of it.
    SmartParserWindow(const QString& grabbed, QWidget* mainWindow);
    ~SmartParserWindow() override;

    SmartDataCollector& collector() { return m_collector; }
    // What the main window's Grab buttons take while the collector is open.
    QString currentText() const;
    QString selectedText() const;
    // Tells the collector that the current line (or its selected part) went into a field.
    void RemoveText(bool bUserSelectedText);

signals:
    // The window is going away, whatever the reason (finished, closed by the user or by the main window); emitted
    // once. A window destroyed without being closed emits it from its destructor, so a receiver that is itself
    // being destroyed (the main window, its parent) should disconnect or close this window first.
    void unloaded();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void showState();
    void placeBeside(QWidget* mainWindow);

    SmartDataCollector m_collector;
    QLineEdit* m_current = nullptr;
    QPlainTextEdit* m_grabbed = nullptr;
    QPushButton* m_up = nullptr;
    QPushButton* m_down = nullptr;
    QString m_shownGrabbed; // what txtGrabbed holds, with CR LF line ends
    bool m_unloaded = false;
};

} // namespace corvalent
