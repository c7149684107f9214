#include "common/Error.h"
#include "model/ContactHost.h"
#include "store/ContactStore.h"
#include "support/TestHome.h"

#include <QSignalSpy>
#include <QTest>
#include <functional>
#include <memory>

using namespace corvalent;
using namespace corvalent::host;
using namespace Qt::StringLiterals;

namespace {

int errorOf(const std::function<void()>& body)
{
    try {
        body();
    } catch (const Error& e) {
        return e.number();
    }
    return 0;
}

} // namespace

// Every change of the contact manager fires its event exactly once, with the contact it concerns.
class TestContactHost : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    QString m_path, m_otherPath;
    std::unique_ptr<ContactHost> m_host;
    QVector<qint64> m_ids; // My Record, then Anne (Montréal), Bob (Toronto), Chloé (Montréal)

    // The five events, each as "Name" or "Name(argument)", in a stable order for comparing.
    struct Spies {
        explicit Spies(ContactHost* host)
            : close(host, &ContactHost::OnActUserWantsToClose), dbClose(host, &ContactHost::OnDatabaseClose),
              change(host, &ContactHost::OnContactChange), lookup(host, &ContactHost::OnContactLookupChange),
              pos(host, &ContactHost::OnContactPosChange)
        {
        }
        QStringList fired() const
        {
            QStringList events;
            for (int i = 0; i < close.count(); ++i)
                events << u"OnActUserWantsToClose"_s;
            for (int i = 0; i < dbClose.count(); ++i)
                events << u"OnDatabaseClose"_s;
            for (const QList<QVariant>& args : change)
                events << u"OnContactChange(%1)"_s.arg(args.at(0).toString());
            for (int i = 0; i < lookup.count(); ++i)
                events << u"OnContactLookupChange"_s;
            for (const QList<QVariant>& args : pos)
                events << u"OnContactPosChange(%1)"_s.arg(args.at(0).toString());
            return events;
        }
        QSignalSpy close, dbClose, change, lookup, pos;
    };

