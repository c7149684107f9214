#include "app/MainWindow.h"

#include "act/FieldDerivations.h"
#include "act/HostTexts.h"
#include "act/PhoneList.h"
#include "app/ColourScheme.h"
#include "common/ControlName.h"
#include "app/ServicesPanel.h"
#include "app/WindowPlacement.h"
#include "common/ErrorTrap.h"
#include "common/Launcher.h"
#include "common/ProgramFolder.h"
#include "common/ProgramTitle.h"
#include "common/Prompter.h"
#include "common/VbRuntime.h"
#include "download/ManageWindow.h"
#include "download/ServiceServer.h"
#include "grab/AddressRecognition.h"
#include "grab/DesktopFactory.h"
#include "grab/SelectionOnlyDesktop.h"
#include "grab/SmartParserWindow.h"
#include "integration/IntegrateWindow.h"
#include "prefs/PreferencesWindow.h"
#include "request/TextTransforms.h"
#include "prefs/Preferences.h"
#include "prefs/SettingsFile.h"
#include "request/Go.h"
#include "services/ServiceCatalogue.h"
#include "services/ServiceDefinition.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QShortcut>
#include <QStatusBar>
#include <QToolButton>
#include <QSignalBlocker>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>

namespace corvalent {

namespace {

// The captions of the fixed rows, and the names of their labels.
struct FixedRow {
    const char* label;
    const char* caption;
};
constexpr std::array<FixedRow, 7> kFixedRows{{{"lblContact", "Contact"},
                                               {"lblCompany", "Company"},
                                               {"lblAddress", "Address"},
                                               {"lblCity", "City"},
                                               {"lblState", "State"},
                                               {"lblZip", "Zip"},
                                               {"lblCountry", "Country"}}};
constexpr int kFirstFreeRow = 7;

// Controls that take the colour scheme carry this tag.
void markForScheme(QWidget* widget)
{
    widget->setProperty(kTagProperty, QStringLiteral("1"));
}

// The contact manager's main window is the one whose title starts so.
const QString kHostWindowTitle = QStringLiteral("Corvalent Contacts");

// Where the window opens when nothing is stored and the contact manager's window cannot be seen.
constexpr QPoint kDefaultPosition(100, 100);

// A menu item's caption with its first letter as mnemonic; the words stay as they are.
QString withMnemonic(const QString& caption)
{
    return QLatin1Char('&') + caption;
}

QList<QRect> availableScreenAreas()
{
    QList<QRect> areas;
    for (const QScreen* screen : QGuiApplication::screens())
        areas << screen->availableGeometry();
    return areas;
}


// A numeric preference within [low, high]; `fallback` otherwise.
int storedChoice(const QString& key, int low, int high, int fallback)
{
    const QString text = GetSetting(key, QString::number(fallback));
    if (!IsNumeric(text))
        return fallback;
    const double value = Val(text);
    return value >= low && value <= high && value == int(value) ? int(value) : fallback;
}

} // namespace

MainWindow::MainWindow(AutomationBackend& backend, QWidget* parent)
    : QMainWindow(parent),
      m_backend(backend),
      m_capture(m_session, m_form),
      m_follower(m_session, m_capture),
      m_updater(m_session, m_form, m_capture, m_follower.AddingContact, HostTexts(backend.hostName()))
{
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QString::fromLatin1(kProgramTitle));
    // Always on top, and without a maximise button: the window is as large as its controls need, no larger.
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint | Qt::WindowStaysOnTopHint);
    buildWindow();
    buildMenus();
    bindForm();
    bindGrab();

    connect(&m_follower, &HostFollower::captured, this, &MainWindow::reloadPhones);
    connect(&m_follower, &HostFollower::unloadRequested, this, &MainWindow::close);
    connect(&m_instance, &SingleInstance::comeForwardRequested, this, &MainWindow::comeForward);
}

MainWindow::~MainWindow()
{
    // The collector is a child window and outlives this object's members by a moment: it must not report back.
    if (m_smartParser)
        m_smartParser->disconnect(this);
}

