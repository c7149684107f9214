#include "common/VbRuntime.h"
#include "common/Windows1252.h"

#include <QTest>

using namespace corvalent;

// A conversion of a text, its answer written as text: numbers to 15 digits, True/False, or the error's number.
using Conversion = QString (*)(const QString&);
Q_DECLARE_METATYPE(Conversion)

namespace {

QString val(const QString& text)
{
    return QString::number(Val(text), 'g', 15);
}

QString isNumeric(const QString& text)
{
    return IsNumeric(text) ? QStringLiteral("True") : QStringLiteral("False");
}

QString cInt(const QString& text)
{
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
        QTest::addColumn<Conversion>("conversion");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* tag, Conversion f, const QString& text, const char* expected) {
            QTest::newRow(tag) << f << text << QString::fromLatin1(expected);
        };
        row("Val: stops at a letter", val, "12B Main St", "12");
        row("Val: blanks are skipped inside", val, "1 2 3", "123");
        row("Val: leading plus sign", val, "+12+Main", "12");
        row("Val: negative", val, " -5 Main", "-5");
        row("Val: second point stops", val, "1.2.3", "1.2");
        row("Val: exponent", val, "1e3 Main", "1000");
        row("Val: exponent without digits", val, "12E Main", "12");
        row("Val: hexadecimal", val, "&HFF", "255");
        row("Val: sign only", val, "-", "0");
        row("IsNumeric: blanks around", isNumeric, "  42  ", "True");
        row("IsNumeric: trailing point", isNumeric, "5.", "True");
        row("IsNumeric: scientific", isNumeric, "1.5E+3", "True");
        row("IsNumeric: empty", isNumeric, "", "False");
        row("IsNumeric: point only", isNumeric, ".", "False");
        row("IsNumeric: exponent without digits", isNumeric, "1E", "False");
        row("IsNumeric: two points", isNumeric, "1.2.3", "False");
        row("CInt: half to even down", cInt, "2.5", "2");
        row("CInt: half to even up", cInt, "3.5", "4");
        row("CInt: largest", cInt, "32767", "32767");
        row("CInt: overflow", cInt, "32768", "Error 6");
        row("CInt: not a number", cInt, "x", "Error 13");
        row("Trim: spaces go, tabs stay", Trim, "  \ta b\t  ", "\ta b\t");
    }
    void conversions()
    {
        QFETCH(Conversion, conversion);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(conversion(text), expected);
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
