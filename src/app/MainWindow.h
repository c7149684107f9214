#pragma once

#include "act/ActSession.h"
#include "act/AutomationBackend.h"
#include "act/ContactCapture.h"
#include "act/ContactForm.h"
#include "editor/ServiceEditorWindow.h"
#include "app/HostFollower.h"
#include "app/SingleInstance.h"
#include "grab/ContactUpdater.h"
#include "grab/DesktopWindows.h"
#include "grab/GrabText.h"
#include "grab/SmartParserWindow.h"

#include <QMainWindow>
#include <QPointer>
#include <array>
#include <memory>

class QAction;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QRadioButton;
class QScrollArea;

namespace corvalent {

class ServicesPanel;

// frmMain: the small window beside the contact manager that shows its current contact in ten boxes, holds the
// four service buttons and sends the request on GO. It owns the session with the contact manager, the contact
// record and the current service for as long as it lives.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    static inline const QString kAlreadyRunningMessage =
        QStringLiteral("An instance of this program is already open!");
    // Online Help is the manual's HTML page, installed with the program so that it works offline.
    static inline const QString kOnlineHelpFileName = QStringLiteral("Corvalent_manual.html");
    static inline const QString kManualFileName = QStringLiteral("Corvalent_manual.pdf");

    explicit MainWindow(AutomationBackend& backend, QWidget* parent = nullptr);
    ~MainWindow() override;

    // Start-up: refuses a second instance, checks that the contact manager is there with a database open, opens
    // the session, presses the stored service button, captures the contact and places the window. Answers false
    // when start-up gave up (the window is then closed and will save nothing).
    bool Form_Load();
    bool StartFailed = false;

    ContactForm& form() { return m_form; }
    ContactCapture& capture() { return m_capture; }
    ActSession& session() { return m_session; }
    HostFollower& follower() { return m_follower; }
    ServicesPanel& servicesPanel() { return *m_panel; }
    QString currentServiceFile() const;
    // The country file GO resolved last; "" when the service names none.
    const QString& countryFilePath() const { return m_countryFilePath; }

    void cmdGO_Click();
    void Refresh_Labels();
    void Refresh_Colors();
    // Shows what a service of type `Base` needs: the address options for an address-based service, the phone
    // list for a phone-based one or one with a phone row, neither for the others. A hidden row takes no room: the
    // window's height follows what the service shows.
    void Resize_Form(int Base);
    void optOption_Click(int Index);
    void cboPhone_Click();
    void mnuClearAll_Click();
    void mnuLoadAll_Click();
    void mnuSettings_Click();
    void mnuPreferences_Click();
    void mnuIntegrate_Click();
    void mnuEdit_Click();
    void mnuOnline_Click();
    void mnuInstructions_Click();
    // Opens frmManage, "Download New Services".
    void mnuManage_Click();

    // Grab: the browser's selection (or, while the Smart Data Collector is open, its current line) into box Index.
    void cmdGrab_Click(int Index);
    void cmdUpdateACT_Click();
    void cmdNewContact_Click();
    void mnuUndo_Click();
    // Closes the Smart Data Collector when it is open.
    void unload_SmartParser();

    // The text of the last grab from the browser, and whether the Smart Data Collector is open.
    QString sGrabbed;
    bool bSmartParserOn = false;
    ContactUpdater& updater() { return m_updater; }
    SmartParserWindow* smartParser() const { return m_smartParser; }
    // The service editor while it is open.
    ServiceEditorWindow* serviceEditor() const { return m_editor; }

    // Where grabs come from; by default the desktop of this session, made at the first grab.
    void setDesktop(std::unique_ptr<DesktopWindows> desktop);

signals:
    // Form_Unload has run: the state is saved (unless start-up failed) and a pending restart has begun.
    void unloaded();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildWindow();
    void buildMenus();
    void bindForm();
    bool hostReady();
    void captureContact(bool noDisplay);
    void reloadPhones();
    void onServiceSelected();
    void layOutForService();
    void Form_Unload();
    void setTabOrderByRows();
    // The window's size is what its controls need; where the screen is smaller, the part above the buttons scrolls.
    void fitToScreen();
    // What the window manager's frame adds around the window, or a title bar's worth before it has framed it.
    QMargins frameAllowance() const;
    // The contact manager's window on the desktop; empty where it cannot be seen.
    QRect hostWindowFrame();
    // Step 10 of start-up: where the window was closed, or beside the contact manager the first time; whole on a
    // screen that exists in any case.
    void placeWindow();
    // A window this one opens shows above it.
    void keepAbove(QWidget* window);
    // Another start asked for this window.
    void comeForward();
    QString pressedCaption() const;
    // Sets the option without it counting as a click: nothing is stored and nothing captured.
    void restoreOptionSilently(int option);
    DesktopWindows& desktop();
    void openSmartParser();
    // Says in the status line what the last grab brought when that is not plain text.
    void reportGrab();
    static constexpr int kStatusMs = 8000;
    static constexpr int kReactivateMs = 300;
    void bindGrab();
    // Opens the service editor; in edit mode on the service of that display name, with the country dialog
    // following a second later when asked.
    void openServiceEditor(ServiceEditorWindow::Mode mode, const QString& serviceName = QString(),
                           bool openCountry = false);
    // A save in the editor: the buttons follow a renamed service, and the current one shows what was saved.
    void serviceSaved(const QString& file, const QString& previousFile);

    AutomationBackend& m_backend;
    ActSession m_session;
    ContactForm m_form;
    ContactCapture m_capture;
    HostFollower m_follower;
    SingleInstance m_instance;
    bool m_filling = false;
    bool m_unloaded = false;
    QString m_countryFilePath;
    ContactUpdater m_updater;
    std::unique_ptr<DesktopWindows> m_desktop;
    std::unique_ptr<GrabText> m_grabText;
    QPointer<SmartParserWindow> m_smartParser;
    QPointer<ServiceEditorWindow> m_editor;
    // A grab waits for the browser with the event loop running; a second press meanwhile is ignored.
    bool m_grabbing = false;

    ServicesPanel* m_panel = nullptr;
    std::array<QLineEdit*, ContactForm::kSlots> m_fields{};
    std::array<QPushButton*, ContactForm::kSlots> m_grab{};
    std::array<QLabel*, 3> m_freeLabels{};
    std::array<QRadioButton*, 3> m_options{};
    QButtonGroup* m_optionGroup = nullptr;
    QWidget* m_optionRow = nullptr;
    QWidget* m_phoneRow = nullptr;
    QComboBox* m_phones = nullptr;
    QCheckBox* m_keepOpen = nullptr;
    QPushButton* m_go = nullptr;
    QPushButton* m_update = nullptr;
    QPushButton* m_newContact = nullptr;
    QAction* m_undo = nullptr;
    QWidget* m_contactFrame = nullptr;
    QScrollArea* m_scroll = nullptr;
    QWidget* m_content = nullptr;
    QMenu* m_popup = nullptr;
};

} // namespace corvalent
