#include "model/ContactHost.h"
#include "ui/ContactsWindow.h"

#include "common/Automation.h"
#include "common/Prompter.h"
#include "support/TestHome.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTableView>
#include <QTest>
#include <algorithm>

using namespace corvalent;
using namespace corvalent::host;
using namespace Qt::StringLiterals;

// The window on a real host and a real sample database: what the user does in the window must reach the store
// and fire the host's events, and what the host does (automation included) must show in the window.
class TestContactsWindow : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    int m_databases = 0;
    QString m_path;
    RecordingPrompter* m_prompter = nullptr;
    std::unique_ptr<ContactHost> m_host;
    std::unique_ptr<ContactsWindow> m_window;

    template <typename T = QWidget>
    T* child(const QString& name = QString()) const { return m_window->findChild<T*>(name); }
    QAction* action(const QString& name) const { return child<QAction>(name); }
    QLineEdit* editor(int fieldId) const
    {
        QWidget* w = child(u"field%1"_s.arg(fieldId));
        auto combo = qobject_cast<QComboBox*>(w);
        return combo ? combo->lineEdit() : qobject_cast<QLineEdit*>(w);
    }
    QTableView* table() const { return child<QTableView>(u"contactListView"_s); }
    int rows() const { return table()->model()->rowCount(); }
    QString position() const { return child<QLabel>(u"lblPosition"_s)->text(); }
    ContactStore& store() const { return m_host->store(); }
    bool shows(const QString& container, const QString& command) const
    {
        const QList<QAction*> actions = child(container)->actions();
        return std::any_of(actions.begin(), actions.end(),
                           [&](QAction* a) { return a->objectName().endsWith(u':' + command); });
    }

