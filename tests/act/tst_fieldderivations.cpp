// The address option and phone choice turned into field IDs and texts, and the phone list they choose from.

#include "act/FieldDerivations.h"
#include "act/PhoneList.h"
#include "prefs/Preferences.h"

#include "support/HostFixture.h"

#include <QSettings>

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestFieldDerivations : public QObject {
    Q_OBJECT

    RecordingPrompter* m_prompter = nullptr;
    test::HostFixture m_fixture;
    ContactForm m_form;

private slots:
    void init()
    {
        m_prompter = test::install<RecordingPrompter, Prompter>();
        m_form.setPhones({});
        QSettings(u"Corvalent"_s, u"Corvalent"_s).remove(u"Settings/ComboPhone"_s);
    }

    // Both choices from a form on Custom (the other options name fixed fields); the service's F2 matters for the
    // address, the phone list and the stored ComboPhone for the phone.
    void choices_data()
    {
        QTest::addColumn<QString>("f2"); // "-": no F2 key
        QTest::addColumn<int>("current"); // the chosen entry of the list 36, 38; -2: an empty list
        QTest::addColumn<QString>("stored"); // ComboPhone; "" for none
        QTest::addColumn<int>("address");
        QTest::addColumn<int>("phone");
        QTest::addColumn<QStringList>("boxes"); // functions whose error box shows
        QTest::newRow("F2, chosen entry") << u"80"_s << 1 << u"36"_s << 80 << 38 << QStringList();
        QTest::newRow("no F2, empty list") << u"-"_s << -2 << u""_s << 27 << 38 << QStringList();
        QTest::newRow("F2 abc, empty list, stored choice") << u"abc"_s << -2 << u"36"_s << 0 << 36 << QStringList();
        QTest::newRow("F2 too large, none chosen")
            << u"1e12"_s << -1 << u"36"_s << 0 << 0 << QStringList{u"GetAddressField"_s, u"GetPhoneNumber"_s};
    }
    void choices()
    {
        QFETCH(QString, f2);
        QFETCH(int, current);
        QFETCH(QString, stored);
        QFETCH(QStringList, boxes);
        m_form.setAddressOption(ContactForm::Custom);
        if (current > -2)
            m_form.setPhones({{u"[Fax]"_s, 36}, {u"[Mobile Phone]"_s, 38}}, current);
        if (!stored.isEmpty())
            SaveSetting(u"ComboPhone"_s, stored);
        const QString service = test::writeService(m_fixture.home, f2 == u"-"_s ? u"F1=2"_s : u"F2="_s + f2);
        QTEST(GetAddressField(m_form, service), "address");
        QTEST(GetPhoneNumber(m_form), "phone");
        QCOMPARE(m_prompter->prompts().size(), boxes.size());
        for (int i = 0; i < boxes.size(); ++i)
            QVERIFY(test::isErrorBox(m_prompter->prompts().at(i), u"Error "_s, u"frmMain: Function "_s + boxes[i]));
    }

    // Contact A in the contact view, contact B at its row of the lookup; "" after an overflow (field numbers are
    // 16-bit).
    void addressSlot_data()
    {
        QTest::addColumn<int>("slot");
        QTest::addColumn<bool>("gridRow");
        QTest::addColumn<QString>("expected");
        QTest::newRow("home 5, grid row of another contact") << 5 << true << u"L6J 1A1"_s;
        QTest::newRow("home, 16-bit overflow") << 32704 << false << u""_s;
    }
    void addressSlot()
    {
        QFETCH(int, slot);
        QFETCH(bool, gridRow);
        QFETCH(QString, expected);
        ActSession& session = m_fixture.session;
        if (gridRow) {
            m_fixture.host.moveTo(m_fixture.ids[1]);
            const AutomationPtr list = session.createView(ActSession::kCreateListView);
            const AutomationPtr grid = session.getGrid(list);
            session.useGrid(list, grid, session.currentRow(grid));
        } else {
            session.useContactView(session.createView(ActSession::kCreateContactView));
        }
        m_fixture.host.moveTo(m_fixture.ids[0]); // the grid row read above still names contact B
        QCOMPARE(GetHome(session, qint16(slot), gridRow), expected);
        QCOMPARE(m_prompter->prompts().size(), expected.isEmpty() ? 1 : 0);
        if (expected.isEmpty())
            QVERIFY(test::isErrorBox(m_prompter->prompts().first(), u"Error 6: 'Overflow'"_s,
                                     u"frmMain: Function GetHome"_s));
    }

    void phoneList_data()
    {
        QTest::addColumn<int>("chosen"); // field ID chosen before; 0: none
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("expected"); // index of the chosen entry afterwards
        QTest::newRow("nothing chosen: home phone") << 0 << u""_s << 2;
        QTest::newRow("stored choice not a phone") << 0 << u"26"_s << -1;
        QTest::newRow("the choice stays") << 38 << u"36"_s << 3;
    }
    void phoneList()
    {
        QFETCH(int, chosen);
        QFETCH(QString, stored);
        if (!stored.isEmpty())
            SaveSetting(u"ComboPhone"_s, stored);
        if (chosen)
            m_form.setPhones({{u"old"_s, chosen}}, 0);
        m_fixture.viewContact(0);
        LoadPhoneList(m_fixture.session, m_form);
        const QList<ContactForm::PhoneEntry> phones{{u"[Phone] (514) 555-0199"_s, 35}, {u"[Fax]"_s, 36},
                                                    {u"[Home Phone] (450) 555-0111"_s, 37},
                                                    {u"[Mobile Phone] (514) 555-0100"_s, 38}};
        QCOMPARE(m_form.phones(), phones);
        QTEST(m_form.currentPhone(), "expected");
        QCOMPARE(m_prompter->texts(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestFieldDerivations)
#include "tst_fieldderivations.moc"
