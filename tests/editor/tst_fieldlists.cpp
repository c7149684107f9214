// The field lists of the service editor against the contact manager's own field list (gaps included), and the
// keystroke filter of its phone-format boxes.

#include "editor/DataValidation.h"
#include "editor/FieldLists.h"
#include "support/HostFixture.h"

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

const QStringList kPseudoAddress{u"_None"_s, u"->Street number"_s, u"->Address w/o Street number"_s,
                                 u"->City, State"_s};
// The contact manager's fields of the service editor's types (no dates), in field-list order; the last of them lie
// beyond position Count - 1, behind the list's two gaps.
const QStringList kServiceFields{
    u"Company"_s, u"Contact"_s, u"Title"_s, u"Address 1"_s, u"Address 2"_s, u"Address 3"_s, u"City"_s, u"State"_s,
    u"Zip"_s, u"Country"_s, u"Phone"_s, u"Fax"_s, u"Home Phone"_s, u"Mobile Phone"_s, u"E-mail"_s, u"Web Site"_s,
    u"Home Address 1"_s, u"Home Address 2"_s, u"Home City"_s, u"Home State"_s, u"Home Zip"_s, u"Home Country"_s,
    u"User 1"_s, u"User 2"_s, u"User 3"_s, u"ID/Status"_s};
const QStringList kPhones{u"Phone"_s, u"Fax"_s, u"Home Phone"_s, u"Mobile Phone"_s};

QStringList without(QStringList list, const QStringList& gone)
{
    for (const QString& g : gone)
        list.removeAll(g);
    return list;
}

} // namespace

class TestFieldLists : public QObject {
    Q_OBJECT

    RecordingPrompter* m_prompter = nullptr;

private slots:
    void init()
    {
        m_prompter = test::install<RecordingPrompter, Prompter>();
    }

    void populate_data()
    {
        QTest::addColumn<int>("serviceType");
        QTest::addColumn<QString>("typeList");
        QTest::addColumn<int>("popupFilter");
        QTest::addColumn<QString>("select");
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QString>("chosen"); // "" for none

        QTest::newRow("address service, 777")
            << 0 << kServiceFieldTypes << 0 << u"777"_s << kPseudoAddress + kServiceFields << u"->Street number"_s;
        QTest::newRow("phone service lists phones only as the pseudo-field")
            << 1 << kServiceFieldTypes << 0 << u"35"_s
            << QStringList{u"_None"_s, u"->Phone Numbers"_s} + without(kServiceFields, kPhones) << QString();
        QTest::newRow("other service: 777 chooses nothing")
            << 2 << kServiceFieldTypes << 0 << u"777"_s << QStringList{u"_None"_s} + kServiceFields << QString();
        QTest::newRow("vbTopItem") << 1 << u"|14|"_s << 0 << u"vbTopItem"_s
                                   << QStringList{u"_None"_s, u"->Phone Numbers"_s} << u"_None"_s;
        QTest::newRow("1 does not match inside 14, by ID")
            << 2 << u"|1|"_s << 0 << u"65"_s
            << QStringList{u"_None"_s, u"Company"_s, u"Title"_s, u"Address 1"_s, u"Address 2"_s, u"Address 3"_s,
                           u"Home Address 1"_s, u"Home Address 2"_s, u"User 1"_s, u"User 2"_s, u"User 3"_s,
                           u"ID/Status"_s}
            << u"Home Address 1"_s;
        QTest::newRow("only with a pop-up list")
            << 2 << u"|1|2|3|"_s << 1 << QString()
            << QStringList{u"_None"_s, u"Title"_s, u"State"_s, u"Country"_s, u"Home State"_s, u"Home Country"_s,
                           u"ID/Status"_s}
            << QString();
        QTest::newRow("only without a pop-up list")
            << 2 << u"|2|"_s << 2 << u"32"_s << QStringList{u"_None"_s, u"Zip"_s, u"Home Zip"_s} << u"Zip"_s;
    }

    // Filled again, the same list is not asked of the contact manager a second time.
    void populate()
    {
        QFETCH(int, serviceType);
        QFETCH(QString, typeList);
        QFETCH(int, popupFilter);
        QFETCH(QString, select);
        test::HostFixture fixture;
        FieldListCache fields(fixture.session);
        FieldChoices list;
        list.entries.append({u"left over"_s, 99});
        Populate_cboFields(list, &fields, typeList, qint16(popupFilter), select, qint16(serviceType));
        const qsizetype calls = fixture.backend.calls.size();
        Populate_cboFields(list, &fields, typeList, qint16(popupFilter), select, qint16(serviceType));
        QCOMPARE(fixture.backend.calls.size(), calls);
        QStringList texts;
        for (const FieldChoices::Entry& entry : list.entries)
            texts << entry.text;
        QTEST(texts, "entries");
        QTEST(list.current >= 0 ? list.entries.at(list.current).text : QString(), "chosen");
        QVERIFY(m_prompter->prompts().isEmpty());
    }

    // The contact manager going away half-way: one error box, and the list keeps what it had.
    void contactManagerGoneMidway()
    {
        test::HostFixture fixture;
        FieldListCache fields(fixture.session);
        fixture.backend.budget = 12;
        FieldChoices list;
        Populate_cboFields(list, &fields, kServiceFieldTypes, 0, u"26"_s, 0);
        QCOMPARE(m_prompter->prompts().size(), 1);
        QVERIFY(m_prompter->prompts().first().text.contains(u"modPopulateACTLists: Sub Populate_cboFields"_s));
        QVERIFY(list.entries.size() > kPseudoAddress.size());
        QCOMPARE(list.entries.at(kPseudoAddress.size()).text, u"Company"_s);
        QCOMPARE(list.current, -1);
    }

    // Digits, commas, letters refused and an allowed backspace are tst_serviceeditor's, typed into a phone format.
    void validateText_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("allowed");
        QTest::addColumn<int>("result");
        QTest::newRow("backspace refused") << kBackspaceKey << u"0"_s << 0;
        QTest::newRow("either case of an allowed letter") << int('A') << u"a"_s << int('A');
        QTest::newRow("lower case of an allowed capital") << int('b') << u"B"_s << int('b');
    }

    void validateText()
    {
        QFETCH(int, key);
        QFETCH(QString, allowed);
        QFETCH(int, result);
        int beeps = 0;
        SetValidationBeep([&] { ++beeps; });
        QCOMPARE(ValidateText(key, allowed, false), result);
        QCOMPARE(beeps, result == 0 ? 1 : 0);
        SetValidationBeep(nullptr);
    }
};

QTEST_GUILESS_MAIN(TestFieldLists)
#include "tst_fieldlists.moc"
