// Contact capture against the contact manager's real model: what the ten boxes and Grab buttons show for a
// service, an address option, a view and what the user typed.

#include "act/ContactCapture.h"

#include "support/HostFixture.h"

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

const QString kDefaults = u"F0=26|F1=25|F2=27|F3=30|F4=31|F5=32|F6=33|F7=0|F8=0|F9=0"_s;
const QStringList kBusinessA{u"Jean Tremblay"_s, u"Acme Ltée"_s, u"1500 Rue Peel"_s, u"Montréal"_s, u"QC"_s,
                             u"H3A 1S9"_s, u"Canada"_s, {}, {}, {}};
const QStringList kBusinessB{u"Anne Martin"_s, u"Beta Inc"_s, u"200 King St W"_s, u"Toronto"_s, u"ON"_s,
                             u"M5H 1J9"_s, u"Canada"_s, {}, {}, {}};
const QString kAllGrab(10, u'G');

constexpr int Reset = 1, LoadAll = 2, NoDisplay = 4, ContactB = 8, ListView = 16;

// `texts` with the "SLOT=TEXT" changes made.
QStringList with(QStringList texts, const QStringList& changes)
{
    for (const QString& change : changes)
        texts[change.section(u'=', 0, 0).toInt()] = change.section(u'=', 1);
    return texts;
}

QStringList list(const std::array<QString, 10>& texts) { return QStringList(texts.begin(), texts.end()); }

} // namespace

class TestContactCapture : public QObject {
    Q_OBJECT

    RecordingPrompter* m_prompter = nullptr;
    test::HostFixture m_fixture;
    std::unique_ptr<ContactForm> m_form;
    std::unique_ptr<ContactCapture> m_capture;
    int m_services = 0;

    void useService(const QString& keys)
    {
        const QString name = QString::fromUtf8(QTest::currentDataTag()) + QString::number(++m_services);
        m_capture->setServiceFile(test::writeService(m_fixture.home, keys, name));
    }
    void show(int contact, bool listView)
    {
        m_fixture.host.moveTo(m_fixture.ids[contact]);
        using View = host::ContactHost::View;
        m_fixture.host.setActiveView(listView ? View::ContactList : View::Contact);
    }

private slots:
    // Capture changes nothing in the database: every case starts from a new form and record on the same host.
    void init()
    {
        m_prompter = test::install<RecordingPrompter, Prompter>();
        m_fixture.backend.budget = -1;
        // Which fields a capture reads shows only where each is a call of its own, as with a contact manager
        // that has no GetFields.
        m_fixture.backend.missing = QStringList{u"GetFields"_s};
        show(0, false);
        m_form = std::make_unique<ContactForm>();
        m_capture = std::make_unique<ContactCapture>(m_fixture.session, *m_form);
    }

    // Earlier captures (services separated by ";") run on contact A in the contact view; then the user types, the
    // contact, view and flags change, and the capture under test runs.
    void capture_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QStringList>("typed");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<int>("option");
        QTest::addColumn<int>("flags");
        QTest::addColumn<QStringList>("expected"); // "=N": the store's own text of field N
        QTest::addColumn<QString>("grab");
        QTest::addColumn<int>("reads"); // GetField calls of the capture under test; field 0 is never asked

        const QStringList none(10);
        const QString special = u"F0=777|F1=778|F2=779|F3=888|F7=78|F8=79|F9=26"_s;
        const QStringList specialA{u"1500"_s, u"Rue Peel"_s, u"Montréal, QC"_s, u"(514) 555-0199"_s, {}, {}, {},
                                   u"=78"_s, u"=79"_s, u"Jean Tremblay"_s};
        QTest::newRow("special codes, contact view: 78 and 79 without Grab")
            << "" << none << special << 0 << 0 << specialA << "----GGG--G" << 8;
        QTest::newRow("special codes, list view: 78 and 79 with Grab")
            << "" << none << special << 0 << ListView << specialA << "----GGGGGG" << 8;
        QTest::newRow("special codes, home")
            << "" << none << special << 1 << 0
            << with(specialA, {u"0=12"_s, u"1=B Main St"_s, u"2=Laval, QC"_s, u"3=(450) 555-0111"_s})
            << "----GGG--G" << 8;
        // A kept slot skips the code rules, so only the first test decides its Grab button.
        QTest::newRow("special codes kept, contact view")
            << special << none << special << 0 << 0 << specialA << "--G-GGG--G" << 0;
        QTest::newRow("779, custom with F2 80 keeps the slot's value")
            << u"F8=26"_s << none << u"F2=80|F8=779"_s << 2 << Reset
            << with(none, {u"2=u1 A"_s, u"8=Jean Tremblay"_s}) << "GGGGGGGG-G" << 1;
        QTest::newRow("888, custom, phone-based: the stored phone's digits")
            << "" << none << u"Base=1|F7=888|PhFormat7=1,2,3"_s << 2 << 0 << with(none, {u"7=514"_s})
            << "GGGGGGG-GG" << 1;

        QTest::newRow("a phone field by its code: the number as the view shows it")
            << "" << none << u"Base=2|F3=35"_s << 0 << 0 << with(none, {u"3=(514) 555-0199"_s}) << kAllGrab << 1;

