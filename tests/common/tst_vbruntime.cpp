#include "common/VbRuntime.h"
#include "common/Windows1252.h"

#include <QTest>

using namespace corvalent;

class TestVbRuntime : public QObject {
    Q_OBJECT

private slots:
    void val_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("value");
        QTest::newRow("plain") << "12" << 12.0;
        QTest::newRow("stops at a letter") << "12B Main St" << 12.0;
        QTest::newRow("blanks are skipped inside") << "1 2 3" << 123.0;
        QTest::newRow("plus stops after the number") << "12+34" << 12.0;
        QTest::newRow("leading plus sign") << "+12+Main" << 12.0;
        QTest::newRow("negative") << " -5 Main" << -5.0;
        QTest::newRow("decimal") << "3.25 m" << 3.25;
        QTest::newRow("second point stops") << "1.2.3" << 1.2;
        QTest::newRow("exponent") << "1e3 Main" << 1000.0;
        QTest::newRow("exponent without digits") << "12E Main" << 12.0;
        QTest::newRow("hexadecimal") << "&HFF" << 255.0;
        QTest::newRow("no number") << "Rue Principale" << 0.0;
        QTest::newRow("sign only") << "-" << 0.0;
    }
    void val()
    {
        QFETCH(QString, text);
        QFETCH(double, value);
        QCOMPARE(Val(text), value);
    }

    void isNumeric_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("numeric");
        QTest::newRow("integer") << "1" << true;
        QTest::newRow("blanks around") << "  42  " << true;
        QTest::newRow("decimal") << "3.5" << true;
        QTest::newRow("trailing point") << "5." << true;
        QTest::newRow("scientific") << "1.5E+3" << true;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("point only") << "." << false;
        QTest::newRow("True is not a number") << "True" << false;
        QTest::newRow("exponent without digits") << "1E" << false;
        QTest::newRow("trailing letters") << "12a" << false;
        QTest::newRow("two points") << "1.2.3" << false;
    }
    void isNumeric()
    {
        QFETCH(QString, text);
        QFETCH(bool, numeric);
        QCOMPARE(IsNumeric(text), numeric);
    }

    void integerConversions_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("value");
        QTest::addColumn<int>("error");
        QTest::newRow("plain") << "7" << 7 << 0;
        QTest::newRow("half to even down") << "2.5" << 2 << 0;
        QTest::newRow("half to even up") << "3.5" << 4 << 0;
        QTest::newRow("largest") << "32767" << 32767 << 0;
        QTest::newRow("overflow") << "32768" << 0 << int(ErrorNumber::Overflow);
        QTest::newRow("not a number") << "x" << 0 << int(ErrorNumber::TypeMismatch);
        QTest::newRow("empty") << "" << 0 << int(ErrorNumber::TypeMismatch);
    }
    void integerConversions()
    {
        QFETCH(QString, text);
        QFETCH(int, value);
        QFETCH(int, error);
        try {
            const int converted = CInt(text);
            QCOMPARE(error, 0);
            QCOMPARE(converted, value);
        } catch (const Error& e) {
            QCOMPARE(e.number(), error);
        }
    }

    void trimRemovesSpacesOnly()
    {
        QCOMPARE(Trim(QStringLiteral("  a b  ")), QStringLiteral("a b"));
        QCOMPARE(Trim(QStringLiteral("\ta\t")), QStringLiteral("\ta\t"));
    }

    void windows1252RoundTripsEveryByte()
    {
        QByteArray all;
        for (int b = 0; b < 256; ++b)
            all.append(char(b));
        const QString text = Windows1252::decode(all);
        QCOMPARE(text.size(), 256);
        bool lossless = false;
        QCOMPARE(Windows1252::encode(text, &lossless), all);
        QVERIFY(lossless);
    }

    void windows1252Codes_data()
    {
        QTest::addColumn<QString>("character");
        QTest::addColumn<int>("code");
        QTest::newRow("ascii") << "A" << 65;
        QTest::newRow("e acute") << "é" << 233;
        QTest::newRow("euro") << "€" << 128;
        QTest::newRow("left double quote") << "\u201C" << 147;
        QTest::newRow("not in the code page") << "\u0151" << 63;
    }
    void windows1252Codes()
    {
        QFETCH(QString, character);
        QFETCH(int, code);
        QCOMPARE(Windows1252::code(character.front()), code);
        if (code != 63)
            QCOMPARE(QString(Windows1252::character(code)), character);
    }

    void windows1252ReportsLoss()
    {
        bool lossless = true;
        QCOMPARE(Windows1252::encode(QStringLiteral("a\u0151b"), &lossless), QByteArray("a?b"));
        QVERIFY(!lossless);
        QVERIFY(!Windows1252::canEncode(QStringLiteral("\u4E2D")));
        QVERIFY(Windows1252::canEncode(QStringLiteral("Montréal €")));
    }
};

QTEST_GUILESS_MAIN(TestVbRuntime)
#include "tst_vbruntime.moc"
