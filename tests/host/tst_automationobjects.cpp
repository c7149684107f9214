#include "common/Automation.h"
#include "common/Error.h"
#include "model/ContactHost.h"
#include "model/EventControlObject.h"
#include "store/ContactStore.h"
#include "support/TestHome.h"

#include <QTest>
#include <functional>
#include <memory>

using namespace corvalent;
using namespace corvalent::host;
using namespace Qt::StringLiterals;

namespace {

// One member call of a chain: {member, arguments}.
QVariant call(const char* member, const QVariantList& args = {})
{
    return QVariantList{QString::fromLatin1(member), QVariant(args)};
}

struct Stranger : AutomationObject {
    QVariant invoke(const QString&, const QVariantList&) override { return {}; }
};

const QString kMegabyte(1024 * 1024, u'x');

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

    void memberCalls_data()
    {
        QTest::addColumn<QString>("progId");
        QTest::addColumn<QVariantList>("chain");
        QTest::addColumn<QVariant>("expected"); // compared with its type
        QTest::addColumn<int>("error");

        const QString db = kProgIdDatabase, app = kProgIdApp, aux = kProgIdAuxCommands, events = kProgIdEvents;
        const QVariantList fields{call("Contact"), call("Fields")};
        auto onFields = [&](const char* member, const QVariant& arg) {
            return fields + QVariantList{call(member, {arg})};
        };
        QTest::newRow("Count: real fields only") << db << fields + QVariantList{call("Count")} << QVariant(28) << 0;
        QTest::newRow("ID by position") << db << onFields("ID", 0) << QVariant(25) << 0;
        QTest::newRow("ID of a deleted position") << db << onFields("ID", 10) << QVariant(-1) << 0;
        QTest::newRow("Label by position") << db << onFields("Label", 11) << QVariant(u"Phone"_s) << 0;
        QTest::newRow("Label by ID") << db << onFields("Label", u"35"_s) << QVariant(u"Phone"_s) << 0;
        QTest::newRow("Label(35) is a position past the end") << db << onFields("Label", 35) << QVariant() << 5;
        QTest::newRow("Type by ID") << db << onFields("Type", u"38"_s) << QVariant(14) << 0;
        QTest::newRow("Type of a deleted position") << db << onFields("Type", 17) << QVariant(0) << 0;
        QTest::newRow("HasPopupList by ID") << db << onFields("HasPopupList", u"34"_s) << QVariant(true) << 0;
        QTest::newRow("HasPopupList without one") << db << onFields("HasPopupList", u"26"_s) << QVariant(false) << 0;
        QTest::newRow("HasPopupList by position") << db << onFields("HasPopupList", 29) << QVariant(true) << 0;
        QTest::newRow("unknown field ID") << db << onFields("Label", u"999"_s) << QVariant() << 5;
        QTest::newRow("negative position") << db << onFields("ID", -1) << QVariant() << 5;
        QTest::newRow("field ID that is no number") << db << onFields("Type", u"Phone"_s) << QVariant() << 13;

        QTest::newRow("GoTo and Data of a phone")
            << db << QVariantList{call("Contact"), call("GoTo", {QString::number(m_anne)}), call("Data", {35})}
            << QVariant(u"+1 (514) 555-0199"_s) << 0;
        QTest::newRow("GoTo a contact that does not exist")
            << db << QVariantList{call("Contact"), call("GoTo", {u"999"_s})} << QVariant() << 440;
        QTest::newRow("GoTo a text that is no ID")
            << db << QVariantList{call("Contact"), call("GoTo", {u"Anne"_s})} << QVariant() << 440;

        const QVariantList view{call("Views"), call("Create", {1, u"CV"_s})};
        const QVariantList grid{call("Views"), call("Create", {2, u"CV"_s}), call("GetGrid")};
        QTest::newRow("contact view Type") << app << view + QVariantList{call("Type")} << QVariant(2) << 0;
        QTest::newRow("contact list Type")
            << app << QVariantList{call("Views"), call("Create", {2, u"CV"_s}), call("Type")} << QVariant(3) << 0;
        QTest::newRow("view type 3 cannot be made")
            << app << QVariantList{call("Views"), call("Create", {3, u"CV"_s})} << QVariant() << 5;
        QTest::newRow("GetField of the current contact")
            << app << view + QVariantList{call("GetField", {26})} << QVariant(u"Me Myself"_s) << 0;
        QTest::newRow("GetField with a numeric text") << app << view + QVariantList{call("GetField", {u"26"_s})}
                                                      << QVariant(u"Me Myself"_s) << 0;
        QTest::newRow("SetField, then GetField")
            << app << view + QVariantList{call("SetField", {30, u"Montréal"_s}), call("GetField", {30})}
            << QVariant(u"Montréal"_s) << 0;
        QTest::newRow("SetField of a read-only field")
            << app << view + QVariantList{call("SetField", {78, u"x"_s})} << QVariant() << 440;
        QTest::newRow("AddNewContact makes it current")
            << app << view + QVariantList{call("AddNewContact"), call("GetCurrentID")}
            << QVariant(QString::number(m_anne + 1)) << 0;
        QTest::newRow("grid row of the current contact")
            << app << grid + QVariantList{call("GetCurrentRow")} << QVariant(0) << 0;
        QTest::newRow("grid GetField by row")
            << app << grid + QVariantList{call("GetField", {26, 1})} << QVariant(u"Anne Côté"_s) << 0;
        QTest::newRow("grid GetField shows the number")
            << app << grid + QVariantList{call("GetField", {35, 1})} << QVariant(u"(514) 555-0199"_s) << 0;
        QTest::newRow("GetUserID") << app << QVariantList{call("GetUserID")} << QVariant(u"1"_s) << 0;
        QTest::newRow("Command 104") << app << QVariantList{call("Command", {104})} << QVariant() << 0;
        QTest::newRow("Command unknown") << app << QVariantList{call("Command", {7})} << QVariant() << 5;
        QTest::newRow("OpenFile of the open database") << app << QVariantList{call("OpenFile", {u""_s})}
                                                       << QVariant() << 0;
        QTest::newRow("OpenFile of a missing file")
            << app << QVariantList{call("OpenFile", {u"/nonexistent/x.cvdb"_s})} << QVariant() << 53;

        const QVariantList addCommand{call("AddAuxCommand", {u"Corvalent"_s, u"/opt/corvalent"_s, u"/opt"_s,
                                                             u"Corvalent"_s, u"click"_s, u"s.ico"_s, u"l.ico"_s, 1})};
        QTest::newRow("AddAuxCommand") << aux << addCommand << QVariant(0) << 0;
        QTest::newRow("placed on the toolbar")
            << aux << addCommand + QVariantList{call("AddAuxCommandToToolbar", {u"Corvalent"_s, 2}),
                                                call("AuxCommandExistsInToolbar", {u"corvalent"_s, 2})}
            << QVariant(true) << 0;
        QTest::newRow("not in the menu")
            << aux << addCommand + QVariantList{call("AuxCommandExistsInToolsMenu", {u"Corvalent"_s, 2})}
            << QVariant(false) << 0;
        QTest::newRow("view 7") << aux << QVariantList{call("AuxCommandExistsInToolbar", {u"Corvalent"_s, 7})}
                                << QVariant() << 5;
        QTest::newRow("placing an unknown command")
            << aux << QVariantList{call("AddAuxCommandToToolsMenu", {u"Nobody"_s, 1})} << QVariant() << 440;
        QTest::newRow("AddAuxCommand with seven arguments")
            << aux << QVariantList{call("AddAuxCommand", {u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"f"_s, u"g"_s})}
            << QVariant() << 5;

        QTest::newRow("IsDatabaseOpen") << events << QVariantList{call("IsDatabaseOpen", {0})} << QVariant(1) << 0;
        QTest::newRow("IsRunning") << events << QVariantList{call("IsRunning")} << QVariant(true) << 0;

        // Hostile calls: each an error with its number, nothing more.
        const QVariant stranger = toVariant(std::make_shared<Stranger>());
        QTest::newRow("unknown member") << app << QVariantList{call("Frobnicate")} << QVariant() << 438;
        QTest::newRow("unknown member of a view") << app << view + QVariantList{call("GetGrid")} << QVariant() << 438;
        QTest::newRow("a megabyte member name") << db << QVariantList{call(qPrintable(kMegabyte))} << QVariant()
                                                << 438;
        QTest::newRow("too many arguments") << db << fields + QVariantList{call("Count", {1})} << QVariant() << 5;
        QTest::newRow("too few arguments") << app << grid + QVariantList{call("GetField", {26})} << QVariant() << 5;
        QTest::newRow("object for a number") << db << onFields("Label", stranger) << QVariant() << 13;
        QTest::newRow("object for text") << app << QVariantList{call("OpenFile", {stranger})} << QVariant() << 13;
        QTest::newRow("text for a number") << app << view + QVariantList{call("GetField", {u"Phone"_s})}
                                           << QVariant() << 13;
        QTest::newRow("nothing for a number") << app << view + QVariantList{call("GetField", {QVariant()})}
                                              << QVariant() << 13;
        QTest::newRow("a megabyte of text to write")
            << app << view + QVariantList{call("SetField", {26, kMegabyte})} << QVariant() << 5;
        QTest::newRow("a megabyte of digits for a number")
            << app << view + QVariantList{call("GetField", {QString(1024 * 1024, u'7')})} << QVariant() << 13;
        QTest::newRow("negative row") << app << grid + QVariantList{call("GetField", {26, -1})} << QVariant() << 440;
        QTest::newRow("row past the lookup")
            << app << grid + QVariantList{call("GetField", {26, 2147483647})} << QVariant() << 440;
        QTest::newRow("row beyond 32 bits") << app << grid + QVariantList{call("GetField", {26, 1e12})}
                                            << QVariant() << 5;
        QTest::newRow("field ID beyond 16 bits")
            << db << QVariantList{call("Contact"), call("Data", {40000})} << QVariant() << 5;
        QTest::newRow("not a number at all") << app << QVariantList{call("Command", {qQNaN()})} << QVariant() << 5;
    }
    void memberCalls()
    {
        QFETCH(QString, progId);
        QFETCH(QVariantList, chain);
        QFETCH(QVariant, expected);
        QFETCH(int, error);
        int thrown = 0;
        QVariant result;
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

    // Walking the field list by position, skipping deleted positions, until Count real fields were seen: the
    // walk reads past position Count - 1 and finds every field once.
    void fieldListWalk()
    {
        const AutomationPtr list = toObject(toObject(run(kProgIdDatabase, {call("Contact")}))->invoke(u"Fields"_s));
        const int count = list->invoke(u"Count"_s).toInt();
        QList<int> ids;
        int position = 0;
        for (int valid = 0; valid < count; ++position) {
            const int id = list->invoke(u"ID"_s, {position}).toInt();
            if (id == -1)
                continue;
            QCOMPARE(list->invoke(u"Label"_s, {position}), list->invoke(u"Label"_s, {QString::number(id)}));
            ids << id;
            ++valid;
        }
        QCOMPARE(position, 30);
        QCOMPARE(ids, (QList<int>{25, 26, 34, 27, 28, 29, 30, 31, 32, 33, 35, 36, 37, 38, 40, 41, 65, 66, 67, 68, 69,
                                  70, 78, 79, 80, 81, 82, 83}));
    }

    void activeViewType_data()
    {
        QTest::addColumn<int>("view");
        QTest::addColumn<int>("type");
        QTest::newRow("contact view") << int(ContactHost::View::Contact) << 2;
        QTest::newRow("contact list") << int(ContactHost::View::ContactList) << 3;
    }
    void activeViewType()
    {
        QFETCH(int, view);
        QFETCH(int, type);
        m_host->setActiveView(ContactHost::View(view));
        QCOMPARE(run(kProgIdApp, {call("Views"), call("GetActive"), call("Type")}), QVariant(type));
    }

    // A view object reads the contact that is current when it is called, not when it was made.
    void viewObjectsAreLive()
    {
        const AutomationPtr view = toObject(run(kProgIdApp, {call("Views"), call("Create", {1, u"CV"_s})}));
        const AutomationPtr grid =
            toObject(run(kProgIdApp, {call("Views"), call("Create", {2, u"CV"_s}), call("GetGrid")}));
        m_host->moveTo(m_anne);
        QCOMPARE(view->invoke(u"GetField"_s, {35}), QVariant(u"(514) 555-0199"_s));
        QCOMPARE(view->invoke(u"GetCurrentID"_s), QVariant(QString::number(m_anne)));
        QCOMPARE(grid->invoke(u"GetCurrentRow"_s), QVariant(1));
        grid->invoke(u"SetField"_s, {26, u"Anne Tremblay"_s});
        QCOMPARE(m_host->store().fieldText(m_anne, 26), u"Anne Tremblay"_s);
    }

    void withoutDatabase_data()
    {
        QTest::addColumn<QString>("progId");
        QTest::addColumn<QVariantList>("chain");
        QTest::addColumn<QVariant>("expected");
        QTest::addColumn<int>("error");
        const QVariantList view{call("Views"), call("Create", {1, u"CV"_s})};
        QTest::newRow("field list") << kProgIdDatabase << QVariantList{call("Contact"), call("Fields"), call("Count")}
                                    << QVariant() << 440;
        QTest::newRow("GetField") << kProgIdApp << view + QVariantList{call("GetField", {26})} << QVariant() << 440;
        QTest::newRow("AddNewContact") << kProgIdApp << view + QVariantList{call("AddNewContact")} << QVariant()
                                       << 440;
        QTest::newRow("auxiliary commands") << kProgIdAuxCommands
                                            << QVariantList{call("AuxCommandExists", {u"x"_s})} << QVariant() << 440;
        QTest::newRow("OpenFile of the open database") << kProgIdApp << QVariantList{call("OpenFile", {u""_s})}
                                                       << QVariant() << 440;
        QTest::newRow("no database name") << kProgIdApp << QVariantList{call("GetOpenDBName")}
                                          << QVariant(QString()) << 0;
        QTest::newRow("IsDatabaseOpen") << kProgIdEvents << QVariantList{call("IsDatabaseOpen", {0})} << QVariant(0)
                                        << 0;
        QTest::newRow("unknown member still 438") << kProgIdApp << view + QVariantList{call("Nope")} << QVariant()
                                                  << 438;
    }
    void withoutDatabase()
    {
        m_host->closeDatabase();
        memberCalls();
    }

    void objectsOutliveTheirHost()
    {
        const AutomationPtr view = toObject(run(kProgIdApp, {call("Views"), call("Create", {1, u"CV"_s})}));
        const AutomationPtr events = m_host->createObject(kProgIdEvents);
        m_host.reset();
        for (const AutomationPtr& object : {view, events}) {
            try {
                object->invoke(object == view ? u"GetField"_s : u"IsRunning"_s, object == view ? QVariantList{26}
                                                                                                 : QVariantList{});
                QFAIL("a call after the contact manager went should fail");
            } catch (const Error& e) {
                QCOMPARE(e.number(), 440);
            }
        }
    }

    void createObjectAndDetach()
    {
        QVERIFY(m_host->createObject(u"actole.appobject"_s));
        try {
            m_host->createObject(u"ACTOLE.NOTHING"_s);
            QFAIL("an unknown ProgID should fail");
        } catch (const Error& e) {
            QCOMPARE(e.number(), 429);
        }
        const AutomationPtr control = m_host->createObject(kProgIdEvents);
        auto* events = dynamic_cast<EventControlObject*>(control.get());
        QVERIFY(events && !events->detached());
        control->invoke(u"detach"_s);
        QVERIFY(events->detached());
        QCOMPARE(m_host->createObject(kProgIdApp)->invoke(u"GetOpenDBName"_s).toString(), m_host->store().path());
    }
};

QTEST_GUILESS_MAIN(TestAutomationObjects)
#include "tst_automationobjects.moc"
