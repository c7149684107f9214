#include "model/ContactHost.h"
#include "ui/ContactListModel.h"
#include "ui/ContactsWindow.h"

#include "common/Prompter.h"
#include "support/TestHome.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTableView>
#include <QTest>
#include <QToolBar>
#include <algorithm>

using namespace corvalent;
using namespace corvalent::host;

// The window on a real host and a real sample database: what the user does in the window must reach the store
// and fire the host's events, and what the host does (automation included) must show in the window.
class TestContactsWindow : public QObject {
    Q_OBJECT

private:
    test::TestHome m_home;
    int m_databases = 0;
    QString m_path;
    RecordingPrompter* m_prompter = nullptr;
    std::unique_ptr<ContactHost> m_host;
    std::unique_ptr<ContactsWindow> m_window;

    template <typename T = QWidget>
    T* child(const QString& name = QString()) const { return m_window->findChild<T*>(name); }
    QLineEdit* editor(int fieldId) const
    {
        QWidget* w = child(QStringLiteral("field%1").arg(fieldId));
        auto combo = qobject_cast<QComboBox*>(w);
        return combo ? combo->lineEdit() : qobject_cast<QLineEdit*>(w);
    }
    QTableView* table() const { return child<QTableView>(QStringLiteral("contactListView")); }
    ContactStore& store() const { return m_host->store(); }
    bool showsAction(const QString& container, const QString& name) const
    {
        const QList<QAction*> actions = child(container)->actions();
        return std::any_of(actions.begin(), actions.end(),
                           [&](QAction* a) { return a->objectName().endsWith(QLatin1Char(':') + name); });
    }
    ContactStore::AuxCommand auxCommand(const QString& name, const QString& program) const
    {
        ContactStore::AuxCommand command;
        command.name = command.title = name;
        command.program = program;
        command.folder = m_home.path();
        command.hint = QStringLiteral("click to launch ") + name;
        return command;
    }

private slots:
    void initTestCase()
    {
        auto prompter = std::make_unique<RecordingPrompter>();
        m_prompter = prompter.get();
        Prompter::install(std::move(prompter));
    }

    void init()
    {
        m_path = m_home.file(QStringLiteral("sample%1.cvdb").arg(++m_databases));
        writeSampleDatabase(m_path);
        m_host = std::make_unique<ContactHost>();
        m_host->openDatabase(m_path);
        m_window = std::make_unique<ContactsWindow>(*m_host);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_prompter->clear();
    }

    void cleanup()
    {
        m_window.reset();
        m_host.reset();
    }

    void navigationMovesAndShowsTheContact_data()
    {
        QTest::addColumn<QString>("action");
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
        QFETCH(QString, action);
        QFETCH(int, startRow);
        QFETCH(int, expectedRow);
        const int count = int(m_host->lookupIds().size());
        QVERIFY(count > 3);
        if (expectedRow < 0)
            expectedRow = count - 1;
        m_host->moveToRow(startRow);
        const QString before = editor(26)->text();

        if (action.isEmpty())
            table()->setCurrentIndex(table()->model()->index(expectedRow, 0));
        else
            child<QAction>(action)->trigger();

        QCOMPARE(m_host->currentRow(), expectedRow);
        const qint64 id = m_host->currentId();
        QVERIFY(editor(26)->text() != before);
        for (int field : {26, 25, 30, 35})
            QCOMPARE(editor(field)->text(), store().fieldText(id, field));
        QCOMPARE(child<QLabel>(QStringLiteral("lblPosition"))->text(),
                 QStringLiteral("Contact %1 of %2").arg(expectedRow + 1).arg(count));
        QCOMPARE(table()->currentIndex().row(), expectedRow);
    }