        const QStringList typed{u"0=Typed name"_s, u"2=Typed street"_s, u"9=Typed nine"_s};
        QTest::newRow("another service keeps typed text of the same codes")
            << kDefaults << typed << u"F0=26|F1=80|F2=27|F3=30|F4=31|F5=32|F6=33|F7=0|F8=0|F9=26"_s << 0 << 0
            << with(kBusinessA, {u"0=Typed name"_s, u"1=u1 A"_s, u"2=Typed street"_s, u"9=Jean Tremblay"_s})
            << kAllGrab << 2;
        QTest::newRow("load all, contact view: typed text goes")
            << kDefaults << typed << kDefaults << 0 << LoadAll << kBusinessA << kAllGrab << 7;
        QTest::newRow("load all, list view: typed text stays")
            << kDefaults << typed << kDefaults << 0 << (LoadAll | ListView) << with(kBusinessA, typed)
            << kAllGrab << 0;
        // A slot without a code keeps the code it had, so coming back to it keeps the emptied box.
        QTest::newRow("a service without the slot, then one with it: the empty box stays")
            << kDefaults + u";URL=x"_s << none << kDefaults << 0 << 0 << none << kAllGrab << 0;
        QTest::newRow("no display: the record changes, the boxes do not")
            << kDefaults << typed << kDefaults << 0 << (NoDisplay | ContactB | Reset) << kBusinessB
            << kAllGrab << 7;
    }
    void capture()
    {
        QFETCH(QString, before);
        QFETCH(QStringList, typed);
        QFETCH(QString, keys);
        QFETCH(int, option);
        QFETCH(int, flags);
        QFETCH(QStringList, expected);

        m_form->setAddressOption(option);
        for (const QString& service : before.split(u';', Qt::SkipEmptyParts)) {
            useService(service);
            QVERIFY(m_capture->Get_Contact(false));
        }
        for (const QString& change : typed) {
            if (!change.isEmpty())
                m_form->setText(change.section(u'=', 0, 0).toInt(), change.section(u'=', 1));
        }
        const QStringList shownBefore = list(m_form->texts());

        const int contact = flags & ContactB ? 1 : 0;
        show(contact, flags & ListView);
        for (QString& text : expected) {
            if (text.startsWith(u'='))
                text = m_fixture.host.store().fieldText(m_fixture.ids[contact], text.mid(1).toInt());
        }
        useService(keys);
        m_capture->ResetFields = flags & Reset;
        m_capture->LoadAll = flags & LoadAll;
        m_fixture.backend.calls.clear();

        QVERIFY(m_capture->Get_Contact(flags & NoDisplay));
        QCOMPARE(m_prompter->texts(), QStringList());
        QCOMPARE(list(m_capture->FieldValues), expected);
        QCOMPARE(list(m_form->texts()), flags & NoDisplay ? shownBefore : expected);
        QString grabs;
        for (int i = 0; i < 10; ++i)
            grabs += m_form->grabEnabled(i) ? u'G' : u'-';
        QTEST(grabs, "grab");
        QTEST(int(m_fixture.backend.calls.count(u"GetField"_s)), "reads");
        QVERIFY(!m_capture->ResetFields);
    }

    // The contact manager stops answering after `budget` calls of a capture that would turn the boxes from
    // contact B to contact A, in the list: the record's slots filled before hold A, the rest stay B, the boxes all
    // still show B, and the next capture recovers. Read in one call, the fields fail together; read one by one (a
    // contact manager without GetFields), slot by slot.
    void failure_data()
    {
        QTest::addColumn<int>("budget");
        QTest::addColumn<bool>("fieldByField");
        QTest::addColumn<int>("filled");
        QTest::newRow("all fields at once") << 5 << false << 0;
        QTest::newRow("slot 2, field by field") << 7 << true << 2;
    }
    void failure()
    {
        QFETCH(int, budget);
        QFETCH(bool, fieldByField);
        QFETCH(int, filled);
        if (!fieldByField) {
            m_fixture.backend.missing.clear();
            // A session of its own, which has not yet found GetFields missing.
            m_fixture.session.OpenSession(m_fixture.backend);
        }

        // Custom reads slots 2 to 6 by their codes, so every field read is Get_Contact's own call.
        m_form->setAddressOption(ContactForm::Custom);
        useService(u"F0=26|F1=25|F2=27|F3=30|F4=31|F5=32|F6=33|F7=26|F8=25|F9=0"_s);
        const QStringList a = with(kBusinessA, {u"7=Jean Tremblay"_s, u"8=Acme Ltée"_s});
        // Slot 9 reads "", so only a text of its own shows that it was left alone.
        const QStringList b = with(kBusinessB, {u"7=Anne Martin"_s, u"8=Beta Inc"_s, u"9=B's own"_s});
        show(1, false);
        QVERIFY(m_capture->Get_Contact(false));
        m_form->setText(9, b[9]);
        m_capture->FieldValues[9] = b[9];

        show(0, true);
        m_capture->ResetFields = true;
        m_fixture.backend.budget = budget;
        QVERIFY(!m_capture->Get_Contact(false));

        QCOMPARE(m_prompter->prompts().size(), 1);
        QVERIFY2(test::isErrorBox(m_prompter->prompts().first(), u"Error 440: 'Automation error'\r"_s,
                                  u"frmMain: Sub Get_Contact"_s),
                 qPrintable(m_prompter->prompts().first().text));
        QCOMPARE(list(m_capture->FieldValues), a.mid(0, filled) + b.mid(filled));
        QCOMPARE(list(m_form->texts()), b);

        m_fixture.backend.budget = -1;
        m_capture->ResetFields = true;
        QVERIFY(m_capture->Get_Contact(false));
        QCOMPARE(list(m_form->texts()), a);
    }
};

QTEST_GUILESS_MAIN(TestContactCapture)
#include "tst_contactcapture.moc"
