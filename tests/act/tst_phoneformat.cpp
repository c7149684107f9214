// Phone masks by the country of a contact's phone, from the contact manager's Phone.fmt, and phones written with
// them.

#include "act/PhoneFormat.h"

#include "support/HostFixture.h"

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestPhoneFormat : public QObject {
    Q_OBJECT

    RecordingPrompter* m_prompter = nullptr;
    // The last has no phone of its own; the user's own record is in Britain.
    test::HostFixture m_fixture{{{{35, u"+1 (514) 555-0199"_s}}, {{35, u"+33 01 23 45 67 89"_s}},
                                 {{35, u"+81 3-1234-5678"_s}}, {{26, u"No Phone"_s}}, {{35, u"+49 30 1234567"_s}}}};

private slots:
    void initTestCase()
    {
        host::ContactStore& store = m_fixture.host.store();
        store.setFieldText(store.myRecordId(), 35, u"+44 20 7946 0958"_s);
        // Two lines for country 1: the first counts. The mask of 44 is cut after its last "#"; 49 has none left.
        m_fixture.home.write(u"contacts/Phone.fmt"_s, "1\t(###) ###-####\r\n33\t## ## ## ## ##\r\n1\t###.###.####\r\n"
                                                      "44\t## #### #### ext\r\n49\t\r\n");
        QDir().mkpath(m_fixture.home.file(u"empty"_s));
    }
    void init() { m_prompter = test::install<RecordingPrompter, Prompter>(); }

    void formatWithPhoneMask_data()
    {
        QTest::addColumn<QString>("phone");
        QTest::addColumn<QString>("mask");
        QTest::addColumn<QString>("expected");
        QTest::newRow("short: literals stay") << u"555-0199"_s << u"(###) ###-####"_s << u"() 555-0199"_s;
        QTest::newRow("long: surplus in front") << u"1 514 555 0199"_s << u"(###) ###-####"_s << u"(1514) 555-0199"_s;
        QTest::newRow("no mask") << u"0514-555"_s << u""_s << u"514555"_s;
        QTest::newRow("no digits: nothing, not the separators") << u"n/a"_s << u"(###) ###-####"_s << u""_s;
        QTest::newRow("more digits than a number holds") << u"12345678901234567890"_s << u"#-#"_s
                                                         << u"1234567890123456789-0"_s;
    }
    void formatWithPhoneMask()
    {
        QFETCH(QString, phone);
        QFETCH(QString, mask);
        QTEST(FormatWithPhoneMask(phone, mask), "expected");
    }

    // The mask of a contact's country, and a phone formatted while that contact is current.
    void phoneFormat_data()
    {
        QTest::addColumn<int>("contact");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("mask");
        QTest::addColumn<QString>("phone");
        QTest::addColumn<QString>("expected");
        QTest::newRow("first line of the country")
            << 0 << u"contacts"_s << u"(###) ###-####"_s << u"514.555.0199"_s << u"(514) 555-0199"_s;
        QTest::newRow("two-digit country")
            << 1 << u"contacts"_s << u"## ## ## ## ##"_s << u"01 23 45 67 89"_s << u"1 23 45 67 89"_s;
        QTest::newRow("country not listed")
            << 2 << u"contacts"_s << u"###-###-####"_s << u"(514) 555-0199"_s << u"514-555-0199"_s;
        // Without a phone there is no country: the user's own mask formats instead.
        QTest::newRow("no phone: the user's mask") << 3 << u"contacts"_s << u""_s << u"5550199"_s << u" 555 0199"_s;
        QTest::newRow("no Phone.fmt") << 0 << u"empty"_s << u"###-###-####"_s << u"5145550199"_s << u"514-555-0199"_s;
        // The user's own record is visited for its mask, then the contact on screen is current again.
        QTest::newRow("no places: the user's mask")
            << 4 << u"contacts"_s << u""_s << u"020 7946 0958"_s << u"20 7946 0958"_s;
    }
    void phoneFormat()
    {
        QFETCH(int, contact);
        QFETCH(QString, folder);
        QFETCH(QString, phone);
        qputenv("CORVALENT_CONTACTS_FOLDER", QFile::encodeName(m_fixture.home.file(folder)));
        m_fixture.viewContact(0);
        QTEST(PhoneFormatter(m_fixture.session).GetPhoneFormat(QString::number(m_fixture.ids[contact])), "mask");
        QCOMPARE(m_fixture.host.currentId(), m_fixture.ids[contact]);
        m_fixture.viewContact(contact);
        QTEST(PhoneFormatter(m_fixture.session).PhoneFormat(phone), "expected");
        QCOMPARE(m_fixture.host.currentId(), m_fixture.ids[contact]);
        QCOMPARE(m_prompter->texts(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestPhoneFormat)
#include "tst_phoneformat.moc"
