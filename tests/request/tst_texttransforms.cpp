#include "request/StreetTypes.h"
#include "request/TextTransforms.h"

#include "support/RequestSupport.h"

using namespace corvalent;
using namespace Qt::StringLiterals;

using Transform = QString (*)(const QString&);
Q_DECLARE_METATYPE(Transform)

class TestTextTransforms : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    RecordingPrompter* m_prompter = nullptr;

    // "error" expected: the procedure answers "" and shows its error box.
    void verify(const QString& answer, const QString& expected, const QString& error, const QString& location)
    {
        const bool failed = expected == u"error"_s;
        QCOMPARE(answer, failed ? QString() : expected);
        QCOMPARE(m_prompter->prompts().size(), failed ? 1 : 0);
        if (failed)
            QVERIFY(test::isErrorBox(m_prompter->prompts().first(), error, location));
    }

private slots:
    void init() { m_prompter = test::install<RecordingPrompter, Prompter>(); }

    void transform_data()
    {
        QTest::addColumn<Transform>("transform");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* tag, Transform f, const QString& text, const QString& expected) {
            QTest::newRow(tag) << f << text << expected;
        };
        row("accents: the table", Remove_Accents, u"éèêëàâäìïîòöôùüû ÉÈÊËÀÂÄÌÏÎÒÖÔÙÜÛ"_s,
            u"eeeeaaaiiiooauuu eeeeaaaiiiooauuu"_s);
        row("accents: not in the table", Remove_Accents, u"á í ó ú ç ñ ÿ Á Ç Ÿ ő"_s, u"á í ó ú ç ñ ÿ Á Ç Ÿ ő"_s);
        row("GetVal: after the first ], blanks trimmed, tabs not", GetVal, u"[Work] \t555 ] 1   "_s, u"\t555 ] 1"_s);
        row("GetVal: no ]", GetVal, u"  555-0199  "_s, u"  555-0199  "_s);
        row("street: any case, whole words only", NormaliseStreetType, u"rue Streetsville  Park Road "_s,
            u"RUE Streetsville  Park RD "_s);
        row("street: accented, period dropped, comma kept", NormaliseStreetType, u"Montée Elm St., Apt 4"_s,
            u"MTÉE Elm ST, Apt 4"_s);
        row("invalid: control characters, threshold kept",
            [](const QString& t) { return RemoveInvalidChar(t, 32, {}); }, u"a\tb\r\nc\x01 é"_s, u"abc é"_s);
        row("invalid: allowed by code; 19 is not 9",
            [](const QString& t) { return RemoveInvalidChar(t, 32, u"|19|10|"_s); }, u"a\tb\r\nc"_s, u"ab\nc"_s);
        // € is 128 in Windows-1252.
        row("invalid: Windows-1252 codes", [](const QString& t) { return RemoveInvalidChar(t, 129, {}); }, u"€é"_s,
            u"é"_s);
    }
    void transform()
    {
        QFETCH(Transform, transform);
        QFETCH(QString, text);
        QTEST(transform(text), "expected");
    }

    void customPhone_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("expected");
        // Row 4 is asked for; PhFormat7 shows that only the row's own format counts.
        QTest::newRow("positions") << u"Base=1|PhFormat4=1,2,3|PhFormat7=9"_s << u"514"_s;
        QTest::newRow("no format: all digits") << u"Base=1|PhFormat7=9"_s << u"5145550199"_s;
        QTest::newRow("tenth digit, none beyond") << u"Base=1|PhFormat4=10,11"_s << u"9"_s;
        QTest::newRow("no Base: as shown") << u"PhFormat4=1,2,3"_s << u"(514) 555-0199"_s;
        QTest::newRow("position not a number") << u"Base=1|PhFormat4=1,x,3"_s << u"error"_s;
        QTest::newRow("Base not a number") << u"Base=abc"_s << u"error"_s;
    }
    void customPhone()
    {
        QFETCH(QString, keys);
        QFETCH(QString, expected);
        verify(Custom_Phone(u"[Business] (514) 555-0199"_s, 4, test::writeService(m_home, keys)), expected,
               u"Error 13: 'Type mismatch'"_s, u"frmMain: Function Custom_Phone"_s);
    }

    void homeNumber_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("street");
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("rest");
        const QString plain = u"URL=maps.example.org/find?"_s;
        QTest::newRow("first number only, every occurrence goes")
            << plain << u"12 34 Rue du 12 Mai"_s << u"12"_s << u"34 Rue du  Mai"_s;
        QTest::newRow("zero is no number") << plain << u"0 Main"_s << QString() << u"0 Main"_s;
        QTest::newRow("accented letter is no start") << plain << u"#, Éva Lane"_s << QString() << u"va Lane"_s;
        QTest::newRow("empty") << plain << QString() << QString() << QString();
        QTest::newRow("punctuation only") << plain << u"12 ,."_s << u"12"_s << u"error"_s;
        QTest::newRow("postal in upper case: street type") << test::kPostalUrl.toUpper() << u"7, Elm Avenue"_s
                                                           << u"7"_s << u"Elm AVE"_s;
    }
    void homeNumber()
    {
        QFETCH(QString, url);
        QFETCH(QString, street);
        QFETCH(QString, rest);
        QTEST(Get_Home_Number(street), "number");
        verify(Remove_Home_Number(street, test::writeService(m_home, url)), rest, u"Error "_s,
               u"frmMain: Function Remove_Home_Number"_s);
    }

    void isLetter()
    {
        // By Windows-1252 code: 64 @, 65 A, 90 Z, 91 [, 96 `, 97 a, 123 {, 233 é, and ā, which it cannot hold.
        QString answers;
        for (QChar c : u"@AZ[`a{éā"_s)
            answers += Is_Letter(c) ? u'1' : u'0';
        QCOMPARE(answers, u"011001110"_s);
    }
};

QTEST_GUILESS_MAIN(TestTextTransforms)
#include "tst_texttransforms.moc"