private slots:
    void initTestCase()
    {
        m_prompter = new RecordingPrompter;
        Prompter::install(std::unique_ptr<Prompter>(m_prompter));
    }
    void init()
    {
        m_window.reset(); // before the host it shows
        m_path = m_home.file(u"sample%1.cvdb"_s.arg(++m_databases));
        writeSampleDatabase(m_path);
        m_host = std::make_unique<ContactHost>();
        m_host->openDatabase(m_path);
        m_window = std::make_unique<ContactsWindow>(*m_host);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_prompter->clear();
    }

    void navigationMovesAndShowsTheContact_data()
    {
        QTest::addColumn<QString>("command"); // "" picks the row in the list
        QTest::addColumn<int>("startRow");
        QTest::addColumn<int>("expectedRow"); // -1: the last row
        QTest::newRow("next") << "actionNext" << 0 << 1;
        QTest::newRow("previous") << "actionPrevious" << 2 << 1;
        QTest::newRow("last") << "actionLast" << 0 << -1;
        QTest::newRow("first") << "actionFirst" << 3 << 0;
        QTest::newRow("row picked in the list") << "" << 0 << 4;
    }
    void navigationMovesAndShowsTheContact()
    {
        QFETCH(QString, command);
        QFETCH(int, startRow);
        QFETCH(int, expectedRow);
        const int count = rows();
        expectedRow = expectedRow < 0 ? count - 1 : expectedRow;
        m_host->moveToRow(startRow);
        // The window shows a move a moment later, in one go.
        QTRY_COMPARE(position(), u"Contact %1 of %2"_s.arg(startRow + 1).arg(count));
        if (command.isEmpty())
            table()->setCurrentIndex(table()->model()->index(expectedRow, 0));
        else
            action(command)->trigger();

        QCOMPARE(m_host->currentRow(), expectedRow);
        QTRY_COMPARE(position(), u"Contact %1 of %2"_s.arg(expectedRow + 1).arg(count));
        for (int field : {26, 25, 30, 35})
            QCOMPARE(editor(field)->text(), store().fieldText(m_host->currentId(), field));
        QCOMPARE(table()->currentIndex().row(), expectedRow);
    }

    // Typing writes nothing; finishing the field, or a command that takes the contact away, writes it once. Closing
    // the window also tells automation, once, that the program goes away.
    void editIsWrittenOnceWhenFinished_data()
    {
        QTest::addColumn<int>("field");
        QTest::addColumn<QString>("finish"); // a key, an action, or what happens to the window
        QTest::addColumn<bool>("written");
        QTest::newRow("city, Return") << 30 << "Return" << true;
        QTest::newRow("title, typed into the list's box") << 34 << "Tab" << true;
        QTest::newRow("read-only create date") << 78 << "Return" << false;
        QTest::newRow("city, next contact") << 30 << "actionNext" << true;
        // What was typed belongs to the contact shown, not to the one another client has moved to meanwhile.
        QTest::newRow("city, moved by a client, Return") << 30 << "moved" << false;
        QTest::newRow("city, window closed") << 30 << "close" << true;
        // Deleting the window moves focus out of the editor after the window's state is gone.
        QTest::newRow("city, window deleted unclosed") << 30 << "delete" << false;
    }
    void editIsWrittenOnceWhenFinished()
    {
        QFETCH(int, field);
        QFETCH(QString, finish);
        QFETCH(bool, written);
        const QString typed = u"Rimouski"_s;
        const qint64 id = m_host->currentId();
        const QString old = store().fieldText(id, field);
        const QModelIndex cityCell = table()->model()->index(m_host->currentRow(), 3);
        QCOMPARE(cityCell.data().toString(), store().fieldText(id, 30)); // the list has read (and kept) the row
        QSignalSpy changes(m_host.get(), &ContactHost::OnContactChange);
        QSignalSpy wantsToClose(m_host.get(), &ContactHost::OnActUserWantsToClose);
        QLineEdit* line = editor(field);
        line->setFocus();
        line->selectAll();
        QTest::keyClicks(line, typed);
        QCOMPARE(changes.size(), 0);
        QCOMPARE(store().fieldText(id, field), old);
        if (finish == "moved")
            m_host->next();
        if (finish == "close")
            m_window->close();
        else if (finish == "delete")
            m_window.reset();
        else if (finish.startsWith(u"action"))
            action(finish)->trigger();
        else
            QTest::keyClick(line, finish == "Tab" ? Qt::Key_Tab : Qt::Key_Return);
        if (m_window && m_window->isVisible()) {
            editor(25)->setFocus(); // leaving the field afterwards must not write again
            QCOMPARE(changes.size(), written ? 1 : 0);
            QCOMPARE(cityCell.data().toString(), store().fieldText(id, 30));
            QVERIFY(m_host->currentId() == id || store().fieldText(m_host->currentId(), field) != typed);
        }
        QCOMPARE(wantsToClose.size(), finish == "close" ? 1 : 0);
        ContactStore reread; // the host's store is closed once the window has closed
        reread.open(m_path);
        QCOMPARE(reread.fieldText(id, field), written ? typed : old);
    }

    void lookupNarrowsAndAllContactsRestores()
    {
        const int all = rows();
        m_window->lookupText(store().fieldText(m_host->currentId(), 30));
        const int narrowed = int(m_host->lookupIds().size());
        QVERIFY(narrowed > 0 && narrowed < all);
        QTRY_COMPARE(position(), u"Contact 1 of %1"_s.arg(narrowed));
        QCOMPARE(rows(), narrowed);
        m_window->lookupText(u"no contact has this text"_s);
        QTRY_COMPARE(position(), u"No contacts"_s);
        QCOMPARE(rows(), 0);
        QVERIFY(!editor(26)->isEnabled());
        action(u"actionLookupAll"_s)->trigger();
        QTRY_COMPARE(position(), u"Contact 1 of %1"_s.arg(all));
        QCOMPARE(rows(), all);
        QVERIFY(editor(26)->isEnabled());
    }

    void viewsFollowTheHost_data()
    {
        QTest::addColumn<bool>("byMenu");
        QTest::addColumn<bool>("list");
        QTest::newRow("list from the menu") << true << true;
        QTest::newRow("contacts from the menu") << true << false;
        QTest::newRow("list from automation") << false << true;
        QTest::newRow("contacts from automation") << false << false;
    }
    void viewsFollowTheHost()
    {
        QFETCH(bool, byMenu);
        QFETCH(bool, list);
        const auto target = list ? ContactHost::View::ContactList : ContactHost::View::Contact;
        m_host->setActiveView(list ? ContactHost::View::Contact : ContactHost::View::ContactList);
        const QString name = list ? u"actionViewContactList"_s : u"actionViewContacts"_s;
        byMenu ? action(name)->trigger() : m_host->setActiveView(target);
        QCOMPARE(m_host->activeView(), target);
        QCOMPARE(child<QStackedWidget>()->currentWidget()->objectName(),
                 list ? u"contactListView"_s : u"contactView"_s);
        QVERIFY(action(name)->isChecked());
    }

    void auxCommandsShowInTheirViewOnlyAndStartInTheirFolder()
    {
        const QString bar = u"toolBarCommands"_s, menu = u"menuTools"_s;
        const QString program = m_home.write(u"bin/where.sh"_s, "#!/bin/sh\npwd > where.txt\n");
        QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        for (const auto& [name, path, view] :
             {std::tuple{u"Corvalent"_s, program, 1}, {u"Calendar Tool"_s, u"/bin/true"_s, 5}}) {
            store().addAuxCommand({name, path, m_home.path(), name, {}, {}, {}, 0});
            store().setAuxCommandInToolbar(name, view, true);
            store().setAuxCommandInToolsMenu(name, view, true);
        }
        m_host->command(104);
        QVERIFY(shows(bar, u"Corvalent"_s) && shows(menu, u"Corvalent"_s));
        QVERIFY(!shows(bar, u"Calendar Tool"_s) && !shows(menu, u"Calendar Tool"_s));
        m_host->setActiveView(ContactHost::View::ContactList);
        QVERIFY(!shows(bar, u"Corvalent"_s) && !shows(menu, u"Corvalent"_s));
        m_host->setActiveView(ContactHost::View::Contact);
        QVERIFY(shows(bar, u"Corvalent"_s));
        store().setAuxCommandInToolsMenu(u"Corvalent"_s, 1, false);
        m_host->command(104);
        QVERIFY(!shows(menu, u"Corvalent"_s) && shows(bar, u"Corvalent"_s));
        action(u"toolbarCommand:Corvalent"_s)->trigger();
        QFile record(QDir(m_home.path()).filePath(u"where.txt"_s));
        QTRY_VERIFY_WITH_TIMEOUT(record.size() > 0, 10000);
        QVERIFY(record.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromLocal8Bit(record.readAll()).trimmed(), QFileInfo(m_home.path()).canonicalFilePath());
    }

    void databaseFiles_data()
    {
        QTest::addColumn<bool>("create");        // New Database rather than Open Database
        QTest::addColumn<QByteArray>("content"); // of the file before; "sample" writes the sample database
        QTest::addColumn<bool>("opens");
        QTest::newRow("open garbage") << false << QByteArray("this is not a contact database\n") << false;
        QTest::newRow("open another database") << false << QByteArray("sample") << true;
        QTest::newRow("new over an existing file") << true << QByteArray("someone's notes\n") << false;
        QTest::newRow("new database") << true << QByteArray() << true;
    }
    void databaseFiles()
    {
        QFETCH(bool, create);
        QFETCH(QByteArray, content);
        QFETCH(bool, opens);
        const QString path = m_home.file(u"other%1.cvdb"_s.arg(++m_databases));
        if (content == "sample")
            writeSampleDatabase(path);
        else if (!content.isEmpty())
            m_home.write(QFileInfo(path).fileName(), content);
        const QString title = m_window->windowTitle();
        const int before = rows();
        QCOMPARE(create ? m_window->newDatabaseFile(path) : m_window->openDatabaseFile(path), opens);
        QCOMPARE(m_host->store().path(), opens ? path : m_path);
        QCOMPARE(m_window->windowTitle(), opens ? u"Corvalent Contacts - "_s + QFileInfo(path).fileName() : title);
        QCOMPARE(rows(), opens ? int(m_host->lookupIds().size()) : before);
        QCOMPARE(editor(26)->text(), store().fieldText(m_host->currentId(), 26));
        QCOMPARE(m_prompter->prompts().size(), opens ? 0 : 1);
        if (!opens) {
            QVERIFY(m_prompter->texts().first().contains(QFileInfo(path).fileName()));
            QCOMPARE(test::TestHome::read(path), content);
        }
    }

    // A client holds the window still while it writes (LockWindowUpdate): a change made meanwhile shows once the
    // window is unlocked, by UnlockWindowUpdate or by itself after 5 s, so that a client that dies cannot leave
    // it frozen.
    void lockedWindowCatchesUpWhenUnlocked_data()
    {
        QTest::addColumn<bool>("unlock");
        QTest::newRow("UnlockWindowUpdate") << true;
        QTest::newRow("released after 5 s") << false;
    }
    void lockedWindowCatchesUpWhenUnlocked()
    {
        QFETCH(bool, unlock);
        const AutomationPtr app = m_host->createObject(kProgIdApp);
        const QString before = editor(26)->text();
        app->invoke(u"LockWindowUpdate"_s, {});
        m_host->setField(26, u"Written While Locked"_s);
        QCOMPARE(editor(26)->text(), before);
        QVERIFY(!m_window->updatesEnabled());
        if (unlock)
            app->invoke(u"UnlockWindowUpdate"_s, {});
        // Unlocked at once, or only once the lock has run out.
        QTRY_COMPARE_WITH_TIMEOUT(editor(26)->text(), u"Written While Locked"_s,
                                  unlock ? 0 : ContactHost::kMaxUpdateLockMs + 2000);
        QVERIFY(m_window->updatesEnabled());
    }
};

QTEST_MAIN(TestContactsWindow)
#include "tst_contactswindow.moc"