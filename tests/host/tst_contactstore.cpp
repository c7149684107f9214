#include "common/Error.h"
#include "store/ContactStore.h"
#include "support/TestHome.h"

#include <QDate>
#include <QFile>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>
#include <functional>

using namespace corvalent;
using namespace corvalent::host;
using namespace Qt::StringLiterals;

namespace {

// The number of the Error that `body` throws, 0 when it throws none.
int errorOf(const std::function<void()>& body)
{
    try {
        body();
    } catch (const Error& e) {
        return e.number();
    }
    return 0;
}

// Runs SQL on a database file behind the store's back (to build foreign files or age a record).
void rawSql(const QString& path, const QStringList& statements)
{
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"raw"_s);
        db.setDatabaseName(path);
        QVERIFY(db.open());
        for (const QString& sql : statements) {
            QSqlQuery query(db);
            QVERIFY2(query.exec(sql), qPrintable(sql));
        }
    }
    QSqlDatabase::removeDatabase(u"raw"_s);
}

} // namespace

class TestContactStore : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    int m_files = 0;

    QString newPath() { return m_home.file(u"db%1.cvdb"_s.arg(++m_files)); }
    QString newFile(const QByteArray& bytes) { return m_home.write(u"file%1.cvdb"_s.arg(++m_files), bytes); }

    ContactStore m_lookupStore;
    QVector<qint64> m_lookupIds;

