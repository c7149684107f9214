#pragma once

#include "act/ActSession.h"
#include "act/AutomationBackend.h"

#include <QDialog>
#include <array>

class QCheckBox;
class QLabel;

namespace corvalent {

// frmIntegrate: a button that starts this program in the contact manager's toolbar, and an entry in its Tools
// menu, for each of its six views. Every box takes effect in the contact manager at once; Close offers to
// restart it so that it shows them.
class IntegrateWindow : public QDialog {
    Q_OBJECT
public:
    static constexpr int kViews = 6;
    static inline const QString kFailureMessage =
        QStringLiteral("Can't add icon or menu item automatically. You will need to proceed manually.");
    static inline const QString kRestartCaption = QStringLiteral("Restart");

    IntegrateWindow(ActSession& session, AutomationBackend& backend, QWidget* parent = nullptr);

    void Form_Load();
    void chkScreen_Click(int Index);
    void lblScreen_Click(int Index);
    void cmdOK_Click();
    void cmdCancel_Click();

    // What this program gives the contact manager to start it: its own executable, folder and installed icons.
    static ActSession::AuxCommand ProgramCommand();

signals:
    // The user agreed to restart the contact manager: the main window closes with the restart set.
    void restartRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void loadBoxes();

    ActSession& m_session;
    AutomationBackend& m_backend;
    std::array<QCheckBox*, 2 * kViews> m_boxes{};
    std::array<QLabel*, kViews> m_labels{};
    bool m_changed = false;
    qint32 m_addResult = 0;
};

} // namespace corvalent
