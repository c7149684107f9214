#pragma once

#include "download/ManageServices.h"

#include <QDialog>

class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;

namespace corvalent {

// frmManage, "Download New Services": the server's services on the left, the installed ones on the right,
// Install and Delete between them, and, while a request runs, a busy pointer, a progress bar and Cancel.
// Deletes itself when closed.
class ManageWindow : public QDialog {
    Q_OBJECT
public:
    static inline const QString kNote = QStringLiteral(
        "If the connection fails, you may be using a proxy server. In this case, click the button below to access "
        "the server through your browser and manually download the files. See the User's manual for more "
        "details.");

    ManageWindow(const QString& presetsFolder, const QString& serverUrl, QWidget* parent = nullptr,
                 const TransferLimits& limits = {});
    ~ManageWindow() override;

    ManageServices& manage() { return m_manage; }

    void cmdFtp_Click();

protected:
    void closeEvent(QCloseEvent* event) override;
    // Escape closes the window as Close does.
    void reject() override;

private:
    void fillFiles();
    void fillPresets();
    void lstFiles_Click();
    void lstPresets_Click();
    void setBusy(bool busy);

    ManageServices m_manage;
    QListWidget* m_files = nullptr;
    QListWidget* m_presets = nullptr;
    QPushButton* m_connect = nullptr;
    QPushButton* m_get = nullptr;
    QPushButton* m_delete = nullptr;
    QProgressBar* m_progress = nullptr;
    QPushButton* m_cancel = nullptr;
    QLabel* m_status = nullptr;
    bool m_busyPointer = false;
};

} // namespace corvalent
