#include "prefs/PreferencesWindow.h"

#include "common/ControlName.h"
#include "common/Error.h"
#include "common/ErrorTrap.h"
#include "common/ProgramFolder.h"
#include "common/Prompter.h"
#include "common/VbRuntime.h"
#include "prefs/Preferences.h"
#include "prefs/SettingsFile.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace corvalent {

namespace {

// A stored Boolean as the runtime converts it: a number is true unless 0, and the words True and False count.
bool storedBoolean(const QString& text, std::source_location at = std::source_location::current())
{
    if (IsNumeric(text))
        return Val(text) != 0;
    if (text.trimmed().compare(QLatin1String("True"), Qt::CaseInsensitive) == 0)
        return true;
    if (text.trimmed().compare(QLatin1String("False"), Qt::CaseInsensitive) == 0)
        return false;
    throw Error(ErrorNumber::TypeMismatch, at);
}

QGroupBox* frame(const char* name, const QString& caption, QWidget* parent)
{
    auto box = new QGroupBox(caption, parent);
    box->setObjectName(QLatin1String(name));
    return box;
}

} // namespace

PreferencesWindow::PreferencesWindow(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmPreferences"));
    setWindowTitle(QStringLiteral("Preferences"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);

    auto tabs = new QTabWidget(this);
    tabs->setObjectName(QStringLiteral("mstOptions"));

    auto general = new QWidget;
    auto generalColumn = new QVBoxLayout(general);
    auto startup = frame("fraStartup", QStringLiteral("At startup:"), general);
    auto startupRow = new QHBoxLayout(startup);
    const std::array<const char*, 2> startupCaptions{"Show blank fields", "Show contact info"};
    for (int i = 0; i < 2; ++i) {
        m_startup[size_t(i)] = new QRadioButton(QLatin1String(startupCaptions[size_t(i)]), startup);
        m_startup[size_t(i)]->setObjectName(ControlName("optStartup", i));
        startupRow->addWidget(m_startup[size_t(i)]);
    }
    generalColumn->addWidget(startup);

    auto country = frame("fraCountry", QStringLiteral("Default Country Settings:"), general);
    auto countryGrid = new QGridLayout(country);
    auto countryLabel = new QLabel(QStringLiteral("If the country field is blank, use :"), country);
    countryLabel->setObjectName(QStringLiteral("lblCountry"));
    m_country = new QLineEdit(country);
    m_country->setObjectName(QStringLiteral("txtCountry"));
    countryLabel->setBuddy(m_country);
    m_usAuto = new QCheckBox(QStringLiteral("Enable US address auto-recognition"), country);
    m_usAuto->setObjectName(QStringLiteral("chkUSAuto"));
    m_usAuto->setToolTip(tr("A line such as \"Springfield, IL 62704\" grabbed into State or Zip fills City, State "
                            "and Zip"));
    countryGrid->addWidget(countryLabel, 0, 0);
    countryGrid->addWidget(m_country, 0, 1);
    countryGrid->addWidget(m_usAuto, 1, 0, 1, 2);
    generalColumn->addWidget(country);

    auto colour = frame("fraColor", QStringLiteral("Color Scheme:"), general);
    auto colourRow = new QHBoxLayout(colour);
    m_standard = new QRadioButton(QStringLiteral("Standard"), colour);
    m_standard->setObjectName(QStringLiteral("optStandard"));
    m_modern = new QRadioButton(QStringLiteral("Modern"), colour);
    m_modern->setObjectName(QStringLiteral("optModern"));
    colourRow->addWidget(m_standard);
    colourRow->addWidget(m_modern);
    colourRow->addStretch();
    generalColumn->addWidget(colour);
    generalColumn->addStretch();
    tabs->addTab(general, tr("&General"));

    auto locationsPage = new QWidget;
    auto locationsColumn = new QVBoxLayout(locationsPage);
    auto locations = frame("fraDefaultLocation", QStringLiteral("Default Locations:"), locationsPage);
    auto locationsGrid = new QGridLayout(locations);
    m_file = new QComboBox(locations);
    m_file->setObjectName(QStringLiteral("cboFile"));
    connect(m_file, &QComboBox::currentIndexChanged, this, &PreferencesWindow::cboFile_Click);
    m_path = new QLineEdit(locations);
    m_path->setObjectName(QStringLiteral("txtPath"));
    m_path->setReadOnly(true);
    m_path->setMinimumWidth(fontMetrics().averageCharWidth() * 48);
    auto browse = new QPushButton(tr("&Browse..."), locations);
    browse->setObjectName(QStringLiteral("cmdBrowse"));
    browse->setAutoDefault(false);
    connect(browse, &QPushButton::clicked, this, &PreferencesWindow::cmdBrowse_Click);
    locationsGrid->addWidget(m_file, 0, 0, 1, 2);
    locationsGrid->addWidget(m_path, 1, 0);
    locationsGrid->addWidget(browse, 1, 1);
    locationsColumn->addWidget(locations);
    locationsColumn->addStretch();
    tabs->addTab(locationsPage, tr("&Locations"));

    auto ok = new QPushButton(tr("OK"), this);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &PreferencesWindow::cmdOK_Click);
    auto cancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    cancel->setAutoDefault(false);
    connect(cancel, &QPushButton::clicked, this, &PreferencesWindow::cmdCancel_Click);
    auto buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);

    auto column = new QVBoxLayout(this);
    column->addWidget(tabs);
    column->addLayout(buttons);
}

