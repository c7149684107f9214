// The address option and phone choice turned into field IDs and texts, and the phone list they choose from.

#include "act/FieldDerivations.h"
#include "act/PhoneList.h"
#include "prefs/Preferences.h"

#include "ActTestSupport.h"

#include <QSettings>

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestFieldDerivations : public QObject {
    Q_OBJECT

    RecordingPrompter* m_prompter = nullptr;
    std::unique_ptr<test::HostFixture> m_fixture;
    ContactForm m_form;

    bool errorBoxFrom(const QString& location) const
    {
        return m_prompter->prompts().size() == 1 && test::isErrorBox(m_prompter->prompts().first(), u"Error "_s, location);
    }

private slots:
    void initTestCase()
    {
        m_fixture = std::make_unique<test::HostFixture>(QList<test::Fields>{test::kContactA, test::kContactB});
    }
    void init()
    {
        m_prompter = test::install<RecordingPrompter, Prompter>();
        m_form.setPhones({});
        QSettings(u"Corvalent"_s, u"Corvalent"_s).remove(u"Settings/ComboPhone"_s);
    }

    void getAddressField_data()
    {
        QTest::addColumn<int>("option");
        QTest::addColumn<QString>("f2"); // "-": no F2 key
        QTest::addColumn<int>("expected");
        QTest::addColumn<bool>("error");
        QTest::newRow("business") << 0 << u"65"_s << 27 << false;
        QTest::newRow("home") << 1 << u"27"_s << 65 << false;
        QTest::newRow("custom, F2 27") << 2 << u"27"_s << 27 << false;
        QTest::newRow("custom, F2 80") << 2 << u"80"_s << 80 << false;
        QTest::newRow("custom, no F2") << 2 << u"-"_s << 27 << false;
        QTest::newRow("custom, F2 abc") << 2 << u"abc"_s << 0 << false;
        QTest::newRow("custom, F2 too large") << 2 << u"1e12"_s << 0 << true;
    }
    void getAddressField()
    {
        QFETCH(int, option);
        QFETCH(QString, f2);
        QFETCH(int, expected);
        QFETCH(bool, error);
        m_form.setAddressOption(option);
        const QString service = test::writeService(m_fixture->home, f2 == u"-"_s ? u"F1=2"_s : u"F2="_s + f2);
        QCOMPARE(GetAddressField(m_form, service), expected);
        QCOMPARE(errorBoxFrom(u"frmMain: Function GetAddressField"_s), error);
    }

    void getPhoneNumber_data()
    {
        QTest::addColumn<int>("option");
        QTest::addColumn<int>("current"); // the chosen entry of the list 36, 38; -2: an empty list
        QTest::addColumn<QString>("stored"); // ComboPhone; "" for none
        QTest::addColumn<int>("expected");
        QTest::addColumn<bool>("error");
        QTest::newRow("business") << 0 << 1 << u"37"_s << 35 << false;
        QTest::newRow("home") << 1 << 1 << u"36"_s << 37 << false;
        QTest::newRow("custom, chosen entry") << 2 << 1 << u"36"_s << 38 << false;
        QTest::newRow("custom, empty list") << 2 << -2 << u""_s << 38 << false;
        QTest::newRow("custom, empty list, stored choice") << 2 << -2 << u"36"_s << 36 << false;
        QTest::newRow("custom, none chosen") << 2 << -1 << u"36"_s << 0 << true;
    }
    void getPhoneNumber()
    {
        QFETCH(int, option);
        QFETCH(int, current);
        QFETCH(QString, stored);
        QFETCH(int, expected);
        QFETCH(bool, error);
        m_form.setAddressOption(option);
        if (current > -2)
            m_form.setPhones({{u"[Fax]"_s, 36}, {u"[Mobile Phone]"_s, 38}}, current);
        if (!stored.isEmpty())
            SaveSetting(u"ComboPhone"_s, stored);
        QCOMPARE(GetPhoneNumber(m_form), expected);
        QCOMPARE(errorBoxFrom(u"frmMain: Function GetPhoneNumber"_s), error);
    }

    // Contact A in the contact view, contact B at its row of the lookup.
    void addressSlot_data()
    {
        QTest::addColumn<bool>("home");
        QTest::addColumn<int>("slot");
        QTest::addColumn<bool>("gridRow");
        QTest::addColumn<QString>("expected");
        QTest::newRow("business 2 is 27, not 29") << false << 2 << false << u"1500 Rue Peel"_s;
        QTest::newRow("business 3") << false << 3 << false << u"Montréal"_s;
        QTest::newRow("business 6") << false << 6 << false << u"Canada"_s;
        QTest::newRow("home 2") << true << 2 << false << u"12B Main St"_s;
        QTest::newRow("home 6 is 70") << true << 6 << false << u"Home Canada"_s;
        QTest::newRow("business 3, grid") << false << 3 << true << u"Toronto"_s;
        QTest::newRow("home 5, grid") << true << 5 << true << u"L6J 1A1"_s;
        QTest::newRow("home, 16-bit overflow") << true << 32704 << false << u"error"_s;
        QTest::newRow("business, 16-bit overflow") << false << 32741 << true << u"error"_s;
    }
    void addressSlot()
    {
        QFETCH(bool, home);
        QFETCH(int, slot);
        QFETCH(bool, gridRow);
        QFETCH(QString, expected);
        test::HostFixture& f = *m_fixture;
        ActSession& session = f.session;
        if (gridRow) {
            f.host.moveTo(f.ids[1]);
            const AutomationPtr list = session.createView(ActSession::kCreateListView);
            const AutomationPtr grid = session.getGrid(list);
            session.useGrid(list, grid, session.currentRow(grid));
        } else {
            session.useContactView(session.createView(ActSession::kCreateContactView));
        }
        f.host.moveTo(f.ids[0]); // the grid row read above still names contact B
        const QString text = home ? GetHome(session, qint16(slot), gridRow) : GetBusiness(session, qint16(slot), gridRow);
        if (expected == u"error"_s) {
            QCOMPARE(text, QString());
            QVERIFY(test::isErrorBox(m_prompter->prompts().value(0), u"Error 6: 'Overflow'"_s,
                                     home ? u"frmMain: Function GetHome"_s : u"frmMain: Function GetBusiness"_s));
        } else {
            QCOMPARE(text, expected);
            QCOMPARE(m_prompter->texts(), QStringList());
        }
    }

    void phoneList_data()
    {
        QTest::addColumn<int>("chosen"); // field ID chosen before; 0: none
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("expected"); // index of the chosen entry afterwards
        QTest::newRow("nothing chosen: home phone") << 0 << u""_s << 2;
        QTest::newRow("nothing chosen: the stored choice") << 0 << u"36"_s << 1;
        QTest::newRow("stored choice not a phone") << 0 << u"26"_s << -1;
        QTest::newRow("the choice stays") << 38 << u"36"_s << 3;
    }
    void phoneList()
    {
        QFETCH(int, chosen);
        QFETCH(QString, stored);
        QFETCH(int, expected);
        if (!stored.isEmpty())
            SaveSetting(u"ComboPhone"_s, stored);
        if (chosen)
            m_form.setPhones({{u"old"_s, chosen}}, 0);
        m_fixture->host.moveTo(m_fixture->ids[0]);
        m_fixture->session.useContactView(m_fixture->session.createView(ActSession::kCreateContactView));
        LoadPhoneList(m_fixture->session, m_form);
        const QList<ContactForm::PhoneEntry> phones{{u"[Phone] (514) 555-0199"_s, 35}, {u"[Fax]"_s, 36},
                                                    {u"[Home Phone] (450) 555-0111"_s, 37},
                                                    {u"[Mobile Phone] (514) 555-0100"_s, 38}};
        QCOMPARE(m_form.phones(), phones);
        QCOMPARE(m_form.currentPhone(), expected);
        QCOMPARE(m_prompter->texts(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestFieldDerivations)
#include "tst_fieldderivations.moc"