void MainWindow::buildWindow()
{
    auto central = new QWidget(this);
    central->setObjectName(QStringLiteral("picMain"));
    setCentralWidget(central);
    auto outer = new QVBoxLayout(central);
    // Everything above the buttons scrolls when the screen is too small for it (a large scaling factor on a
    // small screen), so that GO and the buttons beside it stay reachable.
    m_scroll = new QScrollArea(central);
    m_scroll->setObjectName(QStringLiteral("scrMain"));
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setWidgetResizable(true);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    auto content = new QWidget;
    content->setObjectName(QStringLiteral("picContent"));
    m_content = content;
    content->installEventFilter(this);
    auto column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);

    m_panel = new ServicesPanel(m_filling, central, content);
    column->addWidget(m_panel);
    connect(m_panel, &ServicesPanel::serviceSelected, this, &MainWindow::onServiceSelected);

    auto contact = new QFrame(content);
    m_contactFrame = contact;
    central->installEventFilter(this);
    contact->installEventFilter(this);
    contact->setObjectName(QStringLiteral("fraContactInformation"));
    contact->setFrameShape(QFrame::StyledPanel);
    markForScheme(contact);
    auto rows = new QGridLayout(contact);
    rows->setVerticalSpacing(3);
    for (int i = 0; i < ContactForm::kSlots; ++i) {
        QLabel* label = nullptr;
        if (i < kFirstFreeRow) {
            label = new QLabel(QString::fromLatin1(kFixedRows[size_t(i)].caption), contact);
            label->setObjectName(QString::fromLatin1(kFixedRows[size_t(i)].label));
        } else {
            label = new QLabel(QStringLiteral("Custom%1").arg(i - 6), contact);
            label->setObjectName(ControlName("lblField", i));
            m_freeLabels[size_t(i - kFirstFreeRow)] = label;
        }
        markForScheme(label);
        // A service's own caption may be longer than the fixed ones; the column keeps its width all the same, so
        // the window keeps its width from one service to the next.
        label->setFixedWidth(label->fontMetrics().averageCharWidth() * 11);

        auto field = new QLineEdit(contact);
        field->setObjectName(ControlName("txtField", i));
        field->setMinimumWidth(field->fontMetrics().averageCharWidth() * 30);
        markForScheme(field);
        field->installEventFilter(this);
        label->setBuddy(field);

        auto grab = new QPushButton(tr("G&rab"), contact);
        grab->setObjectName(ControlName("cmdGrab", i));
        // Ctrl+1 to Ctrl+9 for the first nine boxes, Ctrl+0 for the tenth, as the digits lie on the keyboard. They
        // work from the Smart Data Collector too, which hands its lines to these buttons.
        const QKeySequence key(Qt::CTRL | Qt::Key(Qt::Key_0 + (i + 1) % 10));
        grab->setToolTip(tr("Put the text selected in the browser into this box (%1)")
                             .arg(key.toString(QKeySequence::NativeText)));
        grab->setAutoDefault(false);
        auto shortcut = new QShortcut(key, this);
        shortcut->setContext(Qt::ApplicationShortcut);
        connect(shortcut, &QShortcut::activated, grab, [grab] {
            if (grab->isEnabled())
                grab->click();
        });
        connect(grab, &QPushButton::clicked, this, [this, i] { cmdGrab_Click(i); });

        rows->addWidget(label, i, 0);
        rows->addWidget(field, i, 1);
        rows->addWidget(grab, i, 2);
        m_fields[size_t(i)] = field;
        m_grab[size_t(i)] = grab;
    }
    column->addWidget(contact);

    m_optionRow = new QWidget(content);
    m_optionRow->setObjectName(QStringLiteral("fraOptions"));
    auto options = new QHBoxLayout(m_optionRow);
    options->setContentsMargins(0, 0, 0, 0);
    m_optionGroup = new QButtonGroup(this);
    const std::array<QString, 3> optionCaptions{tr("&Business"), tr("Ho&me"), tr("Cu&stom")};
    for (int i = 0; i < 3; ++i) {
        auto option = new QRadioButton(optionCaptions[size_t(i)], m_optionRow);
        option->setObjectName(ControlName("optOption", i));
        m_optionGroup->addButton(option, i);
        options->addWidget(option);
        m_options[size_t(i)] = option;
    }
    options->addStretch();
    column->addWidget(m_optionRow);

    m_phoneRow = new QWidget(content);
    m_phoneRow->setObjectName(QStringLiteral("fraPhone"));
    auto phoneLine = new QHBoxLayout(m_phoneRow);
    phoneLine->setContentsMargins(0, 0, 0, 0);
    auto phoneLabel = new QLabel(tr("&Phone:"), m_phoneRow);
    phoneLabel->setObjectName(QStringLiteral("lblPhone"));
    m_phones = new QComboBox(m_phoneRow);
    m_phones->setObjectName(QStringLiteral("cboPhone"));
    m_phones->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_phones->setMinimumContentsLength(24);
    phoneLabel->setBuddy(m_phones);
    phoneLine->addWidget(phoneLabel);
    phoneLine->addWidget(m_phones, 1);
    column->addWidget(m_phoneRow);

    m_keepOpen = new QCheckBox(QStringLiteral("Do not close this &window after the request is sent."), content);
    m_keepOpen->setObjectName(QStringLiteral("chkClose"));
    column->addWidget(m_keepOpen);
    m_scroll->setWidget(content);
    outer->addWidget(m_scroll);

    auto buttons = new QHBoxLayout;
    auto update = new QPushButton(tr("&Update Contact"), central);
    update->setObjectName(QStringLiteral("cmdUpdateACT"));
    update->setToolTip(tr("Write the ten boxes into the current contact"));
    update->setAutoDefault(false);
    connect(update, &QPushButton::clicked, this, &MainWindow::cmdUpdateACT_Click);
    auto add = new QPushButton(tr("&New Contact"), central);
    add->setObjectName(QStringLiteral("cmdNewContact"));
    add->setToolTip(tr("Make a new contact of the boxes whose Grab button is enabled"));
    add->setAutoDefault(false);
    connect(add, &QPushButton::clicked, this, &MainWindow::cmdNewContact_Click);
    m_update = update;
    m_newContact = add;
    m_go = new QPushButton(tr("&GO"), central);
    m_go->setObjectName(QStringLiteral("cmdGO"));
    m_go->setToolTip(tr("Open the selected service in the browser for this contact"));
    m_go->setDefault(true);
    connect(m_go, &QPushButton::clicked, this, &MainWindow::cmdGO_Click);
    buttons->addWidget(update);
    buttons->addWidget(add);
    buttons->addStretch();
    buttons->addWidget(m_go);
    outer->addLayout(buttons);
    m_panel->setGoButton(m_go);
    setTabOrderByRows();
    // Says what a grab brought when it is not what the user may expect (no browser, a cut text).
    statusBar()->setSizeGripEnabled(false);

    // Every box sends on Enter, as GO is the window's default button.
    for (QLineEdit* field : m_fields)
        connect(field, &QLineEdit::returnPressed, this, [this] {
            if (m_go->isEnabled())
                m_go->click();
        });
}