    // Typing writes nothing; finishing the field, or a command that takes the contact away, writes it once.
    void editIsWrittenOnceWhenFinished_data()
    {
        QTest::addColumn<int>("field");
        QTest::addColumn<QString>("finish"); // a key, an action, or what happens to the window
        QTest::addColumn<bool>("written");
        QTest::newRow("city, Return") << 30 << "Return" << true;
        QTest::newRow("city, Tab away") << 30 << "Tab" << true;
        QTest::newRow("title, typed into the list's box") << 34 << "Tab" << true;
        QTest::newRow("read-only create date") << 78 << "Return" << false;
        QTest::newRow("city, next contact") << 30 << "actionNext" << true;
        QTest::newRow("city, contact list") << 30 << "actionViewContactList" << true;
        QTest::newRow("city, window closed") << 30 << "close" << true;
        QTest::newRow("city, window deleted unclosed") << 30 << "delete" << false;
    }
    void editIsWrittenOnceWhenFinished()
    {
        QFETCH(int, field);
        QFETCH(QString, finish);
        QFETCH(bool, written);
        const QString typed = QStringLiteral("Rimouski");
        const qint64 id = m_host->currentId();
        const QString old = store().fieldText(id, field);
        const QModelIndex cityCell = table()->model()->index(m_host->currentRow(), 3);
        QCOMPARE(ContactListModel::fieldIdOfColumn(3), 30);
        QCOMPARE(cityCell.data().toString(), store().fieldText(id, 30)); // the list has read (and kept) the row
        QSignalSpy changes(m_host.get(), &ContactHost::OnContactChange);

        QLineEdit* line = editor(field);
        line->setFocus();
        line->selectAll();
        QTest::keyClicks(line, typed);
        QCOMPARE(changes.size(), 0);
        QCOMPARE(store().fieldText(id, field), old);

        if (finish == QLatin1String("Return") || finish == QLatin1String("Tab"))
            QTest::keyClick(line, finish == QLatin1String("Tab") ? Qt::Key_Tab : Qt::Key_Return);
        else if (finish == QLatin1String("close"))
            m_window->close();
        else if (finish == QLatin1String("delete"))
            m_window.reset();
        else
            child<QAction>(finish)->trigger();

        if (m_window && m_window->isVisible()) {
            editor(25)->setFocus(); // leaving the field afterwards must not write again
            QCOMPARE(changes.size(), written ? 1 : 0);
            QCOMPARE(cityCell.data().toString(), store().fieldText(id, 30));
        }
        ContactStore reread; // the host's store is closed once the window has closed
        reread.open(m_path);
        QCOMPARE(reread.fieldText(id, field), written ? typed : old);
    }

    void tabReachesEveryFieldInOrder()
    {
        QList<int> expected;
        for (const FieldDef& field : fieldPositions()) {
            if (field.id >= 0)
                expected << field.id;
        }
        editor(expected.first())->setFocus();
        QList<int> visited;
        for (int i = 0; i < expected.size(); ++i) {
            QWidget* focus = QApplication::focusWidget();
            if (qobject_cast<QComboBox*>(focus->parentWidget()))
                focus = focus->parentWidget();
            visited << focus->objectName().mid(5).toInt();
            QTest::keyClick(focus, Qt::Key_Tab);
        }
        QCOMPARE(visited, expected);
    }

    void lookupNarrowsAndAllContactsRestores()
    {
        const int all = table()->model()->rowCount();
        const QString city = store().fieldText(m_host->currentId(), 30);
        m_window->lookupText(city);
        const int narrowed = table()->model()->rowCount();
        QVERIFY2(narrowed > 0 && narrowed < all, qPrintable(QString::number(narrowed)));
        QCOMPARE(narrowed, int(m_host->lookupIds().size()));
        QCOMPARE(child<QLabel>(QStringLiteral("lblPosition"))->text(),
                 QStringLiteral("Contact 1 of %1").arg(narrowed));

        m_window->lookupText(QStringLiteral("no contact has this text"));
        QCOMPARE(table()->model()->rowCount(), 0);
        QVERIFY(!editor(26)->isEnabled());

        child<QAction>(QStringLiteral("actionLookupAll"))->trigger();
        QCOMPARE(table()->model()->rowCount(), all);
        QVERIFY(editor(26)->isEnabled());
    }

    void viewsFollowTheHost_data()
    {
        QTest::addColumn<bool>("byMenu");
        QTest::addColumn<int>("view");
        QTest::newRow("list from the menu") << true << int(ContactHost::View::ContactList);
        QTest::newRow("contacts from the menu") << true << int(ContactHost::View::Contact);
        QTest::newRow("list from automation") << false << int(ContactHost::View::ContactList);
        QTest::newRow("contacts from automation") << false << int(ContactHost::View::Contact);
    }
    void viewsFollowTheHost()
    {
        QFETCH(bool, byMenu);
        QFETCH(int, view);
        const auto target = ContactHost::View(view);
        const bool list = target == ContactHost::View::ContactList;
        m_host->setActiveView(list ? ContactHost::View::Contact : ContactHost::View::ContactList); // the other one
        const QString action = list ? QStringLiteral("actionViewContactList") : QStringLiteral("actionViewContacts");
        byMenu ? child<QAction>(action)->trigger() : m_host->setActiveView(target);
        QCOMPARE(m_host->activeView(), target);
        QCOMPARE(child<QStackedWidget>()->currentWidget()->objectName(),
                 list ? QStringLiteral("contactListView") : QStringLiteral("contactView"));
        QVERIFY(child<QAction>(action)->isChecked());
    }