private slots:
    void initTestCase()
    {
        m_path = m_home.file(u"contacts.cvdb"_s);
        m_otherPath = m_home.file(u"other.cvdb"_s);
        ContactStore store;
        store.create(m_path);
        m_ids << store.myRecordId();
        for (const auto& [name, city] : {std::pair{u"Anne"_s, u"Montréal"_s}, {u"Bob"_s, u"Toronto"_s},
                                         {u"Chloé"_s, u"Montréal"_s}}) {
            m_ids << store.addContact();
            store.setFieldText(m_ids.last(), 26, name);
            store.setFieldText(m_ids.last(), 30, city);
        }
        store.close();
        ContactStore().create(m_otherPath);
    }
    void init()
    {
        QFile::remove(m_home.file(u"copy.cvdb"_s));
        QVERIFY(QFile::copy(m_path, m_home.file(u"copy.cvdb"_s)));
        m_host = std::make_unique<ContactHost>();
        m_host->openDatabase(m_home.file(u"copy.cvdb"_s));
    }

    void eventsOfEachChange_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QStringList>("events"); // "%1".."%4": the IDs of the four contacts, "%5": a new one
        QTest::addColumn<int>("row");            // current row afterwards
        QTest::newRow("move to another row") << "moveToRow 2" << QStringList{"OnContactPosChange(%3)"} << 2;
        QTest::newRow("move to the current row") << "moveToRow 0" << QStringList{} << 0;
        QTest::newRow("move by ID") << "moveTo 4" << QStringList{"OnContactPosChange(%4)"} << 3;
        QTest::newRow("move by ID to the current") << "moveTo 1" << QStringList{} << 0;
        QTest::newRow("next") << "next" << QStringList{"OnContactPosChange(%2)"} << 1;
        QTest::newRow("previous at the first") << "previous" << QStringList{} << 0;
        QTest::newRow("last") << "last" << QStringList{"OnContactPosChange(%4)"} << 3;
        QTest::newRow("first at the first") << "first" << QStringList{} << 0;
        QTest::newRow("set a field") << "setField" << QStringList{"OnContactChange(%1)"} << 0;
        QTest::newRow("add a contact") << "addNewContact" << QStringList{"OnContactLookupChange"} << 4;
        QTest::newRow("lookup") << "lookupText montréal" << QStringList{"OnContactLookupChange"} << 0;
        QTest::newRow("lookup without a match") << "lookupText nobody" << QStringList{"OnContactLookupChange"}
                                                << -1;
        QTest::newRow("all contacts") << "lookupAll" << QStringList{"OnContactLookupChange"} << 0;
        QTest::newRow("outside the lookup joins it")
            << "lookupText toronto;moveTo 2" << QStringList{"OnContactLookupChange", "OnContactLookupChange",
                                                           "OnContactPosChange(%2)"}
            << 1;
        QTest::newRow("My Record") << "moveToRow 3;goToMyRecord"
                                   << QStringList{"OnContactPosChange(%4)", "OnContactPosChange(%1)"} << 0;
        QTest::newRow("close the database") << "closeDatabase;closeDatabase" << QStringList{"OnDatabaseClose"} << -1;
        QTest::newRow("the user closes") << "userWantsToClose"
                                         << QStringList{"OnActUserWantsToClose", "OnDatabaseClose"} << -1;
        QTest::newRow("open another database") << "openOther"
                                               << QStringList{"OnDatabaseClose", "OnContactLookupChange"} << 0;
        QTest::newRow("commands are not events") << "command 104;command 150" << QStringList{} << 0;
        QTest::newRow("views are not events") << "contactList" << QStringList{} << 0;
    }
    void eventsOfEachChange()
    {
        QFETCH(QString, operation);
        QFETCH(QStringList, events);
        QFETCH(int, row);
        Spies spies(m_host.get());
        qint64 added = -1;
        for (const QString& step : operation.split(u';')) {
            const QString name = step.section(u' ', 0, 0);
            const QString arg = step.section(u' ', 1);
            if (name == "moveToRow")
                m_host->moveToRow(arg.toInt());
            else if (name == "moveTo")
                m_host->moveTo(m_ids.at(arg.toInt() - 1));
            else if (name == "next")
                m_host->next();
            else if (name == "previous")
                m_host->previous();
            else if (name == "first")
                m_host->first();
            else if (name == "last")
                m_host->last();
            else if (name == "goToMyRecord")
                m_host->goToMyRecord();
            else if (name == "setField")
                m_host->setField(26, u"Me"_s);
            else if (name == "addNewContact")
                added = m_host->addNewContact();
            else if (name == "lookupText")
                m_host->lookupText(arg);
            else if (name == "lookupAll")
                m_host->lookupAll();
            else if (name == "closeDatabase")
                m_host->closeDatabase();
            else if (name == "userWantsToClose")
                m_host->userWantsToClose();
            else if (name == "openOther")
                m_host->openDatabase(m_otherPath);
            else if (name == "command")
                m_host->command(arg.toInt());
            else if (name == "contactList")
                m_host->setActiveView(ContactHost::View::ContactList);
            else
                QFAIL(qPrintable(u"unknown operation "_s + name));
        }
        QStringList expected;
        for (QString event : events) {
            for (int i = 0; i < m_ids.size(); ++i)
                event.replace(u"%%1"_s.arg(i + 1), QString::number(m_ids.at(i)));
            expected << event.replace(u"%5"_s, QString::number(added));
        }
        QStringList fired = spies.fired();
        fired.sort();
        expected.sort();
        QCOMPARE(fired, expected);
        QCOMPARE(m_host->currentRow(), row);
        QCOMPARE(m_host->currentId(), row < 0 ? -1 : m_host->lookupIds().at(row));
        if (added >= 0)
            QCOMPARE(m_host->lookupIds().last(), added);
    }

    void refusedChangesFireNothing_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<int>("error");
        QTest::newRow("row before the first") << "row -1" << 440;
        QTest::newRow("row past the last") << "row 4" << 440;
        QTest::newRow("contact that does not exist") << "id 999" << 440;
        QTest::newRow("read-only field") << "field 78" << 440;
        QTest::newRow("unknown command") << "command 7" << 5;
        QTest::newRow("a file that is no database") << "open garbage" << 440;
        QTest::newRow("a missing file") << "open missing" << 53;
        QTest::newRow("a new database over a file") << "new existing" << 58;
    }
    void refusedChangesFireNothing()
    {
        QFETCH(QString, operation);
        QFETCH(int, error);
        const QString garbage = m_home.write(u"garbage.cvdb"_s, "not a database");
        Spies spies(m_host.get());
        const QString arg = operation.section(u' ', 1);
        QCOMPARE(errorOf([&] {
                     if (operation.startsWith(u"row"))
                         m_host->moveToRow(arg.toInt());
                     else if (operation.startsWith(u"id"))
                         m_host->moveTo(arg.toLongLong());
                     else if (operation.startsWith(u"field"))
                         m_host->setField(arg.toInt(), u"x"_s);
                     else if (operation.startsWith(u"command"))
                         m_host->command(arg.toInt());
                     else if (operation.startsWith(u"open"))
                         m_host->openDatabase(arg == "garbage" ? garbage : m_home.file(u"missing.cvdb"_s));
                     else
                         m_host->newDatabase(m_otherPath);
                 }),
                 error);
        QCOMPARE(spies.fired(), QStringList());
        QVERIFY(m_host->isDatabaseOpen());
        QCOMPARE(m_host->currentRow(), 0);
        QCOMPARE(m_host->lookupIds().size(), 4);
    }

    void withoutDatabase()
    {
        m_host->closeDatabase();
        Spies spies(m_host.get());
        QCOMPARE(errorOf([&] { m_host->next(); }), 440);
        QCOMPARE(errorOf([&] { m_host->lookupAll(); }), 440);
        QCOMPARE(errorOf([&] { m_host->setField(26, u"x"_s); }), 440);
        QCOMPARE(errorOf([&] { m_host->addNewContact(); }), 440);
        QCOMPARE(spies.fired(), QStringList());
        QCOMPARE(m_host->currentId(), -1);
    }

    void commandsAndViewsReachTheWindow()
    {
        QSignalSpy refresh(m_host.get(), &ContactHost::refreshRequested);
        QSignalSpy close(m_host.get(), &ContactHost::closeRequested);
        QSignalSpy views(m_host.get(), &ContactHost::activeViewChanged);
        m_host->command(104);
        QCOMPARE(refresh.count(), 1);
        QCOMPARE(close.count(), 0);
        m_host->command(150);
        QCOMPARE(close.count(), 1);
        m_host->setActiveView(ContactHost::View::ContactList);
        m_host->setActiveView(ContactHost::View::ContactList);
        QCOMPARE(views.count(), 1);
        QCOMPARE(m_host->activeView(), ContactHost::View::ContactList);
    }
};

QTEST_GUILESS_MAIN(TestContactHost)
#include "tst_contacthost.moc"
