#include "request/PostalLookup.h"
#include "request/TextTransforms.h"

#include "RequestTestSupport.h"

#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;
using corvalent::test::TestHome;

class TestTextTransforms : public QObject {
    Q_OBJECT

private:
    TestHome m_home;
    RecordingPrompter* m_prompter = nullptr;

    QString service(const QStringList& keys)
    {
        return test::writeService(
            m_home, QString::fromUtf8(QTest::currentDataTag()).replace(QLatin1Char('/'), QLatin1Char('_')), keys);
    }

private slots:
    void init() { m_prompter = test::installRecordingPrompter(); }

    void removeAccents_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");

        // Every folded letter, alone between plain letters, in both cases: the upper-case form becomes the
        // lower-case base letter too.
        const std::pair<QString, QString> folds[] = {
            {u"é"_s, u"e"_s},
            {u"è"_s, u"e"_s},
            {u"ê"_s, u"e"_s},
            {u"ë"_s, u"e"_s},
            {u"à"_s, u"a"_s},
            {u"â"_s, u"a"_s},
            {u"ä"_s, u"a"_s},
            {u"ì"_s, u"i"_s},
            {u"ï"_s, u"i"_s},
            {u"î"_s, u"i"_s},
            {u"ò"_s, u"o"_s},
            {u"ö"_s, u"o"_s},
            {u"ô"_s, u"a"_s},
            {u"ù"_s, u"u"_s},
            {u"ü"_s, u"u"_s},
            {u"û"_s, u"u"_s},
        };
        for (const auto& [letter, folded] : folds) {
            QTest::addRow("%s", qUtf8Printable(letter)) << u"x"_s + letter + u"X"_s << u"x"_s + folded + u"X"_s;
            QTest::addRow("%s", qUtf8Printable(letter.toUpper()))
                << u"x"_s + letter.toUpper() + u"X"_s << u"x"_s + folded + u"X"_s;
        }

