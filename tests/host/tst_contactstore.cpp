#include "common/Error.h"
#include "store/ContactStore.h"
#include "store/SqliteConnection.h"
#include "support/Raised.h"
#include "support/TestHome.h"

#include <QDate>
#include <QFile>
#include <QMap>
#include <QTest>

using namespace corvalent;
using namespace corvalent::host;
using namespace Qt::StringLiterals;

namespace {

// Runs SQL on a database file behind the store's back (to build foreign files or age a record).
void rawSql(const QString& path, const QStringList& statements)
{
    SqliteConnection connection;
    connection.open(path, false);
    for (const QString& sql : statements)
        connection.exec(sql);
}

} // namespace

class TestContactStore : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    int m_files = 0;
    ContactStore m_store; // a fresh database for each test
    qint64 m_id = -1;     // a contact of it besides My Record
    ContactStore m_lookupStore;
    QVector<qint64> m_lookupIds;

    QString newPath() { return m_home.file(u"db%1.cvdb"_s.arg(++m_files)); }

private slots:
    void initTestCase()
    {
        m_lookupStore.create(newPath());
        for (const QMap<int, QString>& fields : {QMap<int, QString>{{26, u"Hélène Tremblay"_s}, {30, u"Montréal"_s},
                                                                    {27, u"1500 rue Peel"_s}},
                                                 {{26, u"John Smith"_s}, {25, u"ACME"_s}, {40, u"john@example.com"_s}},
                                                 {{26, u"Zoë"_s}, {30, u"montréal"_s}, {40, u"zoe@example.org"_s}}}) {
            m_lookupIds << m_lookupStore.addContact();
            for (auto it = fields.begin(); it != fields.end(); ++it)
                m_lookupStore.setFieldText(m_lookupIds.last(), it.key(), it.value());
        }
    }
    void init()
    {
        m_store.create(newPath());
        m_id = m_store.addContact();
    }

    void refusesWhatIsNotAContactDatabase_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("error");
        QTest::newRow("missing file") << "missing" << 53;
        QTest::newRow("empty file") << "empty" << 440;
        QTest::newRow("another SQLite file") << "foreign" << 440;
        QTest::newRow("written by a newer version") << "newer" << 440;
    }
    void refusesWhatIsNotAContactDatabase()
    {
        QFETCH(QString, kind);
        QFETCH(int, error);
        const QString path = newPath();
        if (kind == "empty")
            m_home.write(QFileInfo(path).fileName(), {});
        else if (kind == "foreign")
            rawSql(path, {u"CREATE TABLE notes (text TEXT)"_s, u"INSERT INTO notes VALUES ('mine')"_s});
        else if (kind == "newer") {
            ContactStore().create(path);
            rawSql(path, {u"UPDATE meta SET value = '99' WHERE key = 'version'"_s});
        }
        const QByteArray before = test::TestHome::read(path);
        const QString good = m_store.path();
        QCOMPARE(test::raised([&] { m_store.open(path); }).number(), error);
        // The database open before stays open, and the refused file is left exactly as it was.
        QVERIFY(m_store.isOpen());
        QCOMPARE(m_store.path(), good);
        QCOMPARE(test::TestHome::read(path), before);
        QCOMPARE(QFileInfo::exists(path), kind != "missing");
    }

    void createsOpensAndKeepsItsContacts()
    {
        const QString path = m_store.path(), today = QDate::currentDate().toString(Qt::ISODate);
        const qint64 myRecord = m_store.myRecordId();
        QCOMPARE(m_store.fieldText(m_id, 78), today);
        m_store.setFieldText(m_id, 26, u"Hélène Côté"_s);
        m_store.close();
        QCOMPARE(test::raised([&] { m_store.contactCount(); }).number(), 440);
        rawSql(path, {u"UPDATE contacts SET f79 = '2001-01-01'"_s});
        m_store.open(path);
        QCOMPARE(m_store.allContactIds(), (QVector<qint64>{myRecord, m_id}));
        QCOMPARE(m_store.myRecordId(), myRecord);
        QCOMPARE(m_store.fieldText(m_id, 26), u"Hélène Côté"_s);
        QCOMPARE(m_store.fieldText(m_id, 79), u"2001-01-01"_s);
        m_store.setFieldText(m_id, 30, u"Québec"_s);
        QCOMPARE(m_store.fieldText(m_id, 79), today); // the edit date follows edits
        QCOMPARE(test::raised([&] { m_store.fieldText(m_id + 100, 26); }).number(), 440);
        QCOMPARE(test::raised([&] { m_store.setFieldText(m_id + 100, 26, u"nobody"_s); }).number(), 440);
        QCOMPARE(test::raised([&] { m_store.setPhone(m_id, 35, u"1x"_s, u"555"_s); }).number(), 5);
        QCOMPARE(test::raised([&] { ContactStore().create(path); }).number(), 58);
    }

    void fieldWrites_data()
    {
        QTest::addColumn<QString>("userPhone"); // My Record's phone, "" for none
        QTest::addColumn<QString>("before");    // written to the field first, "" for nothing
        QTest::addColumn<int>("field");
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("data"); // ignored when the write is refused: the field keeps what it had
        QTest::addColumn<int>("error");
        QTest::newRow("plain field") << "" << "" << 30 << u"Montréal"_s << u"Montréal"_s << 0;
        QTest::newRow("phone with its code") << "" << "+33 01 23 45" << 35 << "+49 030 1234567" << "+49 030 1234567"
                                             << 0;
        QTest::newRow("phone keeps its code") << "" << "+33 01 23 45" << 35 << "01 98 76 54" << "+33 01 98 76 54" << 0;
        QTest::newRow("takes the user's code") << "+44 020 7946" << "" << 38 << "07700 900123" << "+44 07700 900123"
                                               << 0;
        QTest::newRow("no code anywhere") << "" << "" << 37 << "(450) 555-0111" << "+1 (450) 555-0111" << 0;
        QTest::newRow("emptied phone") << "" << "+1 (514) 555-0199" << 35 << "" << "" << 0;
        QTest::newRow("a lone plus sign is part of the number") << "" << "" << 36 << "+ 555" << "+1 + 555" << 0;
        QTest::newRow("create date") << "" << "" << 78 << "2001-01-01" << "" << 440;
        QTest::newRow("unknown field") << "" << "" << 999 << "2001-01-01" << "" << 5;
    }
    void fieldWrites()
    {
        QFETCH(QString, userPhone);
        QFETCH(QString, before);
        QFETCH(int, field);
        QFETCH(QString, written);
        QFETCH(QString, data);
        QFETCH(int, error);
        if (!userPhone.isEmpty())
            m_store.setFieldText(m_store.myRecordId(), 35, userPhone);
        if (!before.isEmpty())
            m_store.setFieldText(m_id, field, before);
        if (error)
            data = m_store.fieldData(m_id, field);
        QCOMPARE(test::raised([&] { m_store.setFieldText(m_id, field, written); }).number(), error);
        QCOMPARE(m_store.fieldData(m_id, field), data);
        // The text is the data without its "+code " prefix.
        QCOMPARE(m_store.fieldText(m_id, field), data.startsWith(u'+') ? data.section(u' ', 1) : data);
    }

    void lookupIgnoresCase_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QVector<int>>("found"); // indexes into the contacts made in initTestCase
        QTest::newRow("accented city, other case") << u"MONTRÉAL"_s << QVector<int>{0, 2};
        QTest::newRow("company") << "acMe" << QVector<int>{1};
        QTest::newRow("e-mail") << "@example" << QVector<int>{1, 2};
        QTest::newRow("wildcards are letters") << "%" << QVector<int>{};
        QTest::newRow("underscore is a letter") << "J_hn" << QVector<int>{};
        QTest::newRow("address is not searched") << "Peel" << QVector<int>{};
        // From three characters on, a lookup reads the index; shorter texts are compared contact by contact.
        QTest::newRow("accented, three letters") << u"ÉAL"_s << QVector<int>{0, 2};
        QTest::newRow("across a space") << "hn S" << QVector<int>{1};
        QTest::newRow("quotes are letters") << "\"Zoë\"" << QVector<int>{};
        QTest::newRow("two letters") << "zO" << QVector<int>{2};
        QTest::newRow("one accented letter") << u"Ë"_s << QVector<int>{2};
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

    // A database written before lookups had an index gets one when it is opened, and keeps it in step.
    void olderDatabaseGetsTheIndex()
    {
        const QString path = m_store.path();
        m_store.setFieldText(m_id, 30, u"Montréal"_s);
        m_store.close();
        rawSql(path, {u"DROP TRIGGER lookup_index_add"_s, u"DROP TRIGGER lookup_index_remove"_s,
                      u"DROP TRIGGER lookup_index_change"_s, u"DROP TABLE lookup_index"_s});
        m_store.open(path);
        QCOMPARE(m_store.lookup(u"MONTRÉAL"_s), QVector<qint64>{m_id});
        m_store.setFieldText(m_id, 30, u"Laval"_s);
        QCOMPARE(m_store.lookup(u"MONTRÉAL"_s), QVector<qint64>{});
        QCOMPARE(m_store.lookup(u"laval"_s), QVector<qint64>{m_id});
        // An index that another program takes away while the database is open fails the lookup, which never
        // passes for "nothing found".
        rawSql(path, {u"DROP TABLE lookup_index"_s});
        const Error refused = test::raised([&] { m_store.lookup(u"laval"_s); });
        QCOMPARE(refused.number(), 440);
        QVERIFY2(refused.description().contains(u"no such table: lookup_index"_s), qPrintable(refused.description()));
    }
    void auxCommandsAndPlacements()
    {
        m_store.addAuxCommand({u"Corvalent"_s, u"/opt/c/corvalent"_s, u"/opt/c"_s, u"Corvalent"_s, {}, {}, {}, 1});
        m_store.addAuxCommand({u"Other"_s, u"/bin/other"_s, u"/bin"_s, u"Other"_s, {}, {}, {}, 0});
        m_store.setAuxCommandInToolbar(u"Other"_s, 1, true);
        m_store.setAuxCommandInToolbar(u"corvalent"_s, 1, true); // names ignore case
        m_store.setAuxCommandInToolbar(u"Corvalent"_s, 1, true); // twice is once
        // Adding again updates the command and keeps where it is placed.
        m_store.addAuxCommand({u"CORVALENT"_s, u"/usr/bin/corvalent"_s, u"/usr/bin"_s, u"Corvalent"_s, {}, {}, {}, 1});
        for (int view : {0, 7})
            QCOMPARE(test::raised([&] { m_store.auxCommandInToolbar(u"Corvalent"_s, view); }).number(), 5);
        QCOMPARE(test::raised([&] { m_store.addAuxCommand({u" "_s, {}, {}, {}, {}, {}, {}, 0}); }).number(), 5);
        QCOMPARE(m_store.toolbarCommands(1), (QStringList{u"Other"_s, u"Corvalent"_s}));
        QCOMPARE(m_store.auxCommand(u"corvalent"_s)->program, u"/usr/bin/corvalent"_s);
    }

    void writtenDatabases()
    {
        const QString path = m_home.write(u"generated.cvdb"_s, "replaced");
        QCOMPARE(test::raised([&] { writeGeneratedDatabase(path, 0); }).number(), 5);
        QCOMPARE(test::TestHome::read(path), QByteArray("replaced"));
        writeGeneratedDatabase(path, 50); // the program test counts what it generates
        QVERIFY(!QFile::exists(path + u".part"_s));
        m_store.open(path);
        QCOMPARE(m_store.myRecordId(), m_store.allContactIds().first());
        const QString sample = newPath();
        writeSampleDatabase(sample);
        m_store.open(sample);
        // A contact with nothing but a name, written after fuller ones, has every other field empty.
        const QVector<qint64> kevin = m_store.lookup(u"Kevin"_s);
        QCOMPARE(kevin.size(), 1);
        for (int field : {25, 27, 30, 33, 35, 38, 40, 65, 83})
            QCOMPARE(m_store.fieldText(kevin.first(), field), QString());
    }
};

QTEST_GUILESS_MAIN(TestContactStore)
#include "tst_contactstore.moc"