void MainWindow::buildMenus()
{
    auto addMenu = [this](const char* name, const QString& title) {
        QMenu* menu = menuBar()->addMenu(title);
        menu->setObjectName(QLatin1String(name));
        return menu;
    };
    auto addItem = [this](QMenu* menu, const char* name, const QString& text) {
        QAction* action = menu->addAction(text);
        action->setObjectName(QLatin1String(name));
        return action;
    };
    // The menu titles take Alt with their first letter; the items keep their words as users know them, with a
    // mnemonic each.
    QMenu* file = addMenu("mnuServices", tr("&File"));
    connect(addItem(file, "mnuSettings", QStringLiteral("&New Service...")), &QAction::triggered, this,
            &MainWindow::mnuSettings_Click);
    connect(addItem(file, "mnuManage", QStringLiteral("&Manage Services...")), &QAction::triggered, this,
            &MainWindow::mnuManage_Click);
    file->addSeparator();
    QAction* exit = addItem(file, "mnuExit", QStringLiteral("E&xit"));
    connect(exit, &QAction::triggered, this, &MainWindow::close);

    QMenu* edit = addMenu("mnuEdit1", tr("&Edit"));
    m_undo = addItem(edit, "mnuUndo", withMnemonic(m_updater.undoCaption()));
    m_undo->setEnabled(false);
    m_undo->setShortcut(QKeySequence::Undo);
    m_undo->setShortcutContext(Qt::ApplicationShortcut);
    connect(m_undo, &QAction::triggered, this, &MainWindow::mnuUndo_Click);
    connect(addItem(edit, "mnuEdit", QStringLiteral("&Edit a Service...")), &QAction::triggered, this,
            &MainWindow::mnuEdit_Click);

    QMenu* contact = addMenu("mnuCOntact", tr("&Contact"));
    connect(addItem(contact, "mnuClearAll", QStringLiteral("&Clear all fields")), &QAction::triggered, this,
            &MainWindow::mnuClearAll_Click);
    connect(addItem(contact, "mnuLoadAll", QStringLiteral("&Load all fields")), &QAction::triggered, this,
            &MainWindow::mnuLoadAll_Click);

    QMenu* options = addMenu("mnuOptions", tr("&Options"));
    const QString integrate = QLatin1Char('&') + HostTexts(m_backend.hostName()).integrateMenuItem();
    connect(addItem(options, "mnuIntegrate", integrate), &QAction::triggered, this,
            &MainWindow::mnuIntegrate_Click);
    connect(addItem(options, "mnuPreferences", QStringLiteral("&Preferences...")), &QAction::triggered, this,
            &MainWindow::mnuPreferences_Click);

    QMenu* help = addMenu("mnuHelp", tr("&Help"));
    connect(addItem(help, "mnuOnline", QStringLiteral("&Online Help")), &QAction::triggered, this,
            &MainWindow::mnuOnline_Click);
    connect(addItem(help, "mnuInstructions", QStringLiteral("User's &manual")), &QAction::triggered, this,
            &MainWindow::mnuInstructions_Click);

    m_popup = new QMenu(this);
    m_popup->setObjectName(QStringLiteral("mnuPopup"));
    connect(addItem(m_popup, "mnuPopupSettings", QStringLiteral("&Edit")), &QAction::triggered, this,
            &MainWindow::mnuEdit_Click);
    connect(m_panel, &ServicesPanel::popupRequested, this, [this](const QPoint& at) { m_popup->popup(at); });
}