        QTest::newRow("upper case becomes lower case") << u"ÉCOLE"_s << u"eCOLE"_s;
        QTest::newRow("o circumflex becomes a") << u"Côté"_s << u"Cate"_s;
        QTest::newRow("every occurrence") << u"Hélène Bézé"_s << u"Helene Beze"_s;
        QTest::newRow("other accents pass") << u"á í ó ú ç ñ ÿ"_s << u"á í ó ú ç ñ ÿ"_s;
        QTest::newRow("other upper-case accents pass") << u"Á Í Ó Ú Ç Ñ Ÿ"_s << u"Á Í Ó Ú Ç Ñ Ÿ"_s;
        QTest::newRow("punctuation and blanks untouched")
            << u"  Saint-Jérôme, QC  & #1 "_s << u"  Saint-Jerame, QC  & #1 "_s;
        QTest::newRow("empty") << QString() << QString();
    }
    void removeAccents()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(Remove_Accents(text), expected);
        QVERIFY(m_prompter->prompts().isEmpty());
    }

    void getVal_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("displayed entry") << u"[Business] (514) 555-0199"_s << u"(514) 555-0199"_s;
        QTest::newRow("two brackets keep all after the first") << u"[a] 555 ] x"_s << u"555 ] x"_s;
        QTest::newRow("no bracket unchanged, blanks too") << u"  555-0199  "_s << u"  555-0199  "_s;
        QTest::newRow("blanks after the bracket trimmed") << u"[Home]    555-0100   "_s << u"555-0100"_s;
        QTest::newRow("only blanks are trimmed, not tabs") << u"[Home]\t555"_s << u"\t555"_s;
        QTest::newRow("bracket last") << u"[Fax]"_s << QString();
        QTest::newRow("empty") << QString() << QString();
    }
    void getVal()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(GetVal(text), expected);
    }

    void customPhone_data()
    {
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("phone");
        QTest::addColumn<QString>("expected");

        const QString phone = u"[Business] (514) 555-0199"_s;
        QTest::newRow("first three") << QStringList{u"Base=1"_s, u"F4=888"_s, u"PhFormat4=1,2,3"_s} << 4 << phone
                                     << u"514"_s;
        QTest::newRow("last seven") << QStringList{u"Base=1"_s, u"F4=888"_s, u"PhFormat4=4,5,6,7,8,9,10"_s} << 4
                                    << phone << u"5550199"_s;
        QTest::newRow("blanks in the list")
            << QStringList{u"Base=1"_s, u"PhFormat4=1, 2, 3"_s} << 4 << phone << u"514"_s;
        QTest::newRow("no format: all digits")
            << QStringList{u"Base=1"_s, u"F4=888"_s} << 4 << phone << u"5145550199"_s;
        QTest::newRow("empty format: all digits")
            << QStringList{u"Base=1"_s, u"PhFormat4="_s} << 4 << phone << u"5145550199"_s;
        QTest::newRow("another row's format does not apply")
            << QStringList{u"Base=1"_s, u"PhFormat7=1,2,3"_s} << 4 << phone << u"5145550199"_s;
        QTest::newRow("row 9 has its own key")
            << QStringList{u"Base=1"_s, u"PhFormat9=3,2,1"_s} << 9 << phone << u"415"_s;
        QTest::newRow("repeated position")
            << QStringList{u"Base=1"_s, u"PhFormat4=1,1,1"_s} << 4 << u"[Home] 914-555-0100"_s << u"999"_s;
        QTest::newRow("position beyond the digits")
            << QStringList{u"Base=1"_s, u"PhFormat4=12"_s} << 4 << phone << QString();
        QTest::newRow("beyond the digits among others")
            << QStringList{u"Base=1"_s, u"PhFormat4=1,12,2"_s} << 4 << phone << u"51"_s;
        QTest::newRow("no bracket") << QStringList{u"Base=1"_s} << 4 << u"(514) 555-0199 x12"_s << u"514555019912"_s;
        QTest::newRow("no digits at all") << QStringList{u"Base=1"_s} << 4 << u"[Fax] none"_s << QString();
        QTest::newRow("address-based: as shown")
            << QStringList{u"Base=0"_s, u"PhFormat4=1,2,3"_s} << 4 << phone << u"(514) 555-0199"_s;
        QTest::newRow("other type: as shown")
            << QStringList{u"Base=2"_s, u"PhFormat4=1,2,3"_s} << 4 << phone << u"(514) 555-0199"_s;
        QTest::newRow("no type: as shown") << QStringList{u"PhFormat4=1,2,3"_s} << 4 << phone << u"(514) 555-0199"_s;
        QTest::newRow("empty phone") << QStringList{u"Base=1"_s, u"PhFormat4=1,2,3"_s} << 4 << QString() << QString();
    }
    void customPhone()
    {
        QFETCH(QStringList, keys);
        QFETCH(int, row);
        QFETCH(QString, phone);
        QFETCH(QString, expected);
        QCOMPARE(Custom_Phone(phone, row, service(keys)), expected);
        QCOMPARE(m_prompter->texts(), QStringList());
    }

    void customPhoneTypeMismatch_data()
    {
        QTest::addColumn<QStringList>("keys");
        QTest::newRow("element not a number") << QStringList{u"Base=1"_s, u"PhFormat4=1,x,3"_s};
        QTest::newRow("Base not a number") << QStringList{u"Base=abc"_s, u"PhFormat4=1,2,3"_s};
    }
    void customPhoneTypeMismatch()
    {
        QFETCH(QStringList, keys);
        QCOMPARE(Custom_Phone(u"[Business] (514) 555-0199"_s, 4, service(keys)), QString());
        QCOMPARE(m_prompter->prompts().size(), 1);
        const auto& box = m_prompter->prompts().first();
        QVERIFY2(test::isErrorBox(box, u"Error 13: 'Type mismatch'"_s, u"frmMain: Function Custom_Phone"_s),
            qPrintable(box.text));
    }

    void getHomeNumber_data()
    {
        QTest::addColumn<QString>("street");
        QTest::addColumn<QString>("expected");
        QTest::newRow("letter after the number") << u"12B Main St"_s << u"12"_s;
        QTest::newRow("no number") << u"Rue Principale"_s << QString();
        QTest::newRow("second number not joined") << u"12 34 Main"_s << u"12"_s;
        QTest::newRow("zero is no number") << u"0 Main St"_s << QString();
        QTest::newRow("empty") << QString() << QString();
    }
    void getHomeNumber()
    {
        QFETCH(QString, street);
        QFETCH(QString, expected);
        QCOMPARE(Get_Home_Number(street), expected);
    }

    void removeHomeNumber_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("street");
        QTest::addColumn<QString>("expected");
        const QString plain = u"maps.example.org/find?"_s;
        const QString postal = u"http://"_s + kPostalLookupMarker + u"lang=e"_s;

        QTest::newRow("number and blank") << plain << u"12 Main Street"_s << u"Main Street"_s;
        QTest::newRow("comma left over") << plain << u"12, Main St"_s << u"Main St"_s;
        QTest::newRow("letter suffix stays") << plain << u"12B Main St"_s << u"B Main St"_s;
        QTest::newRow("every occurrence of the number") << plain << u"12 Rue du 12 Mai"_s << u"Rue du  Mai"_s;
        QTest::newRow("no number") << plain << u"Rue Principale"_s << u"Rue Principale"_s;
        QTest::newRow("leading sign skipped") << plain << u"#12 Main"_s << u"12 Main"_s;
        QTest::newRow("accented letter is no start") << plain << u", Éva Lane"_s << u"va Lane"_s;
        QTest::newRow("empty") << plain << QString() << QString();

        QTest::newRow("postal: Street") << postal << u"12 Main Street"_s << u"Main ST"_s;
        QTest::newRow("postal: rue") << postal << u"45 rue Principale"_s << u"RUE Principale"_s;
        QTest::newRow("postal: comma left over") << postal << u"7, Elm Avenue"_s << u"Elm AVE"_s;
        QTest::newRow("postal: marker in upper case") << postal.toUpper() << u"12 Main Street"_s << u"Main ST"_s;
    }
    void removeHomeNumber()
    {
        QFETCH(QString, url);
        QFETCH(QString, street);
        QFETCH(QString, expected);
        QCOMPARE(Remove_Home_Number(street, service({u"URL="_s + url})), expected);
        QCOMPARE(m_prompter->texts(), QStringList());
    }

    void removeHomeNumberWithNothingLeft_data()
    {
        QTest::addColumn<QString>("street");
        QTest::newRow("punctuation after the number") << u"12 ,."_s;
        QTest::newRow("punctuation only") << u"-- / --"_s;
    }
    void removeHomeNumberWithNothingLeft()
    {
        QFETCH(QString, street);
        QCOMPARE(Remove_Home_Number(street, service({u"URL=maps.example.org/find?"_s})), QString());
        QCOMPARE(m_prompter->prompts().size(), 1);
        const auto& box = m_prompter->prompts().first();
        QVERIFY2(test::isErrorBox(box, u"Error "_s, u"frmMain: Function Remove_Home_Number"_s), qPrintable(box.text));
    }

    void isLetter_data()
    {
        QTest::addColumn<QString>("character");
        QTest::addColumn<bool>("expected");
        QTest::newRow("64 @") << u"@"_s << false;
        QTest::newRow("65 A") << u"A"_s << true;
        QTest::newRow("90 Z") << u"Z"_s << true;
        QTest::newRow("91 [") << u"["_s << false;
        QTest::newRow("96 `") << u"`"_s << false;
        QTest::newRow("97 a") << u"a"_s << true;
        QTest::newRow("122 z") << u"z"_s << true;
        QTest::newRow("123 {") << u"{"_s << true;
        QTest::newRow("124 |") << u"|"_s << true;
        QTest::newRow("126 ~") << u"~"_s << true;
        QTest::newRow("digit") << u"7"_s << false;
        QTest::newRow("blank") << u" "_s << false;
        QTest::newRow("e acute") << u"é"_s << true;
        QTest::newRow("euro sign, 128") << u"€"_s << true;
        QTest::newRow("y diaeresis, 255") << u"ÿ"_s << true;
    }
    void isLetter()
    {
        QFETCH(QString, character);
        QFETCH(bool, expected);
        QCOMPARE(Is_Letter(character), expected);
    }

    void removeInvalidChar_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("below");
        QTest::addColumn<QString>("allowed");
        QTest::addColumn<QString>("expected");
        QTest::newRow("tabs and line breaks") << u"a\tb\r\nc\x01"_s << 32 << QString() << u"abc"_s;
        QTest::newRow("blank and above kept") << u" é~€ "_s << 32 << QString() << u" é~€ "_s;
        QTest::newRow("tab allowed") << u"a\tb\r\nc"_s << 32 << u"|9|"_s << u"a\tbc"_s;
        QTest::newRow("several allowed") << u"a\tb\r\nc"_s << 32 << u"|10|9|"_s << u"a\tb\nc"_s;
        QTest::newRow("19 is not 9") << u"a\tb"_s << 32 << u"|19|"_s << u"ab"_s;
        QTest::newRow("bars are needed") << u"a\tb"_s << 32 << u"9"_s << u"ab"_s;
        QTest::newRow("threshold itself kept") << u"@AB"_s << 65 << QString() << u"AB"_s;
        // The euro sign is 128 in the ANSI code page, far below its Unicode value.
        QTest::newRow("ANSI codes count") << u"€é"_s << 129 << QString() << u"é"_s;
        QTest::newRow("nothing below zero") << u"\ta"_s << 0 << QString() << u"\ta"_s;
    }
    void removeInvalidChar()
    {
        QFETCH(QString, text);
        QFETCH(int, below);
        QFETCH(QString, allowed);
        QFETCH(QString, expected);
        QCOMPARE(RemoveInvalidChar(text, qint16(below), allowed), expected);
    }
};

QTEST_GUILESS_MAIN(TestTextTransforms)
#include "tst_texttransforms.moc"
