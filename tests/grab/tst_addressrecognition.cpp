#include "grab/AddressRecognition.h"

#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

// A result written "City|ST|ZIP", with "-" for a part that was not found, so one column holds all three and an
// empty part found by mistake ("") shows apart from a part not found ("-").
QString encoded(const CityStateZip& found)
{
    const QString none = QStringLiteral("-");
    return found.city.value_or(none) + u'|' + found.state.value_or(none) + u'|' + found.zip.value_or(none);
}

// Rows are named after their input, with invisible characters spelled out, so a failure names the line.
QByteArray rowName(QString input)
{
    input.replace(u'\r', "\\r"_L1).replace(u'\n', "\\n"_L1).replace(u'\t', "\\t"_L1);
    input.replace(QChar(0x00a0), "<nbsp>"_L1);
    return input.isEmpty() ? "(empty)" : input.toUtf8();
}

void row(const char* input, const char* expected = "-|-|-")
{
    const QString text = QString::fromUtf8(input);
    QTest::addRow("%s", rowName(text).constData()) << text << QString::fromUtf8(expected);
}

} // namespace

class TestAddressRecognition : public QObject {
    Q_OBJECT

private slots:
    void recogniseCityStateZip_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("expected");

        // One row per way pages write a line: codes and names (with and without periods, accents, hyphens, any
        // case), ZIP+4, countries before or after the code, trailing punctuation, and what a selection drags along.
        row("Sacramento, CA 95814, USA", "Sacramento|CA|95814");
        row("Tallahassee FL 32399 0001", "Tallahassee|FL|32399-0001");
        row("Boise,\u00a0ID\t83702\r\n", "Boise|ID|83702");
        row("New York New York 10007", "New York|NY|10007");
        row("1 E Edenton St, Raleigh, NC 27601", "Raleigh|NC|27601");
        row("AUSTIN, TEXAS 78701.", "AUSTIN|TX|78701");
        row("Charleston West Virginia 25305", "Charleston|WV|25305"); // the longest name wins over "Virginia"
        row("Washington, D.C. 20500-0003", "Washington|DC|20500-0003");
        row("Victoria (Colombie Britannique) V8V 1X4", "Victoria|BC|V8V 1X4");
        row("Regina, Sask. s4s0b3", "Regina|SK|S4S 0B3");
        row("Toronto, Ontario, Canada M7A-1A2", "Toronto|ON|M7A 1A2");
        // A Canadian province with a US zip is reported as it stands; the user decides.
        row("Niagara Falls, ON 14303", "Niagara Falls|ON|14303");

        // A zip or a state on its own, and a state without a zip only when a comma or parentheses set it off.
        row("62706", "-|-|62706"); row("k1p 1j1", "-|-|K1P 1J1");
        row("Florida 32399-0001", "-|FL|32399-0001"); row("il", "-|IL|-");
        row("Springfield, Ill.", "Springfield|IL|-"); row("Montréal (Québec)", "Montréal|QC|-");

        // Lines of another shape.
        row(""); row("100 Main St IN"); row("PO Box 62706"); row("62706 0001");
        row("Springfield, IL62706"); row("Springfield IL"); row("Springfield, Ill"); row("Toronto, ON D1F 2G3");

        // Several lines are no address line; blank ones around one line do not make it several.
        row("401 S 2nd St\n \t\n\tSpringfield, IL 62706"); row("401 S 2nd St\rSpringfield, IL 62706");
        row("\n \t\r\nSpringfield, IL 62706\n \t \r", "Springfield|IL|62706");
    }
    void recogniseCityStateZip()
    {
        QFETCH(QString, line);
        QTEST(encoded(RecogniseCityStateZip(line)), "expected");
    }
};

QTEST_GUILESS_MAIN(TestAddressRecognition)
#include "tst_addressrecognition.moc"