void MainWindow::bindForm()
{
    for (int i = 0; i < ContactForm::kSlots; ++i) {
        QLineEdit* field = m_fields[size_t(i)];
        connect(field, &QLineEdit::textEdited, this, [this, i](const QString& text) { m_form.setText(i, text); });
        m_grab[size_t(i)]->setEnabled(m_form.grabEnabled(i));
    }
    connect(&m_form, &ContactForm::textChanged, this, [this](int slot) {
        QLineEdit* field = m_fields[size_t(slot)];
        if (field->text() != m_form.text(slot)) {
            field->setText(m_form.text(slot));
            // A long captured value shows its beginning.
            field->setCursorPosition(0);
        }
    });
    connect(&m_form, &ContactForm::grabEnabledChanged, this,
            [this](int slot) { m_grab[size_t(slot)]->setEnabled(m_form.grabEnabled(slot)); });

    m_options[size_t(m_form.addressOption())]->setChecked(true);
    connect(m_optionGroup, &QButtonGroup::idClicked, this, [this](int id) { m_form.setAddressOption(id); });
    // The program's own changes of the option count as a click, as the user's do.
    connect(&m_form, &ContactForm::addressOptionChanged, this, [this](int option) {
        m_options[size_t(option)]->setChecked(true);
        optOption_Click(option);
    });

    connect(&m_form, &ContactForm::phonesChanged, this, [this] {
        QScopedValueRollback<bool> filling(m_filling, true);
        m_phones->clear();
        for (const ContactForm::PhoneEntry& entry : m_form.phones())
            m_phones->addItem(entry.text, entry.fieldId);
        m_phones->setCurrentIndex(m_form.currentPhone());
    });
    connect(&m_form, &ContactForm::currentPhoneChanged, this, [this](int index) {
        QScopedValueRollback<bool> filling(m_filling, true);
        m_phones->setCurrentIndex(index);
    });
    connect(m_phones, &QComboBox::activated, this, [this](int index) {
        m_form.setCurrentPhone(index);
        cboPhone_Click();
    });
}

QString MainWindow::currentServiceFile() const
{
    return m_panel->currentServiceFile();
}

bool MainWindow::hostReady()
{
    try {
        m_session.attachEvents(m_backend);
        if (m_session.isDatabaseOpen())
            return true;
        if (m_session.isRunning()) {
            Prompter::instance().message(HostTexts(m_backend.hostName()).noDatabaseMessage(), Prompter::Exclamation);
            return false;
        }
    } catch (const Error&) {
        // No contact manager to ask, or one that does not answer: both are the message below.
    }
    Prompter::instance().message(HostTexts(m_backend.hostName()).unreachableMessage(), Prompter::Critical);
    return false;
}

bool MainWindow::Form_Load()
{
    trappedSub(QStringLiteral("frmMain: Sub Form_Load"), [&] {
        if (!m_instance.acquire()) {
            Prompter::instance().message(kAlreadyRunningMessage, Prompter::OkOnly);
            m_instance.askHolderToComeForward();
            StartFailed = true;
            return;
        }
        if (!hostReady()) {
            StartFailed = true;
            return;
        }
        // Without a session the window could show nothing and would store what it never restored: start-up
        // ends after the error box.
        StartFailed = true;
        m_session.OpenSession(m_backend);
        StartFailed = false;
        m_follower.follow(m_backend.events());

        // Start-up sets the controls itself: no handler may capture before the first capture below.
        QScopedValueRollback<bool> filling(m_filling, true);
        m_keepOpen->setChecked(Val(GetSetting(QStringLiteral("Close"), QStringLiteral("0"))) == 1);
        Refresh_Colors();
        // The buttons show their services before the stored one is pressed, so that a button whose service has
        // gone is not pressed.
        m_panel->refreshCaptions();
        m_panel->Press_Button();
        m_capture.setServiceFile(currentServiceFile());
        // The first capture reads the address the pressed service was last used with.
        restoreOptionSilently(storedChoice(pressedCaption() + QStringLiteral("_option"), 0, 2,
                                           storedChoice(QStringLiteral("Option"), 0, 2, ContactForm::Business)));

        const bool noDisplay = Val(GetSetting(QStringLiteral("Startup"), QString())) == 1;
        captureContact(noDisplay);

        Refresh_Labels();
        layOutForService();
        placeWindow();
    });
    if (StartFailed)
        close();
    return !StartFailed;
}