private slots:
    void initTestCase()
    {
        m_lookupStore.create(newPath());
        const QList<QList<std::pair<int, QString>>> contacts = {
            {{26, u"Hélène Tremblay"_s}, {30, u"Montréal"_s}, {27, u"1500 rue Peel"_s}},
            {{26, u"John Smith"_s}, {25, u"ACME Hardware"_s}, {40, u"john@example.com"_s}},
            {{26, u"Zoë"_s}, {30, u"montréal"_s}, {40, u"zoe@example.org"_s}},
        };
        for (const auto& fields : contacts) {
            m_lookupIds << m_lookupStore.addContact();
            for (const auto& [field, value] : fields)
                m_lookupStore.setFieldText(m_lookupIds.last(), field, value);
        }
    }

    void refusesWhatIsNotAContactDatabase_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("error");
        QTest::newRow("missing file") << "missing" << 53;
        QTest::newRow("garbage bytes") << "garbage" << 440;
        QTest::newRow("empty file") << "empty" << 440;
        QTest::newRow("another SQLite file") << "foreign" << 440;
        QTest::newRow("written by a newer version") << "newer" << 440;
        QTest::newRow("a folder") << "folder" << 440;
    }
    void refusesWhatIsNotAContactDatabase()
    {
        QFETCH(QString, kind);
        QFETCH(int, error);
        QString path = newPath();
        if (kind == "garbage")
            path = newFile(QByteArray("\x01\x02garbage\xff").repeated(300));
        else if (kind == "empty")
            path = newFile({});
        else if (kind == "foreign")
            rawSql(path, {u"CREATE TABLE notes (text TEXT)"_s, u"INSERT INTO notes VALUES ('mine')"_s});
        else if (kind == "newer") {
            ContactStore().create(path);
            rawSql(path, {u"UPDATE meta SET value = '99' WHERE key = 'version'"_s});
        } else if (kind == "folder")
            QVERIFY(QDir().mkpath(path));
        const QByteArray before = test::TestHome::read(path);

        // The database open before stays open when another is refused.
        const QString good = newPath();
        ContactStore store;
        store.create(good);
        QCOMPARE(errorOf([&] { store.open(path); }), error);
        QVERIFY(store.isOpen());
        QCOMPARE(store.path(), QFileInfo(good).absoluteFilePath());
        QCOMPARE(test::TestHome::read(path), before);
        QCOMPARE(QFileInfo::exists(path), kind != "missing");
    }

    void createsOpensAndKeepsItsContacts()
    {
        const QString path = newPath();
        qint64 myRecord = -1, added = -1;
        {
            ContactStore store;
            store.create(path);
            myRecord = store.myRecordId();
            QCOMPARE(store.allContactIds(), QVector<qint64>{myRecord});
            added = store.addContact();
            QCOMPARE(store.fieldText(added, 78), QDate::currentDate().toString(Qt::ISODate));
            QCOMPARE(store.fieldText(added, 79), QDate::currentDate().toString(Qt::ISODate));
            store.setFieldText(added, 26, u"Hélène Côté"_s);
        }
        ContactStore store;
        store.open(path);
        QCOMPARE(store.myRecordId(), myRecord);
        QCOMPARE(store.contactCount(), 2);
        QCOMPARE(store.fieldText(added, 26), u"Hélène Côté"_s);
        QCOMPARE(errorOf([&] { store.fieldText(added + 100, 26); }), 440);

        // create() never replaces a file.
        const QByteArray before = test::TestHome::read(path);
        QCOMPARE(errorOf([&] { ContactStore().create(path); }), 58);
        QCOMPARE(test::TestHome::read(path), before);
        store.close();
        QCOMPARE(errorOf([&] { store.contactCount(); }), 440);
    }

    void fieldTextAndData_data()
    {
        QTest::addColumn<QString>("userPhone"); // My Record's phone, "" for none
        QTest::addColumn<QString>("before");    // written to the field first, "" for nothing
        QTest::addColumn<int>("field");
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("data");
        QTest::newRow("plain field") << "" << "" << 30 << u"Montréal"_s << u"Montréal"_s << u"Montréal"_s;
        QTest::newRow("phone with its code") << "" << "" << 35 << "+1 (514) 555-0199" << "(514) 555-0199"
                                             << "+1 (514) 555-0199";
        QTest::newRow("phone keeps its code") << "" << "+33 01 23 45 67 89" << 35 << "01 98 76 54 32"
                                              << "01 98 76 54 32" << "+33 01 98 76 54 32";
        QTest::newRow("a new code replaces the old") << "" << "+33 01 23 45 67 89" << 35 << "+49 030 1234567"
                                                     << "030 1234567" << "+49 030 1234567";
        QTest::newRow("first phone takes the user's code") << "+44 020 7946 0012" << "" << 38 << "07700 900123"
                                                           << "07700 900123" << "+44 07700 900123";
        QTest::newRow("no code anywhere") << "" << "" << 37 << "(450) 555-0111" << "(450) 555-0111"
                                          << "+1 (450) 555-0111";
        QTest::newRow("emptied phone") << "" << "+1 (514) 555-0199" << 35 << "" << "" << "";
        QTest::newRow("a plus sign alone is part of the number") << "" << "" << 36 << "+ 555" << "+ 555"
                                                                 << "+1 + 555";
    }
    void fieldTextAndData()
    {
        QFETCH(QString, userPhone);
        QFETCH(QString, before);
        QFETCH(int, field);
        QFETCH(QString, written);
        QFETCH(QString, text);
        QFETCH(QString, data);
        ContactStore store;
        store.create(newPath());
        if (!userPhone.isEmpty())
            store.setFieldText(store.myRecordId(), 35, userPhone);
        const qint64 id = store.addContact();
        if (!before.isEmpty())
            store.setFieldText(id, field, before);
        store.setFieldText(id, field, written);
        QCOMPARE(store.fieldText(id, field), text);
        QCOMPARE(store.fieldData(id, field), data);
    }

    void writesThatAreRefused_data()
    {
        QTest::addColumn<int>("field");
        QTest::addColumn<int>("error");
        QTest::newRow("create date") << 78 << 440;
        QTest::newRow("edit date") << 79 << 440;
        QTest::newRow("deleted position's ID") << -1 << 5;
        QTest::newRow("unknown field") << 999 << 5;
    }
    void writesThatAreRefused()
    {
        QFETCH(int, field);
        QFETCH(int, error);
        ContactStore store;
        store.create(newPath());
        const qint64 id = store.addContact();
        const QString before = store.fieldText(id, field);
        QCOMPARE(errorOf([&] { store.setFieldText(id, field, u"2001-01-01"_s); }), error);
        QCOMPARE(store.fieldText(id, field), before);
        QCOMPARE(errorOf([&] { store.setPhone(id, 35, u"1x"_s, u"555"_s); }), 5);
        QCOMPARE(errorOf([&] { store.setFieldText(id + 1, 26, u"nobody"_s); }), 440);
    }

    void editDateFollowsEdits()
    {
        const QString path = newPath();
        ContactStore().create(path);
        rawSql(path, {u"UPDATE contacts SET f79 = '2001-01-01'"_s});
        ContactStore store;
        store.open(path);
        const qint64 id = store.myRecordId();
        QCOMPARE(store.fieldText(id, 79), u"2001-01-01"_s);
        store.setFieldText(id, 26, u"Me"_s);
        QCOMPARE(store.fieldText(id, 79), QDate::currentDate().toString(Qt::ISODate));
    }

    void readOnlyFileIsReadButNotWritten()
    {
        const QString path = newPath();
        ContactStore().create(path);
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
        if (QFileInfo(path).isWritable())
            QSKIP("running as a user who may write any file");
        const QByteArray before = test::TestHome::read(path);
        ContactStore store;
        store.open(path);
        QCOMPARE(store.contactCount(), 1);
        QCOMPARE(errorOf([&] { store.setFieldText(store.myRecordId(), 26, u"x"_s); }), 70);
        QCOMPARE(test::TestHome::read(path), before);
    }

    void lookupIgnoresCase_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QVector<int>>("found"); // indexes into the contacts made in initTestCase
        QTest::newRow("contact, other case") << "TREMBLAY" << QVector<int>{0};
        QTest::newRow("accented, other case") << u"MONTRÉAL"_s << QVector<int>{0, 2};
        QTest::newRow("company") << "acme" << QVector<int>{1};
        QTest::newRow("e-mail") << "@example" << QVector<int>{1, 2};
        QTest::newRow("wildcards are letters") << "%" << QVector<int>{};
        QTest::newRow("underscore is a letter") << "J_hn" << QVector<int>{};
        QTest::newRow("address is not searched") << "Peel" << QVector<int>{};
        QTest::newRow("no match") << "zzz" << QVector<int>{};
    }
    void lookupIgnoresCase()
    {
        QFETCH(QString, text);
        QFETCH(QVector<int>, found);
        QVector<qint64> expected;
        for (int index : found)
            expected << m_lookupIds.at(index);
        QCOMPARE(m_lookupStore.lookup(text), expected);
    }

    void auxCommandsAndPlacements()
    {
        const QString path = newPath();
        {
            ContactStore store;
            store.create(path);
            QVERIFY(!store.auxCommandExists(u"Corvalent"_s));
            QCOMPARE(errorOf([&] { store.setAuxCommandInToolbar(u"Corvalent"_s, 1, true); }), 440);
            store.addAuxCommand({u"Corvalent"_s, u"/opt/c/corvalent"_s, u"/opt/c"_s, u"Corvalent"_s, u"hint"_s,
                                 u"s.ico"_s, u"l.ico"_s, 1});
            store.addAuxCommand({u"Other"_s, u"/bin/other"_s, u"/bin"_s, u"Other"_s, {}, {}, {}, 0});
            store.setAuxCommandInToolbar(u"Other"_s, 1, true);
            store.setAuxCommandInToolbar(u"corvalent"_s, 1, true); // names ignore case
            store.setAuxCommandInToolbar(u"Corvalent"_s, 1, true); // twice is once
            store.setAuxCommandInToolsMenu(u"Corvalent"_s, 6, true);
            store.setAuxCommandInToolbar(u"Other"_s, 2, true);
            store.setAuxCommandInToolbar(u"Other"_s, 2, false);
            // Adding again updates the command and keeps where it is placed.
            store.addAuxCommand({u"CORVALENT"_s, u"/usr/bin/corvalent"_s, u"/usr/bin"_s, u"Corvalent"_s, {}, {}, {}, 1});
            for (int view : {0, 7})
                QCOMPARE(errorOf([&] { store.auxCommandInToolbar(u"Corvalent"_s, view); }), 5);
        }
        ContactStore store;
        store.open(path);
        QCOMPARE(store.toolbarCommands(1), (QStringList{u"Other"_s, u"Corvalent"_s}));
        QCOMPARE(store.toolbarCommands(2), QStringList());
        QCOMPARE(store.toolsMenuCommands(6), QStringList{u"Corvalent"_s});
        QVERIFY(store.auxCommandInToolsMenu(u"corvalent"_s, 6));
        QVERIFY(!store.auxCommandInToolsMenu(u"Corvalent"_s, 1));
        QCOMPARE(store.auxCommand(u"corvalent"_s)->program, u"/usr/bin/corvalent"_s);
        QCOMPARE(errorOf([&] { store.addAuxCommand({u" "_s, {}, {}, {}, {}, {}, {}, 0}); }), 5);
    }

    void generatedDatabase()
    {
        const QString path = newFile("replaced");
        QCOMPARE(errorOf([&] { writeGeneratedDatabase(path, 0); }), 5);
        QCOMPARE(test::TestHome::read(path), QByteArray("replaced"));
        writeGeneratedDatabase(path, 2000);
        QVERIFY(!QFile::exists(path + u".part"_s));
        ContactStore store;
        store.open(path);
        QCOMPARE(store.contactCount(), 2000);
        const QVector<qint64> ids = store.allContactIds();
        QCOMPARE(ids.size(), 2000);
        QVERIFY(std::is_sorted(ids.begin(), ids.end()));
        QCOMPARE(store.myRecordId(), ids.first());
        QSet<QString> names, countries;
        for (qint64 id : ids.mid(0, 200)) {
            names << store.fieldText(id, 26);
            countries << store.fieldText(id, 33);
            QVERIFY(store.fieldData(id, 35).startsWith(u'+'));
        }
        QVERIFY2(names.size() > 100 && countries.size() > 4, "generated contacts should vary");
    }

    void sampleDatabase()
    {
        const QString path = newPath();
        writeSampleDatabase(path);
        ContactStore store;
        store.open(path);
        QVERIFY(store.contactCount() >= 45 && store.contactCount() <= 60);
        QVERIFY(!store.fieldText(store.myRecordId(), 26).isEmpty());
        QSet<QString> countries;
        int withHome = 0;
        for (qint64 id : store.allContactIds()) {
            countries << store.fieldText(id, 33);
            withHome += store.fieldText(id, 65).isEmpty() ? 0 : 1;
        }
        QVERIFY(countries.size() >= 8);
        QVERIFY(withHome >= 3);
        QVERIFY(!store.lookup(u"CÔTE-DES-NEIGES"_s).isEmpty());
        QVERIFY(store.lookup(u"montréal"_s).size() >= 5);
        // A contact with nothing but a name, written after fuller ones, has every other field empty.
        const QVector<qint64> kevin = store.lookup(u"Kevin"_s);
        QCOMPARE(kevin.size(), 1);
        for (int field : {25, 27, 30, 33, 35, 38, 40, 65, 83})
            QCOMPARE(store.fieldText(kevin.first(), field), QString());
    }
};

QTEST_GUILESS_MAIN(TestContactStore)
#include "tst_contactstore.moc"
