#include "common/Automation.h"
#include "common/Error.h"
#include "model/ContactHost.h"
#include "model/EventControlObject.h"
#include "store/ContactStore.h"
#include "support/Raised.h"
#include "support/TestHome.h"

#include <QTest>
#include <memory>

using namespace corvalent;
using namespace corvalent::host;
using namespace Qt::StringLiterals;

namespace {

// `chain` followed by one member call {member, arguments}.
QVariantList then(const QVariantList& chain, const char* member, const QVariantList& args = {})
{
    return chain + QVariantList{QVariant(QVariantList{QString::fromLatin1(member), QVariant(args)})};
}

struct Stranger : AutomationObject {
    QVariant invoke(const QString&, const QVariantList&) override { return {}; }
};

const QString db = kProgIdDatabase, app = kProgIdApp, aux = kProgIdAuxCommands, events = kProgIdEvents;
const QVariantList fields = then(then({}, "Contact"), "Fields");
const QVariantList view = then(then({}, "Views"), "Create", {1, u"CV"_s});
const QVariantList list = then(then({}, "Views"), "Create", {2, u"CV"_s});
const QVariantList grid = then(list, "GetGrid");
const QString kMegabyte(1024 * 1024, u'x');

void answers(const char* name, const QString& progId, const QVariantList& chain, const QVariant& expected,
             const char* state = "")
{
    QTest::newRow(name) << progId << chain << expected << 0 << QString::fromLatin1(state);
}
void refuses(const char* name, const QString& progId, const QVariantList& chain, int error, const char* state = "")
{
    QTest::newRow(name) << progId << chain << QVariant() << error << QString::fromLatin1(state);
}

} // namespace

// The automation objects as a client sees them: created by ProgID, called by member name with variants.
class TestAutomationObjects : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    QString m_template;
    int m_databases = 0;
    std::unique_ptr<ContactHost> m_host;
    // The database of every test: My Record, then Anne. IDs are given in order, so the data tables can name them.
    static constexpr qint64 m_anne = 2;

    // Calls each member of `chain` on the object the previous calls gave last (starting with a new object of
    // `progId`) and answers the last result.
    QVariant run(const QString& progId, const QVariantList& chain)
    {
        AutomationPtr object = m_host->createObject(progId);
        QVariant result;
        for (const QVariant& step : chain) {
            const QVariantList parts = step.toList();
            result = object->invoke(parts.at(0).toString(), parts.at(1).toList());
            if (holdsObject(result))
                object = toObject(result);
        }
        return result;
    }