void MainWindow::Form_Unload()
{
    unload_SmartParser();
    m_follower.stopFollowing();
    trappedSub(QStringLiteral("frmMain: Sub Form_Unload"), [&] {
        if (StartFailed)
            return;
        const int pressed = m_panel->pressedButton();
        if (pressed >= 0)
            SaveSetting(QStringLiteral("Pressed"), QString::number(pressed));
        // The position of the inside of the window, as it is restored: the frame's size is the window manager's
        // and may differ from one start to the next.
        SaveSetting(QStringLiteral("Left"), QString::number(geometry().x()));
        SaveSetting(QStringLiteral("Top"), QString::number(geometry().y()));
        SaveSetting(QStringLiteral("Close"), m_keepOpen->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
        SaveSetting(QStringLiteral("Option"), QString::number(m_form.addressOption()));
        const int phone = m_form.currentPhone();
        if (phone >= 0)
            SaveSetting(QStringLiteral("ComboPhone"), QString::number(m_form.phones().at(phone).fieldId));
        if (m_follower.RestartPending)
            m_follower.restartHost();
    });
    m_instance.release();
    emit unloaded();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!m_unloaded) {
        m_unloaded = true;
        Form_Unload();
    }
    QMainWindow::closeEvent(event);
}

void MainWindow::captureContact(bool noDisplay)
{
    const bool hadPhones = !m_form.phones().isEmpty();
    m_capture.Get_Contact(noDisplay);
    reloadPhones();
    // The first capture ran before there was a phone list to choose from; with Custom chosen, the phone rows are
    // read again with the phone the list now shows.
    if (!hadPhones && !m_form.phones().isEmpty() && m_form.addressOption() == ContactForm::Custom) {
        m_capture.forgetChoiceRows();
        m_capture.Get_Contact(noDisplay);
    }
}

void MainWindow::reloadPhones()
{
    if (!m_session.isOpen())
        return;
    QScopedValueRollback<bool> filling(m_filling, true);
    LoadPhoneList(m_session, m_form);
    // With Business or Home chosen, the list shows the phone those read, not an earlier choice that is not used.
    if (m_form.addressOption() != ContactForm::Custom) {
        const qint32 used = GetPhoneNumber(m_form);
        const QList<ContactForm::PhoneEntry>& phones = m_form.phones();
        for (int i = 0; i < phones.size(); ++i) {
            if (phones.at(i).fieldId == used)
                m_form.setCurrentPhone(i);
        }
    }
}

void MainWindow::onServiceSelected()
{
    m_capture.setServiceFile(currentServiceFile());
    captureContact(false);
    Refresh_Labels();
    layOutForService();
}

void MainWindow::layOutForService()
{
    Resize_Form(int(Val(ServiceSetting(currentServiceFile(), QStringLiteral("Base"), QStringLiteral("0")))));
}

void MainWindow::Resize_Form(int Base)
{
    trappedSub(QStringLiteral("frmMain: Sub Resize_Form"), [&] {
        bool phoneRow = false;
        for (int row = 0; row < kFieldRows; ++row)
            phoneRow = phoneRow || ServiceSetting(currentServiceFile(), QStringLiteral("F%1").arg(row)) == QLatin1String("888");
        m_optionRow->setVisible(Base == ServiceBase::Address);
        m_phoneRow->setVisible(Base == ServiceBase::Phone || phoneRow);
        fitToScreen();
    });
}

void MainWindow::Refresh_Labels()
{
    trappedSub(QStringLiteral("frmMain: Sub Refresh_Labels"), [&] {
        m_panel->refreshCaptions();
        for (int row = kFirstFreeRow; row < ContactForm::kSlots; ++row) {
            m_freeLabels[size_t(row - kFirstFreeRow)]->setText(ServiceSetting(
                currentServiceFile(), QStringLiteral("L%1").arg(row), QStringLiteral("Custom%1").arg(row - 6)));
        }
        m_form.setAddressOption(
            storedChoice(pressedCaption() + QStringLiteral("_option"), 0, 2, m_form.addressOption()));
    });
}

QString MainWindow::pressedCaption() const
{
    const int pressed = m_panel->pressedButton();
    return pressed >= 0 ? m_panel->caption(pressed) : QString();
}

void MainWindow::restoreOptionSilently(int option)
{
    {
        const QSignalBlocker quiet(&m_form);
        m_form.setAddressOption(option);
    }
    m_options[size_t(option)]->setChecked(true);
}

void MainWindow::Refresh_Colors()
{
    trappedSub(QStringLiteral("frmMain: Sub Refresh_Colors"),
               [&] { ApplyColourScheme(this, ColourScheme::current()); });
}

void MainWindow::optOption_Click(int Index)
{
    trappedSub(QStringLiteral("frmMain: Sub optOption_Click"), [&] {
        SaveSetting(pressedCaption() + QStringLiteral("_option"), QString::number(Index));
        if (!m_filling) {
            m_capture.forgetChoiceRows();
            captureContact(false);
        }
    });
}

void MainWindow::cboPhone_Click()
{
    if (m_filling)
        return;
    trappedSub(QStringLiteral("frmMain: Sub cboPhone_Click"), [&] {
        // Choosing Custom captures with the chosen phone; when Custom was chosen already, that needs a capture
        // of its own.
        if (m_form.addressOption() == ContactForm::Custom) {
            m_capture.forgetChoiceRows();
            captureContact(false);
        } else {
            m_form.setAddressOption(ContactForm::Custom);
        }
    });
}