    void auxCommandsShowInTheirViewOnly()
    {
        const auto placed = auxCommand(QStringLiteral("Corvalent"), QStringLiteral("/bin/true"));
        const auto elsewhere = auxCommand(QStringLiteral("Calendar Tool"), QStringLiteral("/bin/true"));
        store().addAuxCommand(placed);
        store().addAuxCommand(elsewhere);
        store().setAuxCommandInToolbar(placed.name, 1, true);
        store().setAuxCommandInToolsMenu(placed.name, 1, true);
        store().setAuxCommandInToolbar(elsewhere.name, 5, true);
        m_host->command(104);

        const QString bar = QStringLiteral("toolBarCommands");
        const QString menu = QStringLiteral("menuTools");
        QVERIFY(showsAction(bar, placed.name));
        QVERIFY(showsAction(menu, placed.name));
        QVERIFY(!showsAction(bar, elsewhere.name));
        m_host->setActiveView(ContactHost::View::ContactList);
        QVERIFY(!showsAction(bar, placed.name));
        QVERIFY(!showsAction(menu, placed.name));
        m_host->setActiveView(ContactHost::View::Contact);
        QVERIFY(showsAction(bar, placed.name));

        store().setAuxCommandInToolsMenu(placed.name, 1, false);
        m_host->command(104);
        QVERIFY(!showsAction(menu, placed.name));
        QVERIFY(showsAction(bar, placed.name));
    }

    void auxCommandStartsItsProgramInItsFolder()
    {
        const QString folder = m_home.path();
        const QString program = m_home.write(QStringLiteral("bin/where.sh"), "#!/bin/sh\npwd > where.txt\n");
        QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        store().addAuxCommand(auxCommand(QStringLiteral("Where"), program));
        store().setAuxCommandInToolsMenu(QStringLiteral("Where"), 1, true);
        m_host->command(104);

        child<QAction>(QStringLiteral("toolsCommand:Where"))->trigger();
        QFile record(QDir(folder).filePath(QStringLiteral("where.txt")));
        QTRY_VERIFY_WITH_TIMEOUT(record.size() > 0, 10000);
        QVERIFY(record.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromLocal8Bit(record.readAll()).trimmed(), QFileInfo(folder).canonicalFilePath());
    }

    void databaseFiles_data()
    {
        QTest::addColumn<bool>("create");        // New Database rather than Open Database
        QTest::addColumn<QByteArray>("content"); // of the file before; "sample" writes the sample database
        QTest::addColumn<bool>("opens");
        QTest::newRow("open garbage") << false << QByteArray("this is not a contact database\n") << false;
        QTest::newRow("open a missing file") << false << QByteArray() << false;
        QTest::newRow("open another database") << false << QByteArray("sample") << true;
        QTest::newRow("new over an existing file") << true << QByteArray("someone's notes\n") << false;
        QTest::newRow("new database") << true << QByteArray() << true;
    }
    void databaseFiles()
    {
        QFETCH(bool, create);
        QFETCH(QByteArray, content);
        QFETCH(bool, opens);
        const QString path = m_home.file(QStringLiteral("other%1.cvdb").arg(++m_databases));
        if (content == "sample")
            writeSampleDatabase(path);
        else if (!content.isEmpty())
            m_home.write(QFileInfo(path).fileName(), content);
        const QString title = m_window->windowTitle();
        const int rows = table()->model()->rowCount();

        const bool done = create ? m_window->newDatabaseFile(path) : m_window->openDatabaseFile(path);

        QCOMPARE(done, opens);
        if (opens) {
            QCOMPARE(m_window->windowTitle(), QStringLiteral("Corvalent Contacts - ") + QFileInfo(path).fileName());
            QCOMPARE(table()->model()->rowCount(), int(m_host->lookupIds().size()));
            QCOMPARE(editor(26)->text(), store().fieldText(m_host->currentId(), 26));
            QVERIFY(m_prompter->prompts().isEmpty());
        } else {
            QCOMPARE(m_host->store().path(), m_path);
            QCOMPARE(m_window->windowTitle(), title);
            QCOMPARE(table()->model()->rowCount(), rows);
            QCOMPARE(m_prompter->prompts().size(), 1);
            QVERIFY(m_prompter->texts().first().contains(QFileInfo(path).fileName()));
            if (!content.isEmpty())
                QCOMPARE(test::TestHome::read(path), content);
        }
    }

    void closingTellsAutomationOnce_data()
    {
        QTest::addColumn<bool>("byCommand");
        QTest::newRow("the user closes the window") << false;
        QTest::newRow("Command 150") << true;
    }
    void closingTellsAutomationOnce()
    {
        QFETCH(bool, byCommand);
        QSignalSpy wantsToClose(m_host.get(), &ContactHost::OnActUserWantsToClose);
        if (byCommand)
            m_host->command(150);
        else
            m_window->close();
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->isVisible(), 5000);
        QCOMPARE(wantsToClose.size(), 1);
    }
};

QTEST_MAIN(TestContactsWindow)
#include "tst_contactswindow.moc"
