// The main window's life beside the contact manager: start-up and its refusals, the state kept between runs, the
// contact manager's events, the restart after integration, and the keyboard.

#include "WindowFixture.h"

#include "download/ManageWindow.h"
#include "common/ProgramFolder.h"
#include "support/ScriptedDesktop.h"

#include <QAction>
#include <QDialog>
#include <QLayout>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <QTimer>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QRadioButton>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

enum HostAction { EditContact, MoveContact, AddContact };

} // namespace

class TestMainWindow : public QObject {
    Q_OBJECT

    std::unique_ptr<test::WindowFixture> m;

private slots:
    void init() { m = std::make_unique<test::WindowFixture>(); }
    void cleanup() { m.reset(); }

    // The buttons of a stored settings file come back with the stored one pressed. A stored button whose service is
    // gone is not pressed, and with no service no row is read.
    void startup_data()
    {
        QTest::addColumn<int>("stored"); // Pressed
        QTest::addColumn<int>("pressed");
        QTest::addColumn<QStringList>("boxes");
        QTest::newRow("stored button") << 1 << 1 << test::kBoxesA;
        QTest::newRow("stored button without a service") << 2 << -1 << QStringList(10);
    }
    void startup()
    {
        QFETCH(int, stored);
        QFETCH(int, pressed);
        const QStringList captions{u"SEC EDGAR companies"_s, u"OpenStreetMap address"_s, {}, {}};
        const QString settings = m->host.home.write(u"Other.ini"_s, "[Buttons]\r\n1=SEC EDGAR companies\r\n"
                                                                    "2=OpenStreetMap address\r\n3=Not there\r\n");
        SaveSetting(u"SettingsFilePath"_s, settings);
        SaveSetting(u"Pressed"_s, QString::number(stored));
        MainWindow& w = m->start();
        QVERIFY(m->started);
        QCOMPARE(m->prompter->texts(), QStringList());
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(m->serviceButton(i)->isChecked(), i == pressed);
            QCOMPARE(m->serviceButton(i)->property("caption").toString(), captions[i]);
        }
        QCOMPARE(w.currentServiceFile(), pressed < 0 ? QString() : m->serviceFile(captions[pressed]));
        QTEST(m->boxes(), "boxes");
    }

    // With Startup 1 the boxes start empty, yet the record is captured, and the next contact event shows it.
    void startupBlankUntilTheNextEvent()
    {
        SaveSetting(u"Startup"_s, u"1"_s);
        MainWindow& w = m->start();
        QCOMPARE(w.capture().FieldValues[0], u"Jean Tremblay"_s);
        QCOMPARE(m->boxes(), QStringList(10));
        m->host.host.setField(30, u"Laval"_s);
        QTRY_COMPARE(m->boxes(), test::with(test::kBoxesA, 3, u"Laval"_s));
    }

    // A second start is refused and brings the first window forward, which still runs, holds the program and
    // follows the contact manager. That a refused start writes nothing is hostNamedTexts'.
    void secondInstance()
    {
        m->start();
        m->window().move(300, 200);
        m->type(0, u"typed"_s);
        m->window().showMinimized();

        MainWindow& refused = m->start();
        QVERIFY(!m->started);
        QCOMPARE(m->prompter->texts(), QStringList{u"An instance of this program is already open!"_s});
        QCOMPARE(m->prompter->prompts()[0].style, 0);
        refused.close(); // the user's Exit, once more

        QVERIFY(!SingleInstance().acquire());
        QTRY_VERIFY(!m->window().isMinimized());
        QCOMPARE(m->window().pos(), QPoint(300, 200));
        QCOMPARE(m->box(0)->text(), u"typed"_s);
        m->host.host.moveTo(m->host.ids[1]);
        QTRY_COMPARE(m->box(0)->text(), u"Anne Martin"_s);
    }

    // Every text that names the contact manager, beside ACT! (its own texts, word for word) and beside ours; the
    // update's undo plays back whatever the name in its caption.
    void hostNamedTexts_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QStringList>("texts"); // unreachable, no database, menu item, update, undo, caption, restart
        QTest::newRow("ACT!") << u"ACT!"_s << QStringList{
            u"Unable to communicate with ACT!\rPlease run actreg.exe located in the ACT folder and try again"_s,
            u"Please open an ACT database prior to running Corvalent!"_s,
            u"Integrate with ACT!..."_s,
            u"Are you sure you want to update ACT! current contact?"_s,
            u"Undo Update ACT!"_s,
            u"Integrate with ACT!"_s,
            u"You need to re-start ACT! for the changes to take effect!\r\nDo you want to re-start it now?"_s};
        QTest::newRow("Corvalent Contacts") << u"Corvalent Contacts"_s << QStringList{
            u"Unable to communicate with Corvalent Contacts!\rPlease start Corvalent Contacts, open a database and "
            u"try again"_s,
            u"Please open a database in Corvalent Contacts (File > Open Database) prior to running Corvalent!"_s,
            u"Integrate with Corvalent Contacts..."_s,
            u"Are you sure you want to update the current contact in Corvalent Contacts?"_s,
            u"Undo Update Corvalent Contacts"_s,
            u"Integrate with Corvalent Contacts"_s,
            u"You need to re-start Corvalent Contacts for the changes to take effect!\r\nDo you want to re-start it "
            u"now?"_s};
    }
    void hostNamedTexts()
    {
        QFETCH(QString, host);
        QFETCH(QStringList, texts);
        test::InProcessBackend backend(m->host.host, host);
        test::FlakyBackend unreachable(backend); // a contact manager that answers nothing
        unreachable.budget = 0;
        MainWindow& w = m->start(&backend);
        QVERIFY(m->started);
        QCOMPARE(w.findChild<QAction*>(u"mnuIntegrate"_s)->text().remove(u'&'), texts[2]);
        m->type(0, u"Someone Else"_s);
        m->prompter->scriptAnswer(Prompter::Yes);
        QTest::mouseClick(m->widget<QPushButton>(u"cmdUpdateACT"_s), Qt::LeftButton);
        QAction* undo = w.findChild<QAction*>(u"mnuUndo"_s);
        QCOMPARE(undo->text().remove(u'&'), texts[4]);
        undo->trigger();
        QCOMPARE(m->host.host.store().fieldText(m->host.ids[0], 26), u"Jean Tremblay"_s);

        w.findChild<QAction*>(u"mnuIntegrate"_s)->trigger();
        QPointer<QDialog> integrate = w.findChild<QDialog*>(u"frmIntegrate"_s);
        QVERIFY(integrate);
        QCOMPARE(integrate->windowTitle(), texts[5]);
        QTest::mouseClick(integrate->findChild<QCheckBox*>(u"chkScreen(0)"_s), Qt::LeftButton);
        m->prompter->scriptAnswer(Prompter::No);
        QTest::mouseClick(integrate->findChild<QPushButton*>(u"cmdOK"_s), Qt::LeftButton);
        QTRY_VERIFY(integrate.isNull());
        QVERIFY(w.isVisible());
        w.close();

        // Refused starts, without a contact manager and without a database: hidden, and nothing written.
        const auto before = test::storedPreferences();
        MainWindow& unanswered = m->start(&unreachable);
        m->host.host.closeDatabase();
        MainWindow& noDatabase = m->start(&backend);
        for (MainWindow* refused : {&unanswered, &noDatabase}) {
            QVERIFY(refused->StartFailed);
            QVERIFY(!refused->isVisible());
            refused->close(); // the user's Exit, once more
        }
        QCOMPARE(test::storedPreferences(), before);
        QVERIFY(m->launcher->opened().isEmpty());
        QCOMPARE(m->prompter->texts(), (QStringList{texts[3], texts[6], texts[0], texts[1]}));
        QCOMPARE(m->prompter->prompts()[2].style, 16);
        QCOMPARE(m->prompter->prompts()[3].style, 48);
    }

    void stateKeptBetweenRuns()
    {
        MainWindow& w = m->start();
        w.move(321, 234);
        QTest::mouseClick(m->widget<QCheckBox>(u"chkClose"_s), Qt::LeftButton);
        m->press(2); // Area code lookup: the area code of the phone listed in row 7
        auto phones = m->widget<QComboBox>(u"cboPhone"_s);
        const int home = phones->findData(37);
        QVERIFY(home >= 0 && home != phones->currentIndex());
        phones->setCurrentIndex(home);
        emit phones->activated(home);
        const QPoint closedAt = w.geometry().topLeft(); // the inside of the window, as it is restored
        w.close();
        QStringList values;
        for (const char* key : {"Left", "Top", "Close", "Option", "ComboPhone"})
            values << test::stored(QLatin1String(key));
        QCOMPARE(values, (QStringList{QString::number(closedAt.x()), QString::number(closedAt.y()), u"1"_s, u"2"_s,
                                      u"37"_s}));

        // The button is stored and comes back as pressButton and startup show; the place comes back as placement
        // shows. The restored phone is the one the phone rows read.
        m->windows.erase(m->windows.begin());
        m->start();
        QVERIFY(m->widget<QCheckBox>(u"chkClose"_s)->isChecked());
        QVERIFY(m->widget<QRadioButton>(u"optOption(2)"_s)->isChecked());
        QCOMPARE(m->widget<QComboBox>(u"cboPhone"_s)->currentData().toInt(), 37);
        QCOMPARE(m->box(7)->text(), u"450"_s);
    }

    // Every contact event reads every box and the phone list anew, typed text or not, with one capture: four calls,
    // each a round trip over the bus; start-up captures once too. The lookup change that adding a contact fires is
    // not followed.
    void contactEvents_data()
    {
        QTest::addColumn<int>("action");
        QTest::addColumn<bool>("adding");
        QTest::addColumn<QStringList>("boxes");
        QTest::addColumn<QString>("phone"); // the phone list's first entry
        const QString phoneA = u"[Phone] (514) 555-0199"_s;
        QTest::newRow("contact edited") << int(EditContact) << false
                                        << test::with(test::kBoxesA, 0, u"Jean-Paul Tremblay"_s) << phoneA;
        QTest::newRow("contact moved") << int(MoveContact) << false
                                       << QStringList{u"Anne Martin"_s, u"Beta Inc"_s, u"200 King St W"_s, u"Toronto"_s,
                                                      u"ON"_s, u"M5H 1J9"_s, u"Canada"_s, {}, {}, {}}
                                       << u"[Phone] 01 23 45 67 89"_s;
        QTest::newRow("lookup change") << int(AddContact) << false << QStringList(10) << u"[Phone]"_s;
        QTest::newRow("lookup change while adding")
            << int(AddContact) << true << test::with(test::kBoxesA, 2, u"typed"_s) << phoneA;
    }
    void contactEvents()
    {
        QFETCH(int, action);
        QFETCH(bool, adding);
        test::FlakyBackend& backend = m->host.backend;
        MainWindow& w = m->start();
        QCOMPARE(backend.calls.count(u"GetFields"_s), 1);
        m->type(2, u"typed"_s);
        w.follower().AddingContact = adding;
        backend.calls.clear();
        // Connected after the window, so the window has handled an event once it is counted here.
        QSignalSpy edited(&backend.events(), &HostEvents::OnContactChange);
        QSignalSpy moved(&backend.events(), &HostEvents::OnContactPosChange);
        QSignalSpy lookup(&backend.events(), &HostEvents::OnContactLookupChange);
        if (action == EditContact)
            m->host.host.setField(26, u"Jean-Paul Tremblay"_s);
        else if (action == MoveContact)
            m->host.host.moveTo(m->host.ids[1]);
        else
            m->host.host.addNewContact();
        QTRY_COMPARE(edited.count() + moved.count() + lookup.count(), 1);
        QTEST(m->boxes(), "boxes");
        QTEST(m->widget<QComboBox>(u"cboPhone"_s)->itemText(0), "phone");
        const QStringList capture{u"GetActive"_s, u"Type"_s, u"Create"_s, u"GetFields"_s};
        QCOMPARE(backend.calls, adding ? QStringList() : capture);
    }

    // The window closes with the contact manager unless it is to restart it; a closed database is
    // tst_addonfollowshost's.
    void hostCloses_data()
    {
        QTest::addColumn<bool>("restartPending");
        QTest::newRow("contact manager closed") << false;
        QTest::newRow("contact manager closed, restart pending") << true;
    }
    void hostCloses()
    {
        QFETCH(bool, restartPending);
        MainWindow& w = m->start();
        w.follower().RestartPending = restartPending;
        QSignalSpy unloaded(&w, &MainWindow::unloaded);
        m->host.host.userWantsToClose();
        // Delivers both events the contact manager sent: it wants to close, and its database closed.
        QCoreApplication::sendPostedEvents();
        QCOMPARE(unloaded.count(), restartPending ? 0 : 1);
        QCOMPARE(w.isVisible(), restartPending);
    }

    // Return in a box is GO: it sends the boxes as edited and closes the window unless it is kept open; how the
    // request is built and GO's messages are tst_go's.
    void returnInABoxSends_data()
    {
        QTest::addColumn<bool>("keepOpen");
        QTest::newRow("closes") << false;
        QTest::newRow("kept open") << true;
    }
    void returnInABoxSends()
    {
        QFETCH(bool, keepOpen);
        MainWindow& w = m->start();
        QVERIFY(m->widget<QPushButton>(u"cmdGO"_s)->isDefault());
        if (keepOpen)
            QTest::mouseClick(m->widget<QCheckBox>(u"chkClose"_s), Qt::LeftButton);
        QSignalSpy unloaded(&w, &MainWindow::unloaded);
        m->type(3, u"Québec"_s);
        QTest::keyClick(m->box(3), Qt::Key_Return);
        QCOMPARE(m->launcher->opened().size(), 1);
        QVERIFY(m->launcher->opened()[0].target.contains(u"&city=Qu%C3%A9bec&"_s));
        QCOMPARE(w.isVisible(), keepOpen);
        QCOMPARE(unloaded.count(), keepOpen ? 0 : 1);
    }

    // A click in a box selects its whole text (a line edit selects it by itself only when tabbed into).
    void clickSelectsTheBox()
    {
        MainWindow& w = m->start();
        w.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        QLineEdit* city = m->box(3);
        QTest::mouseClick(city, Qt::LeftButton, {}, QPoint(4, city->height() / 2));
        QVERIFY(city->hasFocus());
        QTRY_COMPARE(city->selectedText(), u"Montréal"_s);
        QTest::keyClicks(city, u"Laval"_s);
        QCOMPARE(city->text(), u"Laval"_s);
    }

    // A stored position that would leave part of the window off every screen puts it whole on the nearest one. The
    // first start opens beside the contact manager's window where there is room, otherwise at the screen's edge;
    // where its window cannot be seen, at the usual place.
    void placement_data()
    {
        QTest::addColumn<QPoint>("stored"); // null: nothing stored, the first start
        QTest::addColumn<QRect>("host");    // the contact manager's window; null: not seen
        QTest::addColumn<QString>("expected"); // stored, moved, beside (right of the host), edge (the screen's), usual
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        QTest::newRow("inside") << QPoint(120, 140) << QRect() << u"stored"_s;
        QTest::newRow("off to the right") << QPoint(screen.right() - 60, 140) << QRect() << u"moved"_s;
        QTest::newRow("on a monitor that was removed")
            << QPoint(screen.right() + 900, screen.bottom() + 500) << QRect() << u"moved"_s;
        QTest::newRow("first start, room on the right") << QPoint() << QRect(0, 0, 300, 400) << u"beside"_s;
        QTest::newRow("first start, no room beside") << QPoint() << screen << u"edge"_s;
        QTest::newRow("first start, not seen") << QPoint() << QRect() << u"usual"_s;
    }
    void placement()
    {
        QFETCH(QPoint, stored);
        QFETCH(QRect, host);
        QFETCH(QString, expected);
        if (!stored.isNull()) {
            SaveSetting(u"Left"_s, QString::number(stored.x()));
            SaveSetting(u"Top"_s, QString::number(stored.y()));
        }
        test::ScriptedWindow contacts = test::ScriptedWindow::named(u"Corvalent Contacts - Sample.cvdb"_s);
        contacts.frame = host;
        m->windows.push_back(std::make_unique<MainWindow>(m->host.backend));
        MainWindow& w = *m->windows.back();
        w.setDesktop(std::make_unique<test::ScriptedDesktop>(
            QList<test::ScriptedWindow>{test::ScriptedWindow::named(u"Mozilla Firefox"_s), contacts}));
        QVERIFY(w.Form_Load());
        w.show();
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        const QRect frame = w.frameGeometry();
        QVERIFY2(screen.contains(frame),
                 qPrintable(u"%1,%2 %3x%4"_s.arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height())));
        if (!stored.isNull())
            QCOMPARE(w.geometry().topLeft() == stored, expected == u"stored");
        else if (expected == u"beside")
            QVERIFY(frame.left() > host.right() && !frame.intersects(host));
        else if (expected == u"edge")
            QCOMPARE(frame.right(), screen.right());
        else
            QCOMPARE(w.geometry().topLeft(), QPoint(100, 100));
    }

    // The window stays on top, and is as large as its controls need: maximising leaves it so.
    void notMaximisable()
    {
        MainWindow& w = m->start();
        QVERIFY(!w.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
        QVERIFY(w.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        const QSize before = w.size();
        w.showMaximized();
        QCOMPARE(w.size(), before);
    }

    // Every menu item and every button with a caption has a mnemonic, and no two items of a menu share one; the
    // service buttons, whose captions are names, answer Alt+1 to Alt+4 instead.
    void keyboard()
    {
        MainWindow& w = m->start();
        auto mnemonic = [](const QString& text) { return QKeySequence::mnemonic(text); };
        QList<QMenu*> menus = w.menuBar()->findChildren<QMenu*>();
        menus << w.findChild<QMenu*>(u"mnuPopup"_s);
        for (QMenu* menu : menus) {
            QSet<QKeySequence> seen;
            for (QAction* item : menu->actions()) {
                if (item->isSeparator())
                    continue;
                QVERIFY2(!mnemonic(item->text()).isEmpty(), qPrintable(item->objectName()));
                QVERIFY2(!seen.contains(mnemonic(item->text())), qPrintable(item->objectName()));
                seen << mnemonic(item->text());
            }
        }
        for (QAbstractButton* button : w.findChildren<QAbstractButton*>()) {
            if (button->objectName().startsWith(u"chkServices"_s) || button->text().isEmpty())
                continue;
            QVERIFY2(!mnemonic(button->text()).isEmpty(), qPrintable(button->objectName()));
        }
        m->putOnButton(3, u"Fourth"_s, u"Base=2|"_s + test::kRows);
        w.Refresh_Labels();
        QVERIFY(m->serviceButton(3)->toolTip().contains(ServicesPanel::shortcut(3).toString(QKeySequence::NativeText)));
        w.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        QTest::keyClick(&w, Qt::Key_4, Qt::AltModifier);
        QVERIFY(m->serviceButton(3)->isChecked());

        // Tab walks the rows from the top, left to right in a row, and ends on GO.
        m->serviceButton(0)->setFocus();
        QWidget* previous = m->serviceButton(0);
        for (int step = 0; step < 40 && previous != m->widget(u"cmdGO"_s); ++step) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QWidget* next = QApplication::focusWidget();
            const QRect a(previous->mapTo(&w, QPoint()), previous->size());
            const QRect b(next->mapTo(&w, QPoint()), next->size());
            const bool sameRow = b.top() < a.bottom() && a.top() < b.bottom();
            QVERIFY2(sameRow ? b.left() > a.left() : b.top() > a.top(),
                     qPrintable(previous->objectName() + u" -> "_s + next->objectName()));
            previous = next;
        }
        QCOMPARE(previous->objectName(), u"cmdGO"_s);
    }

    // The windows the menus open belong to this window, stay above it, and close on Escape; Edit opens the same
    // editor as New Service.
    void dialogsAboveTheWindow_data()
    {
        QTest::addColumn<QString>("item");
        for (const char* item : {"mnuSettings", "mnuPreferences", "mnuIntegrate", "mnuManage"})
            QTest::newRow(item) << QString::fromLatin1(item);
    }
    void dialogsAboveTheWindow()
    {
        QFETCH(QString, item);
        MainWindow& w = m->start();
        w.findChild<QAction*>(item)->trigger();
        QDialog* dialog = nullptr;
        for (QDialog* candidate : w.findChildren<QDialog*>(Qt::FindDirectChildrenOnly))
            if (candidate->isVisible())
                dialog = candidate;
        QVERIFY(dialog);
        QVERIFY(dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QTest::keyClick(dialog, Qt::Key_Escape);
        QTRY_VERIFY(!dialog->isVisible());
    }

    // A message box belongs to the window that stays on top also while another program is active, so it shows
    // above it; a window of the program's own that does not stay on top is no owner for it, whatever their order.
    void messageBoxAboveTheWindow()
    {
        MainWindow& w = m->start();
        QWidget other;
        other.show();
        Prompter::install(std::make_unique<MessageBoxPrompter>());
        // Shows a box while no window of the program is active; answers its owner and whether it stays on top (or
        // `other`, which is never the owner, when no box was seen).
        const auto shownBox = [&other] {
            std::pair<QWidget*, bool> owner{&other, false};
            QTimer answer;
            answer.callOnTimeout([&] {
                if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                    owner = {box->parentWidget(), box->windowFlags().testFlag(Qt::WindowStaysOnTopHint)};
                    box->accept();
                }
            });
            answer.start(10);
            QApplication::setActiveWindow(nullptr);
            Prompter::instance().message(u"Shown above"_s, Prompter::Information);
            return owner;
        };
        w.hide();
        const auto withoutTheWindow = shownBox();
        w.show();
        const auto withTheWindow = shownBox();
        m->prompter = test::install<RecordingPrompter, Prompter>();
        QCOMPARE(withoutTheWindow.first, nullptr);
        QCOMPARE(withTheWindow, (std::pair<QWidget*, bool>(&w, true)));
    }

    // What the Contact and Help menus do; Undo greyed out until there is something to undo is tst_grabwindow's.
    void menus()
    {
        MainWindow& w = m->start();
        auto item = [&](const char* name) { return w.findChild<QAction*>(QLatin1String(name)); };
        QCOMPARE(item("mnuSettings")->text().remove(u'&'), u"New Service..."_s);
        QCOMPARE(item("mnuPopupSettings")->text(), u"&Edit"_s);

        m->type(0, u"typed"_s);
        m->type(3, u"typed"_s);
        item("mnuLoadAll")->trigger();
        QCOMPARE(m->boxes(), test::kBoxesA);
        item("mnuClearAll")->trigger();
        QCOMPARE(m->boxes(), QStringList(10));

        // The program folder was seeded before the manual existed: both help items bring the built one in and open it.
        item("mnuOnline")->trigger();
        item("mnuInstructions")->trigger();
        QCOMPARE(m->launcher->opened().size(), 2);
        const QString folder = ProgramFolder::path();
        QCOMPARE(m->launcher->opened()[0].target, ProgramFolder::join(folder, u"Corvalent_manual.html"_s));
        QCOMPARE(m->launcher->opened()[1].target, ProgramFolder::join(folder, u"Corvalent_manual.pdf"_s));
        QVERIFY(QFileInfo(m->launcher->opened()[1].target).size() > 0);

        // Manage Services opens frmManage over this window, on the server of the preferences.
        SaveSetting(kServicesServerKey, u"ftp://services.example.org/"_s);
        item("mnuManage")->trigger();
        auto* manage = w.findChild<ManageWindow*>(u"frmManage"_s);
        QVERIFY(manage && manage->isVisible() && manage->isModal());
        QCOMPARE(manage->manage().serverUrl(), u"ftp://services.example.org/"_s);
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