void MainWindow::cmdGO_Click()
{
    const GoResult result =
        RunGo(currentServiceFile(), m_form.texts(), m_keepOpen->isChecked(), m_countryFilePath,
              [this](const QString& serviceName) {
                  openServiceEditor(ServiceEditorWindow::Mode::Edit, DisplayName(serviceName), true);
              });
    if (result.closeWindow)
        close();
}

void MainWindow::mnuSettings_Click()
{
    openServiceEditor(ServiceEditorWindow::Mode::New);
}

void MainWindow::mnuEdit_Click()
{
    const QString current = currentServiceFile();
    openServiceEditor(ServiceEditorWindow::Mode::Edit, current.isEmpty() ? QString() : DisplayName(FileStem(current)));
}

void MainWindow::openServiceEditor(ServiceEditorWindow::Mode mode, const QString& serviceName, bool openCountry)
{
    if (m_editor)
        m_editor->close();
    m_editor = new ServiceEditorWindow(mode, m_session.isOpen() ? &m_session : nullptr, &m_form, this);
    keepAbove(m_editor);
    connect(m_editor, &ServiceEditorWindow::serviceSaved, this, &MainWindow::serviceSaved);
    m_editor->bOpenCountry = openCountry;
    m_editor->Form_Load();
    if (!serviceName.isEmpty())
        m_editor->choosePreset(serviceName);
    m_editor->show();
}

void MainWindow::serviceSaved(const QString& file, const QString& previousFile)
{
    trappedSub(QStringLiteral("frmMain: Sub serviceSaved"), [&] {
        if (!previousFile.isEmpty() && previousFile != file)
            m_panel->followRename(FileStem(previousFile), FileStem(file));
        m_panel->refreshCaptions();
        if (m_panel->pressedButton() >= 0 && currentServiceFile() == file)
            onServiceSelected();
    });
}

void MainWindow::mnuPreferences_Click()
{
    auto window = new PreferencesWindow(this);
    keepAbove(window);
    connect(window, &PreferencesWindow::applied, this, [this] {
        Refresh_Colors();
        Refresh_Labels();
    });
    window->Form_Load();
    window->show();
}

void MainWindow::mnuIntegrate_Click()
{
    auto window = new IntegrateWindow(m_session, m_backend, this);
    keepAbove(window);
    connect(window, &IntegrateWindow::restartRequested, this, [this] {
        m_follower.RestartPending = true;
        close();
    });
    window->Form_Load();
    window->show();
}

void MainWindow::mnuClearAll_Click()
{
    trappedSub(QStringLiteral("frmMain: Sub mnuClearAll_Click"), [&] {
        for (int i = 0; i < ContactForm::kSlots; ++i)
            m_form.setText(i, QString());
    });
}

void MainWindow::mnuLoadAll_Click()
{
    trappedSub(QStringLiteral("frmMain: Sub mnuLoadAll_Click"), [&] {
        m_capture.LoadAll = true;
        captureContact(false);
        m_capture.LoadAll = false;
    });
}

// The manual, as PDF or as the HTML page of Online Help, lives in the program folder; a folder seeded by an older
// install is given the installed copy first.
static void openHelpFile(const QString& name)
{
    const QString file = ProgramFolder::provide(name);
    if (file.isEmpty()) {
        Prompter::instance().message(QStringLiteral("Can't find the user's manual ") +
                                         ProgramFolder::join(ProgramFolder::path(), name),
                                     Prompter::Exclamation);
        return;
    }
    Launcher::instance().open(file, ProgramFolder::path());
}

void MainWindow::mnuOnline_Click()
{
    trappedSub(QStringLiteral("frmMain: Sub mnuOnline_Click"), [&] { openHelpFile(kOnlineHelpFileName); });
}

void MainWindow::mnuManage_Click()
{
    trappedSub(QStringLiteral("frmMain: Sub mnuManage_Click"), [&] {
        // Modal to this window without a nested event loop; the service lists read the Presets folder afresh
        // whenever they are opened, so they show what it installed or deleted.
        auto* manage = new ManageWindow(PresetsDir(), ServicesServer(), this);
        keepAbove(manage);
        manage->open();
    });
}

