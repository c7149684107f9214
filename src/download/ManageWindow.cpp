#include "download/ManageWindow.h"

#include "common/ErrorTrap.h"
#include "common/Launcher.h"
#include "common/ProgramFolder.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace corvalent {

ManageWindow::ManageWindow(const QString& presetsFolder, const QString& serverUrl, QWidget* parent,
                           const TransferLimits& limits)
    : QDialog(parent), m_manage(presetsFolder, serverUrl, limits)
{
    setObjectName(QStringLiteral("frmManage"));
    setWindowTitle(QStringLiteral("Download New Services"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto* frame = new QGroupBox(QStringLiteral("Download new services:"), this);
    frame->setObjectName(QStringLiteral("fra1"));
    auto button = [frame](const char* name, const QString& caption) {
        auto* b = new QPushButton(caption, frame);
        b->setObjectName(QLatin1String(name));
        b->setAutoDefault(false);
        return b;
    };
    auto list = [frame](const char* name, const QString& caption, QAbstractItemView::SelectionMode mode) {
        auto* l = new QListWidget(frame);
        l->setObjectName(QLatin1String(name));
        l->setSelectionMode(mode);
        auto* label = new QLabel(caption, frame);
        label->setBuddy(l);
        return std::pair{label, l};
    };
    m_connect = button("cmdConnect", QStringLiteral("Get List from Server"));
    m_connect->setToolTip(m_manage.serverUrl());
    auto [filesLabel, files] = list("lstFiles", QStringLiteral("Available Presets:"),
                                    QAbstractItemView::ExtendedSelection);
    auto [presetsLabel, presets] = list("lstPresets", QStringLiteral("Installed Presets:"),
                                        QAbstractItemView::SingleSelection);
    m_files = files;
    m_presets = presets;
    m_get = button("cmdGet", QStringLiteral("Install >>"));
    m_delete = button("cmdDelete", QStringLiteral("Delete"));
    auto* note = new QLabel(kNote, frame);
    note->setObjectName(QStringLiteral("lblNote"));
    note->setWordWrap(true);
    auto* ftp = button("cmdFtp", QStringLiteral("Manual connection"));

    auto* grid = new QGridLayout(frame);
    grid->addWidget(m_connect, 0, 0);
    grid->addWidget(filesLabel, 1, 0);
    grid->addWidget(presetsLabel, 1, 2);
    grid->addWidget(m_files, 2, 0, 3, 1);
    grid->addWidget(m_get, 2, 1);
    grid->addWidget(m_delete, 3, 1);
    grid->addWidget(m_presets, 2, 2, 3, 1);
    grid->addWidget(note, 5, 0, 1, 3);
    grid->addWidget(ftp, 6, 0);

    m_progress = new QProgressBar(this);
    m_progress->setObjectName(QStringLiteral("prgTransfer"));
    m_cancel = new QPushButton(tr("Cancel"), this);
    m_cancel->setObjectName(QStringLiteral("cmdCancel"));
    m_cancel->setAutoDefault(false);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lblStatus"));
    m_status->setWordWrap(true);
    auto* ok = new QPushButton(QStringLiteral("&Close"), this);
    ok->setObjectName(QStringLiteral("cmdOK"));

    auto* busyRow = new QHBoxLayout;
    busyRow->addWidget(m_progress, 1);
    busyRow->addWidget(m_cancel);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_status, 1);
    bottom->addWidget(ok);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(frame);
    layout->addLayout(busyRow);
    layout->addLayout(bottom);
    setBusy(false);

    connect(m_connect, &QPushButton::clicked, &m_manage, &ManageServices::cmdConnect_Click);
    connect(m_get, &QPushButton::clicked, this, [this] {
        QStringList selected;
        // From the top, as the list shows them.
        for (int row = 0; row < m_files->count(); ++row) {
            if (m_files->item(row)->isSelected())
                selected << m_files->item(row)->text();
        }
        m_manage.cmdGet_Click(selected);
    });
    connect(m_delete, &QPushButton::clicked, this, [this] {
        const QListWidgetItem* item = m_presets->currentItem();
        m_manage.cmdDelete_Click(item && item->isSelected() ? item->text() : QString());
    });
    connect(ftp, &QPushButton::clicked, this, &ManageWindow::cmdFtp_Click);
    connect(ok, &QPushButton::clicked, this, &QWidget::close);
    connect(m_cancel, &QPushButton::clicked, &m_manage, &ManageServices::cancel);
    connect(m_files, &QListWidget::itemPressed, this, &ManageWindow::lstFiles_Click);
    connect(m_presets, &QListWidget::itemPressed, this, &ManageWindow::lstPresets_Click);

    connect(&m_manage, &ManageServices::serverServicesChanged, this, &ManageWindow::fillFiles);
    connect(&m_manage, &ManageServices::installedServicesChanged, this, &ManageWindow::fillPresets);
    connect(&m_manage, &ManageServices::busyChanged, this, &ManageWindow::setBusy);
    connect(&m_manage, &ManageServices::status, m_status, &QLabel::setText);
    connect(&m_manage, &ManageServices::progress, this, [this](qint64 received, qint64 total) {
        // Without a known size the bar just shows that something is going on.
        const int scale = 1024;
        m_progress->setRange(0, total > 0 ? int(total / scale) + 1 : 0);
        m_progress->setValue(int(received / scale));
    });

    fillPresets();
}

ManageWindow::~ManageWindow()
{
    setBusy(false);
}

void ManageWindow::fillFiles()
{
    m_files->clear();
    m_files->addItems(m_manage.serverServices());
}

void ManageWindow::fillPresets()
{
    m_presets->clear();
    m_presets->addItems(m_manage.installedServices());
}

void ManageWindow::lstFiles_Click()
{
    m_get->setEnabled(!m_files->selectedItems().isEmpty());
    m_delete->setEnabled(false);
    m_files->setFocus();
}

void ManageWindow::lstPresets_Click()
{
    m_files->clearSelection();
    m_get->setEnabled(false);
    m_delete->setEnabled(!m_presets->selectedItems().isEmpty());
    m_presets->setFocus();
}

void ManageWindow::cmdFtp_Click()
{
    trappedSub(QStringLiteral("frmManage: Sub cmdFtp_Click"),
               [&] { Launcher::instance().open(m_manage.serverUrl(), ProgramFolder::path()); });
}

void ManageWindow::setBusy(bool busy)
{
    m_progress->setVisible(busy);
    m_cancel->setVisible(busy);
    m_connect->setEnabled(!busy);
    m_progress->setRange(0, 0);
    if (busy != m_busyPointer) {
        m_busyPointer = busy;
        if (busy)
            QApplication::setOverrideCursor(Qt::WaitCursor);
        else
            QApplication::restoreOverrideCursor();
    }
}

void ManageWindow::closeEvent(QCloseEvent* event)
{
    m_manage.Form_Unload();
    // QDialog's own would reject(), which comes back here.
    QWidget::closeEvent(event);
}

void ManageWindow::reject()
{
    close();
}

} // namespace corvalent
