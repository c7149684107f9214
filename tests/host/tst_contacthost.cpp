#include "common/Error.h"
#include "model/ContactHost.h"
#include "store/ContactStore.h"
#include "support/TestHome.h"

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>
#include <functional>
#include <memory>

using namespace corvalent;
using namespace corvalent::host;
using namespace Qt::StringLiterals;

// Every change of the contact manager fires its event exactly once, with the contact it concerns, and a refused
// change fires nothing and changes nothing.
class TestContactHost : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    QString m_path;
    std::unique_ptr<ContactHost> m_host;

    // Every signal of the host, each as "Name" or "OnName(contact ID)", sorted for comparing.
    struct Recorder {
        std::vector<std::unique_ptr<QSignalSpy>> spies;
        explicit Recorder(ContactHost* host)
        {
            const QMetaObject& meta = ContactHost::staticMetaObject;
            for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
                if (meta.method(i).methodType() == QMetaMethod::Signal)
                    spies.push_back(std::make_unique<QSignalSpy>(host, meta.method(i)));
            }
        }
        QStringList fired() const
        {
            QStringList events;
            for (const auto& spy : spies) {
                const QString name = QString::fromLatin1(spy->signal()).section(u'(', 0, 0);
                // Only the automation events carry the contact they concern.
                for (const QList<QVariant>& args : *spy) {
                    const bool withContact = name.startsWith(u"On") && !args.isEmpty();
                    events << (withContact ? u"%1(%2)"_s.arg(name, args.at(0).toString()) : name);
                }
            }
            events.sort();
            return events;
        }
    };

    // Runs "name argument" steps separated by ';' on the host.
    void apply(const QString& operation)
    {
        for (const QString& step : operation.split(u';')) {
            const QString name = step.section(u' ', 0, 0), arg = step.section(u' ', 1);
            const QHash<QString, std::function<void()>> steps = {
                {u"moveToRow"_s, [&] { m_host->moveToRow(arg.toInt()); }},
                {u"moveTo"_s, [&] { m_host->moveTo(arg.toLongLong()); }},
                {u"next"_s, [&] { m_host->next(); }},
                {u"previous"_s, [&] { m_host->previous(); }},
                {u"goToMyRecord"_s, [&] { m_host->goToMyRecord(); }},
                {u"setField"_s, [&] { m_host->setField(arg.toInt(), u"Me"_s); }},
                {u"addNewContact"_s, [&] { m_host->addNewContact(); }},
                {u"lookupText"_s, [&] { m_host->lookupText(arg); }},
                {u"lookupAll"_s, [&] { m_host->lookupAll(); }},
                {u"closeDatabase"_s, [&] { m_host->closeDatabase(); }},
                {u"open"_s, [&] { m_host->openDatabase(m_home.file(arg)); }},
                {u"command"_s, [&] { m_host->command(arg.toInt()); }},
            };
            QVERIFY2(steps.contains(name), qPrintable(step));
            steps.value(name)();
        }
    }

private slots:
    void initTestCase()
    {
        m_path = m_home.file(u"contacts.cvdb"_s);
        ContactStore().create(m_home.file(u"other.cvdb"_s));
        ContactStore store;
        store.create(m_path);
        // IDs are handed out in order, so the tables can name the contacts 1 (My Record) to 4.
        for (const QString& city : {u"Montréal"_s, u"Toronto"_s, u"Montréal"_s})
            store.setFieldText(store.addContact(), 30, city);
        QCOMPARE(store.allContactIds(), (QVector<qint64>{1, 2, 3, 4}));
        store.close();
    }
    void init()
    {
        const QString copy = m_home.file(u"copy.cvdb"_s);
        QFile::remove(copy);
        QVERIFY(QFile::copy(m_path, copy));
        m_host = std::make_unique<ContactHost>();
        m_host->openDatabase(copy);
    }

    // The steps before the last ';' set the scene; only the last one is recorded (and refused if `error` is set).
    void eventsOfEachChange_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<int>("row"); // current row afterwards
        QTest::addColumn<int>("error");
        const QStringList none, lookupChange{"OnContactLookupChange"};
        QTest::newRow("move to another row") << "moveToRow 2" << QStringList{"OnContactPosChange(3)"} << 2 << 0;
        QTest::newRow("move by ID to the current") << "moveTo 1" << none << 0 << 0;
        QTest::newRow("next") << "next" << QStringList{"OnContactPosChange(2)"} << 1 << 0;
        QTest::newRow("previous at the first") << "previous" << none << 0 << 0;
        QTest::newRow("lookup") << "lookupText montréal" << lookupChange << 0 << 0;
        QTest::newRow("lookup without a match") << "lookupText nobody" << lookupChange << -1 << 0;
        QTest::newRow("all contacts keep the current") << "moveToRow 2;lookupAll" << lookupChange << 2 << 0;
        QTest::newRow("outside the lookup joins it")
            << "lookupText toronto;moveTo 2" << QStringList{"OnContactLookupChange", "OnContactPosChange(2)"} << 1 << 0;
        QTest::newRow("My Record") << "moveToRow 3;goToMyRecord" << QStringList{"OnContactPosChange(1)"} << 0 << 0;
        QTest::newRow("close a closed database") << "closeDatabase;closeDatabase" << none << -1 << 0;
        QTest::newRow("open another database")
            << "open other.cvdb" << QStringList{"OnDatabaseClose", "databaseOpened", "OnContactLookupChange"} << 0 << 0;
        QTest::newRow("row before the first") << "moveToRow -1" << none << 0 << 440;
        QTest::newRow("row past the last") << "moveToRow 4" << none << 0 << 440;
        QTest::newRow("contact that does not exist") << "moveTo 999" << none << 0 << 440;
        QTest::newRow("read-only field") << "setField 78" << none << 0 << 440;
        QTest::newRow("unknown command") << "command 7" << none << 0 << 5;
        QTest::newRow("next without a database") << "closeDatabase;next" << none << -1 << 440;
        QTest::newRow("add without a database") << "closeDatabase;addNewContact" << none << -1 << 440;
        QTest::newRow("edit without a contact") << "lookupText nobody;setField 26" << none << -1 << 440;
    }
    void eventsOfEachChange()
    {
        QFETCH(QString, operation);
        QFETCH(QStringList, events);
        const qsizetype split = operation.lastIndexOf(u';');
        if (split > 0)
            apply(operation.left(split));
        const bool open = m_host->isDatabaseOpen();
        const QVector<qint64> lookup = m_host->lookupIds();
        Recorder recorder(m_host.get());
        int error = 0;
        try {
            apply(operation.mid(split + 1));
        } catch (const Error& e) {
            error = e.number();
        }
        QTEST(error, "error");
        events.sort();
        QCOMPARE(recorder.fired(), events);
        QTEST(m_host->currentRow(), "row");
        if (error) {
            QCOMPARE(m_host->isDatabaseOpen(), open);
            QCOMPARE(m_host->lookupIds(), lookup);
        }
    }
};

QTEST_GUILESS_MAIN(TestContactHost)
#include "tst_contacthost.moc"