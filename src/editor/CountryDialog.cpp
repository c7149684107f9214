#include "editor/CountryDialog.h"

#include "common/ErrorTrap.h"
#include "common/ProgramFolder.h"
#include "common/Prompter.h"
#include "editor/ServiceEditorWindow.h"
#include "services/IniLib.h"
#include "services/ServiceDefinition.h"

#include <QDir>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace corvalent {

CountryDialog::CountryDialog(ServiceEditorWindow* origin) : QDialog(origin), m_origin(origin)
{
    setObjectName(QStringLiteral("frmCountry"));
    setWindowTitle(QStringLiteral("Countries file"));
    setAttribute(Qt::WA_DeleteOnClose);
    setModal(true);

    auto grid = new QGridLayout(this);
    auto fileLabel = new QLabel(QStringLiteral("Countries File Location:"), this);
    fileLabel->setObjectName(QStringLiteral("lblFile"));
    m_file = new QLineEdit(this);
    m_file->setObjectName(QStringLiteral("txtFile"));
    m_file->setMinimumWidth(fontMetrics().averageCharWidth() * 36);
    m_file->setToolTip(tr("A country file in the program's folder; empty uses the countries of the settings file"));
    fileLabel->setBuddy(m_file);
    auto browse = new QPushButton(tr("&Browse..."), this);
    browse->setObjectName(QStringLiteral("cmdBrowse"));
    browse->setAutoDefault(false);
    connect(browse, &QPushButton::clicked, this, &CountryDialog::cmdBrowse_Click);
    auto defaultLabel = new QLabel(QStringLiteral("Default Country:"), this);
    defaultLabel->setObjectName(QStringLiteral("lblDefault"));
    m_default = new QLineEdit(this);
    m_default->setObjectName(QStringLiteral("txtDefault"));
    m_default->setToolTip(tr("Sent when the contact's country is not in the country file"));
    defaultLabel->setBuddy(m_default);

    auto ok = new QPushButton(tr("OK"), this);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &CountryDialog::cmdOK_Click);
    auto cancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    cancel->setAutoDefault(false);
    connect(cancel, &QPushButton::clicked, this, &CountryDialog::cmdCancel_Click);
    auto buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);

    grid->addWidget(fileLabel, 0, 0);
    grid->addWidget(m_file, 0, 1);
    grid->addWidget(browse, 0, 2);
    grid->addWidget(defaultLabel, 1, 0);
    grid->addWidget(m_default, 1, 1);
    grid->addLayout(buttons, 2, 0, 1, 3);
}

void CountryDialog::Form_Load()
{
    trappedSub(QStringLiteral("frmCountry: Sub Form_Load"), [&] {
        // A new service has no file yet, and what was chosen before in the same window is not shown again.
        if (m_origin->objectName() != QLatin1String("frmEdit") || m_origin->sFileName.isEmpty())
            return;
        m_file->setText(ServiceSetting(m_origin->sFileName, QStringLiteral("CountryFile")));
        m_default->setText(ServiceSetting(m_origin->sFileName, QStringLiteral("DefaultCountry")));
    });
}

void CountryDialog::cmdBrowse_Click()
{
    trappedSub(QStringLiteral("frmCountry: Sub cmdBrowse_Click"), [&] {
        const QString folder = ProgramFolder::path();
        const QString chosen = Prompter::instance().openFileName(
            windowTitle(), tr("Country files (*.txt *.ini);;All files (*)"), folder);
        if (chosen.isEmpty())
            return;
        // The file is named relative to the program's folder, as the service reads it, wherever it lies.
        m_file->setText(QDir(folder).relativeFilePath(chosen));
    });
}

void CountryDialog::cmdOK_Click()
{
    trappedSub(QStringLiteral("frmCountry: Sub cmdOK_Click"), [&] {
        m_origin->sCountryFile = m_file->text();
        m_origin->sDefaultCountry = m_default->text();
        // A new service has no file to write to yet: its save writes both.
        if (m_origin->objectName() == QLatin1String("frmEdit") && !m_origin->sFileName.isEmpty()) {
            WriteKeyValue(kServiceSection, QStringLiteral("CountryFile"), m_file->text(), m_origin->sFileName);
            WriteKeyValue(kServiceSection, QStringLiteral("DefaultCountry"), m_default->text(), m_origin->sFileName);
        }
        accept();
    });
}

void CountryDialog::cmdCancel_Click()
{
    reject();
}

} // namespace corvalent