void MainWindow::mnuInstructions_Click()
{
    trappedSub(QStringLiteral("frmMain: Sub mnuInstructions_Click"), [&] { openHelpFile(kManualFileName); });
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    // Ctrl+Z is the program's undo of the last grab or update, also in a box, which would otherwise take it for
    // its own typing undo.
    if (event->type() == QEvent::ShortcutOverride && qobject_cast<QLineEdit*>(watched) &&
        static_cast<QKeyEvent*>(event)->matches(QKeySequence::Undo)) {
        event->ignore();
        return true;
    }
    // A click on the window's background hands the collector's next line on, as its Next button does; not a click
    // on a caption or a row that passed the press on to the background.
    if (event->type() == QEvent::MouseButtonPress &&
        (watched == centralWidget() || watched == m_content || watched == m_contactFrame)) {
        const auto* press = static_cast<QMouseEvent*>(event);
        const auto* background = static_cast<QWidget*>(watched);
        if (bSmartParserOn && m_smartParser && press->button() == Qt::LeftButton &&
            !background->childAt(press->position().toPoint())) {
            m_smartParser->collector().cmdUp_Click();
            // Taken here: the press would otherwise reach the window behind the frame and move on a second time.
            return true;
        }
    }
    // A box that gets the focus selects its text, so that typing replaces a captured value; after the mouse
    // press that gave the focus, which would otherwise place the cursor instead.
    if (event->type() == QEvent::FocusIn) {
        if (auto field = qobject_cast<QLineEdit*>(watched); field && std::ranges::count(m_fields, field))
            QTimer::singleShot(0, field, [field] { field->selectAll(); });
    }
    return QMainWindow::eventFilter(watched, event);
}

} // namespace corvalent

namespace corvalent {

void MainWindow::bindGrab()
{
    connect(&m_updater, &ContactUpdater::undoChanged, this, [this] {
        m_undo->setText(withMnemonic(m_updater.undoCaption()));
        m_undo->setEnabled(m_updater.undoEnabled());
    });
}

void MainWindow::setDesktop(std::unique_ptr<DesktopWindows> desktop)
{
    m_grabText.reset();
    m_desktop = std::move(desktop);
}

DesktopWindows& MainWindow::desktop()
{
    if (!m_desktop)
        m_desktop = CreateDesktopWindows();
    return *m_desktop;
}

void MainWindow::cmdGrab_Click(int Index)
{
    if (m_grabbing)
        return;
    QScopedValueRollback<bool> grabbing(m_grabbing, true);
    trappedSub(QStringLiteral("frmMain: Sub cmdGrab_Click"), [&] {
        m_updater.beginGrab(Index);
        if (bSmartParserOn && m_smartParser) {
            // An error box while writing runs the event loop, and the collector may be gone after it.
            const QString selected = m_smartParser->selectedText();
            const bool partial = !selected.isEmpty();
            m_updater.Update_Contact_Info(partial ? selected : m_smartParser->currentText(), Index);
            if (m_smartParser)
                m_smartParser->RemoveText(partial);
        } else {
            if (!m_grabText)
                m_grabText = std::make_unique<GrabText>(desktop());
            sGrabbed = m_grabText->GrabBrowserText();
            reportGrab();
            if (isMultiLine(sGrabbed)) {
                openSmartParser();
            } else {
                sGrabbed = RemoveInvalidChar(sGrabbed, 32, QString());
                if (!sGrabbed.isEmpty())
                    m_updater.Update_Contact_Info(sGrabbed, Index);
            }
        }
        m_updater.endGrab();
        // The browser had the front for the copy: the window comes back on top, as it was, with the keyboard, so
        // that the next Grab's shortcut reaches it.
        comeForward();
    });
}

void MainWindow::reportGrab()
{
    if (!desktop().canDriveWindows() && !SelectionOnlyDesktop::hasPrimarySelection()) {
        statusBar()->showMessage(tr("Grabbing from the browser needs an X11 session."), kStatusMs);
    } else if (!m_grabText->lastGrabFoundBrowser()) {
        statusBar()->showMessage(tr("No browser window was found below this window."), kStatusMs);
    } else if (desktop().canDriveWindows() && !m_grabText->lastGrabActivatedBrowser()) {
        statusBar()->showMessage(tr("The browser did not come to the front."), kStatusMs);
    } else if (m_grabText->lastGrabWasCut()) {
        statusBar()->showMessage(tr("Only the first %1 characters of the selection were taken.")
                                     .arg(GrabText::kMaxGrabChars), kStatusMs);
    } else if (sGrabbed.isEmpty()) {
        statusBar()->showMessage(tr("Nothing is selected in the browser."), kStatusMs);
    } else {
        statusBar()->clearMessage();
    }
}

void MainWindow::openSmartParser()
{
    auto parser = new SmartParserWindow(sGrabbed, this);
    // Lines that clean down to nothing leave nothing to hand out: the collector has closed itself already.
    if (parser->collector().isFinished())
        return;
    m_smartParser = parser;
    // Ctrl+Z in the collector's line is the program's undo too.
    for (QLineEdit* box : parser->findChildren<QLineEdit*>())
        box->installEventFilter(this);
    connect(parser, &SmartParserWindow::unloaded, this, [this] { bSmartParserOn = false; });
    bSmartParserOn = true;
}

void MainWindow::unload_SmartParser()
{
    if (bSmartParserOn && m_smartParser)
        m_smartParser->close();
    bSmartParserOn = false;
}

void MainWindow::cmdUpdateACT_Click()
{
    unload_SmartParser();
    m_updater.cmdUpdateACT_Click();
}

void MainWindow::cmdNewContact_Click()
{
    unload_SmartParser();
    m_updater.cmdNewContact_Click();
}

void MainWindow::mnuUndo_Click()
{
    m_updater.mnuUndo_Click();
}

} // namespace corvalent