void PreferencesWindow::Form_Load()
{
    trappedSub(QStringLiteral("frmPreferences: Sub Form_Load"), [&] {
        m_country->setText(GetSetting(QStringLiteral("Country"), QStringLiteral("US")));
        if (m_country->text().isEmpty())
            m_country->setText(QStringLiteral("US"));
        const bool standard = storedBoolean(GetSetting(QStringLiteral("ColorStandard"), QStringLiteral("1")));
        m_standard->setChecked(standard);
        m_modern->setChecked(!standard);
        {
            const QSignalBlocker quiet(m_file);
            m_file->clear();
            m_file->addItems({QStringLiteral("Settings file"), QStringLiteral("Presets directory")});
        }
        m_file->setCurrentIndex(-1);
        m_file->setCurrentIndex(kSettingsFileItem);
        m_usAuto->setChecked(Val(GetSetting(QStringLiteral("USAuto"), QStringLiteral("1"))) != 0);
        m_startup[Val(GetSetting(QStringLiteral("Startup"), QString())) != 0 ? 1 : 0]->setChecked(true);
    });
}

void PreferencesWindow::cboFile_Click()
{
    trappedSub(QStringLiteral("frmPreferences: Sub cboFile_Click"), [&] {
        if (m_file->currentIndex() == kSettingsFileItem)
            m_path->setText(QDir::toNativeSeparators(SettingsFilePath()));
        else if (m_file->currentIndex() == kPresetsItem)
            m_path->setText(QDir::toNativeSeparators(PresetsDir()));
    });
}

void PreferencesWindow::cmdBrowse_Click()
{
    trappedSub(QStringLiteral("frmPreferences: Sub cmdBrowse_Click"), [&] {
        Prompter& prompter = Prompter::instance();
        if (m_file->currentIndex() == kPresetsItem) {
            // The folder is chosen by a file in it. The filter names a type no service has; the second one lets a
            // user pick any file of the folder, as typing a name did.
            const QString chosen = prompter.openFileName(
                windowTitle(), QStringLiteral("Internet Service Settings (*.iss)|*.iss|All files (*)|*"),
                ProgramFolder::join(ProgramFolder::path(), QStringLiteral("Presets")));
            // A cancelled dialog answers "", which has no folder part: that ends here, in the error box.
            const int separator = chosen.lastIndexOf(QLatin1Char('/'));
            if (separator < 0)
                throw Error(ErrorNumber::InvalidArgument);
            const QString folder = separator == 0 ? QStringLiteral("/") : chosen.left(separator);
            m_path->setText(QDir::toNativeSeparators(folder));
            SavePresetsDir(folder);
        } else {
            const QString chosen = prompter.openFileName(windowTitle(), QStringLiteral("Settings file (*.ini)|*.ini"),
                                                         ProgramFolder::path());
            m_path->setText(QDir::toNativeSeparators(chosen));
            SaveBrowsedSettingsFile(chosen);
        }
    });
}

void PreferencesWindow::cmdOK_Click()
{
    trappedSub(QStringLiteral("frmPreferences: Sub cmdOK_Click"), [&] {
        SaveSetting(QStringLiteral("Country"), m_country->text());
        // Stored as the number the colour scheme compares with 1.
        SaveSetting(QStringLiteral("ColorStandard"), m_standard->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
        SaveSetting(QStringLiteral("USAuto"), m_usAuto->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
        SaveSetting(QStringLiteral("Startup"), m_startup[1]->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
        emit applied();
        accept();
    });
}

void PreferencesWindow::cmdCancel_Click()
{
    reject();
}

} // namespace corvalent
