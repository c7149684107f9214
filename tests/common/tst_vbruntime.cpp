#include "common/VbRuntime.h"
#include "common/Windows1252.h"

#include <QTest>

using namespace corvalent;

namespace {

// A conversion by its name, its answer written as text: numbers to 15 digits, True/False, or the error's number.
QString convert(const QString& function, const QString& text)
{
    if (function == u"Val")
        return QString::number(Val(text), 'g', 15);
    if (function == u"IsNumeric")
        return IsNumeric(text) ? QStringLiteral("True") : QStringLiteral("False");
    if (function == u"Trim")
        return Trim(text);
    try {
        return QString::number(CInt(text));
    } catch (const Error& e) {
        return QStringLiteral("Error %1").arg(e.number());
    }
}

} // namespace

class TestVbRuntime : public QObject {
    Q_OBJECT

private slots:
    void conversions_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        // Each tag names the function before its colon.
        QTest::newRow("Val: stops at a letter") << "12B Main St" << "12";
        QTest::newRow("Val: blanks are skipped inside") << "1 2 3" << "123";
        QTest::newRow("Val: leading plus sign") << "+12+Main" << "12";
        QTest::newRow("Val: negative") << " -5 Main" << "-5";
        QTest::newRow("Val: second point stops") << "1.2.3" << "1.2";
        QTest::newRow("Val: exponent") << "1e3 Main" << "1000";
        QTest::newRow("Val: exponent without digits") << "12E Main" << "12";
        QTest::newRow("Val: hexadecimal") << "&HFF" << "255";
        QTest::newRow("Val: sign only") << "-" << "0";
        QTest::newRow("IsNumeric: blanks around") << "  42  " << "True";
        QTest::newRow("IsNumeric: trailing point") << "5." << "True";
        QTest::newRow("IsNumeric: scientific") << "1.5E+3" << "True";
        QTest::newRow("IsNumeric: empty") << "" << "False";
        QTest::newRow("IsNumeric: point only") << "." << "False";
        QTest::newRow("IsNumeric: exponent without digits") << "1E" << "False";
        QTest::newRow("IsNumeric: two points") << "1.2.3" << "False";
        QTest::newRow("CInt: half to even down") << "2.5" << "2";
        QTest::newRow("CInt: half to even up") << "3.5" << "4";
        QTest::newRow("CInt: largest") << "32767" << "32767";
        QTest::newRow("CInt: overflow") << "32768" << "Error 6";
        QTest::newRow("CInt: not a number") << "x" << "Error 13";
        QTest::newRow("Trim: spaces go, tabs stay") << "  \ta b\t  " << "\ta b\t";
    }
    void conversions()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(convert(QString::fromLatin1(QTest::currentDataTag()).section(u':', 0, 0), text), expected);
    }

    // Every byte survives a round trip, the five the code page leaves undefined included; a character it cannot
    // hold becomes "?" and is reported.
    void windows1252()
    {
        QByteArray all;
        for (int b = 0; b < 256; ++b)
            all.append(char(b));
        bool lossless = false;
        QCOMPARE(Windows1252::encode(Windows1252::decode(all), &lossless), all);
        QVERIFY(lossless);
        QCOMPARE(Windows1252::encode(QStringLiteral("a\u0151b"), &lossless), QByteArray("a?b"));
        QVERIFY(!lossless);
        QVERIFY(!Windows1252::canEncode(QStringLiteral("\u4E2D")));
        QVERIFY(Windows1252::canEncode(QStringLiteral("Montréal €")));
    }
};

QTEST_GUILESS_MAIN(TestVbRuntime)
#include "tst_vbruntime.moc"