namespace corvalent {

void MainWindow::setTabOrderByRows()
{
    QList<QWidget*> order;
    for (int i = 0; i < ServicesPanel::kButtons; ++i)
        order << m_panel->button(i) << m_panel->arrow(i);
    for (int i = 0; i < ContactForm::kSlots; ++i)
        order << m_fields[size_t(i)] << m_grab[size_t(i)];
    for (QRadioButton* option : m_options)
        order << option;
    order << m_phones << m_keepOpen << m_update << m_newContact << m_go;
    for (qsizetype i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order.at(i - 1), order.at(i));
}

QMargins MainWindow::frameAllowance() const
{
    const QRect frame = frameGeometry();
    const QRect inside = geometry();
    if (frame != inside)
        return {inside.left() - frame.left(), inside.top() - frame.top(), frame.right() - inside.right(),
                frame.bottom() - inside.bottom()};
    if (const QWindow* handle = windowHandle(); handle && !handle->frameMargins().isNull())
        return handle->frameMargins();
    // Before the window manager has framed the window: the style's idea of a frame, so that neither the title bar
    // nor a border ends up off the screen.
    const int border = style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
    return {border, style()->pixelMetric(QStyle::PM_TitleBarHeight) + border, border, border};
}

void MainWindow::fitToScreen()
{
    QWidget* content = m_scroll->widget();
    content->adjustSize();
    const QSize wanted = content->sizeHint();
    m_scroll->setFixedSize(wanted);
    centralWidget()->adjustSize();
    const QSize whole = sizeHint();
    const QScreen* shownOn = screen() ? screen() : QGuiApplication::primaryScreen();
    const QSize room = shownOn ? shownOn->availableGeometry().marginsRemoved(frameAllowance()).size() : whole;
    if (whole.height() > room.height() || whole.width() > room.width()) {
        // The scrolled part gives up what the screen lacks, and makes room for the scroll bar it then needs.
        const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
        const QSize around = whole - wanted;
        const int height = std::min(wanted.height(), room.height() - around.height());
        const int width =
            std::min(wanted.width() + (height < wanted.height() ? bar : 0), room.width() - around.width());
        m_scroll->setFixedSize(std::max(width, bar * 3), std::max(height, bar * 3));
        centralWidget()->adjustSize();
    }
    setFixedSize(sizeHint());
}

QRect MainWindow::hostWindowFrame()
{
    DesktopWindows& windows = desktop();
    if (!windows.canDriveWindows())
        return {};
    for (const WindowHandle window : windows.stackingFromTop()) {
        if (windows.isVisible(window) && windows.title(window).startsWith(kHostWindowTitle))
            return windows.frameGeometry(window);
    }
    return {};
}

void MainWindow::placeWindow()
{
    // A platform window that knows its frame before it is shown tells it once it exists.
    create();
    const QString left = GetSetting(QStringLiteral("Left"), QString());
    const QString top = GetSetting(QStringLiteral("Top"), QString());
    const QMargins margins = frameAllowance();
    QRect inside(kDefaultPosition, size());
    if (IsNumeric(left) && IsNumeric(top)) {
        inside.moveTopLeft(QPoint(int(Val(left)), int(Val(top))));
    } else if (const QRect host = hostWindowFrame(); !host.isEmpty()) {
        const QScreen* hostScreen = QGuiApplication::screenAt(host.center());
        if (!hostScreen)
            hostScreen = QGuiApplication::primaryScreen();
        const QSize frameSize = inside.marginsAdded(margins).size();
        inside.moveTopLeft(BesideHost(frameSize, host, hostScreen->availableGeometry()) +
                           QPoint(margins.left(), margins.top()));
    }
    const QRect frame = inside.marginsAdded(margins);
    setGeometry(inside.translated(FitOnScreens(frame, availableScreenAreas()).topLeft() - frame.topLeft()));
}

void MainWindow::keepAbove(QWidget* window)
{
    // Owned by this window, so the window manager keeps it with this one; and on top as this one is, for window
    // managers that keep an owned window in its own layer.
    Q_ASSERT(window->parentWidget() == this);
    window->setWindowFlag(Qt::WindowStaysOnTopHint);
}

void MainWindow::comeForward()
{
    showNormal();
    raise();
    if (desktop().canDriveWindows())
        desktop().activate(WindowHandle(winId()), kReactivateMs);
    else
        activateWindow();
}

} // namespace corvalent