private slots:
    void initTestCase()
    {
        m_template = m_home.file(u"template.cvdb"_s);
        ContactStore store;
        store.create(m_template);
        store.setFieldText(store.myRecordId(), 26, u"Me Myself"_s);
        QCOMPARE(store.addContact(), m_anne);
        store.setFieldText(m_anne, 26, u"Anne Côté"_s);
        store.setFieldText(m_anne, 35, u"+1 (514) 555-0199"_s);
    }
    void init()
    {
        const QString path = m_home.file(u"contacts%1.cvdb"_s.arg(++m_databases));
        QVERIFY(QFile::copy(m_template, path));
        m_host = std::make_unique<ContactHost>();
        m_host->openDatabase(path);
    }

    void calls_data()
    {
        QTest::addColumn<QString>("progId");
        QTest::addColumn<QVariantList>("chain");
        QTest::addColumn<QVariant>("expected"); // compared with its type
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("state"); // "closed": no database open

        answers("Label by ID text", db, then(fields, "Label", {u"35"_s}), u"Phone"_s);
        // The editor's field lists walk the positions; a deleted one has no type.
        answers("Type of a deleted position", db, then(fields, "Type", {17}), 0);
        answers("GoTo and Data of a phone", db,
                then(then(then({}, "Contact"), "GoTo", {QString::number(m_anne)}), "Data", {35}),
                u"+1 (514) 555-0199"_s);
        answers("contact list Type", app, then(list, "Type"), 3);
        answers("GetField with a numeric text", app, then(view, "GetField", {u"26"_s}), u"Me Myself"_s);
        answers("SetField, then GetField", app, then(then(view, "SetField", {30, u"Montréal"_s}), "GetField", {30}),
                u"Montréal"_s);
        answers("AddNewContact makes it current", app, then(then(view, "AddNewContact"), "GetCurrentID"),
                QString::number(m_anne + 1));
        answers("grid SetField writes the current contact", app,
                then(then(grid, "SetField", {26, u"Anne Tremblay"_s}), "GetField", {26, 0}), u"Anne Tremblay"_s);
        // Unknown IDs read "" as GetField reads them; a phone reads as shown; the order is the one asked.
        answers("GetFields", app, then(view, "GetFields", {35, 999, u"26"_s, 26}),
                QStringList{{}, {}, u"Me Myself"_s, u"Me Myself"_s});
        answers("grid GetFields at a row", app, then(grid, "GetFields", {1, 26, 35}),
                QStringList{u"Anne Côté"_s, u"(514) 555-0199"_s});
        answers("GetFields of no real field", app, then(view, "GetFields", {0}), QStringList{QString()});
        answers("OpenFile of the open database", app, then({}, "OpenFile", {u""_s}), {});
        answers("no database name without one", app, then({}, "GetOpenDBName"), QString(), "closed");
        // Hostile calls: each an error with its number, nothing more.
        const QVariant stranger = toVariant(std::make_shared<Stranger>());
        refuses("unknown member", app, then({}, "Frobnicate"), 438);
        refuses("unknown member of a view", app, then(view, "GetGrid"), 438);
        refuses("a megabyte member name", db, then({}, qPrintable(kMegabyte)), 438);
        refuses("unknown member without a database", app, then(view, "Nope"), 438, "closed");
        refuses("too many arguments", db, then(fields, "Count", {1}), 5);
        refuses("too few arguments", app, then(grid, "GetField", {26}), 5);
        refuses("GetFields of nothing", app, then(view, "GetFields"), 5);
        refuses("GetFields of 257 fields", app, then(view, "GetFields", QVariantList(257, 26)), 5);
        refuses("GetFields of a text", app, then(view, "GetFields", {26, u"Phone"_s}), 13);
        refuses("Label(35) is a position past the end", db, then(fields, "Label", {35}), 5);
        refuses("unknown field ID", db, then(fields, "Label", {u"999"_s}), 5);
        refuses("view type 3", app, then(then({}, "Views"), "Create", {3, u"CV"_s}), 5);
        refuses("aux view 7", aux, then({}, "AuxCommandExistsInToolbar", {u"Corvalent"_s, 7}), 5);
        refuses("a megabyte of text to write", app, then(view, "SetField", {26, kMegabyte}), 5);
        refuses("row beyond 32 bits", app, then(grid, "GetField", {26, 1e12}), 5);
        refuses("field ID beyond 16 bits", db, then(then({}, "Contact"), "Data", {40000}), 5);
        refuses("not a number at all", app, then({}, "Command", {qQNaN()}), 5);
        refuses("object for a number", db, then(fields, "Label", {stranger}), 13);
        refuses("object for text", app, then({}, "OpenFile", {stranger}), 13);
        refuses("text for a number", app, then(view, "GetField", {u"Phone"_s}), 13);
        refuses("a megabyte of digits", app, then(view, "GetField", {QString(1024 * 1024, u'7')}), 13);
        refuses("negative row", app, then(grid, "GetField", {26, -1}), 440);
        refuses("row past the lookup", app, then(grid, "GetField", {26, 2147483647}), 440);
        refuses("placing an unknown command", aux, then({}, "AddAuxCommandToToolsMenu", {u"Nobody"_s, 1}), 440);
        refuses("OpenFile of a missing file", app, then({}, "OpenFile", {u"/nonexistent/x.cvdb"_s}), 53);
        refuses("field list without a database", db, then(fields, "Count"), 440, "closed");
        refuses("GetField without a database", app, then(view, "GetField", {26}), 440, "closed");
        refuses("aux commands without a database", aux, then({}, "AuxCommandExists", {u"x"_s}), 440, "closed");
        refuses("OpenFile \"\" without a database", app, then({}, "OpenFile", {u""_s}), 440, "closed");
    }
    void calls()
    {
        QFETCH(QString, progId);
        QFETCH(QVariantList, chain);
        QFETCH(QVariant, expected);
        QFETCH(int, error);
        QFETCH(QString, state);
        if (state == "closed")
            m_host->closeDatabase();
        QVariant result;
        int thrown = 0;
        try {
            result = run(progId, chain);
        } catch (const Error& e) {
            thrown = e.number();
            QVERIFY(e.description().size() < 300); // a message, never the argument that caused it
        }
        QCOMPARE(thrown, error);
        QCOMPARE(result.metaType(), expected.metaType());
        QCOMPARE(result, expected);
    }

    // A view object reads the contact that is current when it is called, not when it was made.
    void viewObjectsAreLive()
    {
        const AutomationPtr contactView = toObject(run(app, view));
        const AutomationPtr listGrid = toObject(run(app, grid));
        m_host->moveTo(m_anne);
        QCOMPARE(contactView->invoke(u"GetField"_s, {35}), QVariant(u"(514) 555-0199"_s));
        QCOMPARE(listGrid->invoke(u"GetCurrentRow"_s), QVariant(1));
    }

    void objectsAndTheirHost()
    {
        QVERIFY(m_host->createObject(u"actole.appobject"_s));
        QCOMPARE(test::raised([&] { m_host->createObject(u"ACTOLE.NOTHING"_s); }).number(), 429);
        const AutomationPtr control = m_host->createObject(events);
        auto* eventControl = dynamic_cast<EventControlObject*>(control.get());
        QVERIFY(eventControl && !eventControl->detached());
        control->invoke(u"detach"_s);
        QVERIFY(eventControl->detached());
        // Objects a client still holds answer 440 once the contact manager is gone, never touch freed memory.
        const AutomationPtr contactView = toObject(run(app, view));
        m_host.reset();
        QCOMPARE(test::raised([&] { contactView->invoke(u"GetField"_s, {26}); }).number(), 440);
        QCOMPARE(test::raised([&] { control->invoke(u"IsRunning"_s); }).number(), 440);
    }
};

QTEST_GUILESS_MAIN(TestAutomationObjects)
#include "tst_automationobjects.moc"