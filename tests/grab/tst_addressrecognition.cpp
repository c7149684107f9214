#include "grab/AddressRecognition.h"

#include <QTest>

using namespace corvalent;

namespace {

// A result written "City|ST|ZIP", with "-" for a part that was not found, so one column holds all three and an
// empty part found by mistake ("") shows apart from a part not found ("-").
QString encoded(const CityStateZip& found)
{
    const QString none = QStringLiteral("-");
    return found.city.value_or(none) + u'|' + found.state.value_or(none) + u'|' + found.zip.value_or(none);
}

// Rows are named after their input, with invisible characters spelled out, so a failure names the line.
QByteArray rowName(const QString& input)
{
    if (input.isEmpty())
        return "(empty)";
    QString name = input;
    name.replace(u'\r', QLatin1String("\\r"))
        .replace(u'\n', QLatin1String("\\n"))
        .replace(u'\t', QLatin1String("\\t"))
        .replace(QChar(0x00a0), QLatin1String("<nbsp>"));
    return name.toUtf8();
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

        // One row per form pages write a US address in (a row per state would only restate the product's table):
        // postal codes, full names, abbreviations with periods, no comma, ZIP+4, any case, trailing countries and
        // punctuation, and what a selection drags along (no-break spaces, tabs, runs of spaces, line ends).
        row("Montgomery, AL 36130", "Montgomery|AL|36130"); row("Juneau, Alaska 99801", "Juneau|AK|99801");
        row("Phoenix AZ 85007", "Phoenix|AZ|85007"); row("Sacramento, CA 95814, USA", "Sacramento|CA|95814");
        row("Denver, Colorado 80203 U.S.A.", "Denver|CO|80203"); row("Dover, Del. 19901", "Dover|DE|19901");
        row("Tallahassee FL 32399 0001", "Tallahassee|FL|32399-0001");
        row("Boise,\u00a0ID\u00a083702", "Boise|ID|83702");
        row("Springfield,\tIL\t62706\r\n", "Springfield|IL|62706");
        row("indianapolis, in 46204", "indianapolis|IN|46204"); row("Topeka, KS 66612,", "Topeka|KS|66612");
        row("St. Paul, MN 55155", "St. Paul|MN|55155"); row("Helena, Mont. 59601", "Helena|MT|59601");
        row("Santa Fe, New Mexico 87501", "Santa Fe|NM|87501"); row("New York New York 10007", "New York|NY|10007");
        row("1 E Edenton St, Raleigh, NC 27601", "Raleigh|NC|27601");
        row("Oklahoma City, OK 73105", "Oklahoma City|OK|73105"); row("Salem, OR 97301", "Salem|OR|97301");
        row("AUSTIN, TEXAS 78701.", "AUSTIN|TX|78701"); row("Salt  Lake   City , UT 84114", "Salt Lake City|UT|84114");
        row("Charleston West Virginia 25305", "Charleston|WV|25305"); // the longest name wins over "Virginia"
        row("Madison, WI 53703 United States", "Madison|WI|53703");
        row("Washington, D.C. 20500-0003", "Washington|DC|20500-0003");
        row("San Juan, Puerto Rico 00901", "San Juan|PR|00901"); row("Hagåtña, GU 96910", "Hagåtña|GU|96910");

        // Provincial and territorial legislatures, one per province and territory, in English and in French (with
        // and without accents), and with postal codes in any case and with a space, a hyphen or nothing inside.
        row("Victoria (Colombie Britannique) V8V 1X4", "Victoria|BC|V8V 1X4");
        row("Edmonton, Alberta T5K 2B6", "Edmonton|AB|T5K 2B6"); row("Regina, Sask. s4s0b3", "Regina|SK|S4S 0B3");
        row("Winnipeg, Manitoba R3C 0V8, Canada", "Winnipeg|MB|R3C 0V8");
        row("Toronto, Ontario, Canada M7A-1A2", "Toronto|ON|M7A 1A2");
        row("Québec (Québec) G1A 1A3", "Québec|QC|G1A 1A3");
        row("Fredericton (Nouveau-Brunswick) E3B 5H1", "Fredericton|NB|E3B 5H1");
        row("Halifax (Nouvelle-Écosse) B3J 2Y3", "Halifax|NS|B3J 2Y3");
        row("Charlottetown, Ile du Prince Edouard C1A 7N8", "Charlottetown|PE|C1A 7N8");
        row("St. John's, Newfoundland and Labrador A1B 4J6", "St. John's|NL|A1B 4J6");
        row("Whitehorse, YT Y1A 2C6", "Whitehorse|YT|Y1A 2C6");
        row("Yellowknife, Northwest Territories X1A2L9", "Yellowknife|NT|X1A 2L9");
        row("iqaluit nu x0a 0h0 canada", "iqaluit|NU|X0A 0H0");

        // A Canadian province with a US zip is reported as it stands; the user decides.
        row("Niagara Falls, ON 14303", "Niagara Falls|ON|14303");

        // A zip or a state on its own, and a state without a zip only when a comma or parentheses set it off.
        row("62706", "-|-|62706"); row("k1p 1j1", "-|-|K1P 1J1");
        row("Florida 32399-0001", "-|FL|32399-0001"); row("il", "-|IL|-");
        row("Springfield, Ill.", "Springfield|IL|-"); row("Washington, D.C.", "Washington|DC|-");
        row("Montréal (Québec)", "Montréal|QC|-");

        // Lines of another shape.
        row(""); row("100 Main St IN"); row("(555) 123-4567"); row("Phone: 555-1234");
        row("Hello world"); row("jane.doe@example.com"); row("Suite 100");
        row("PO Box 62706"); row("62706 0001"); row("Springfield, IL62706");
        row("Springfield IL"); row("Springfield, Ill"); row("Toronto, ON D1F 2G3");
        row("401 S 2nd St\nSpringfield, IL 62706");
    }
    void recogniseCityStateZip()
    {
        QFETCH(QString, line);
        QTEST(encoded(RecogniseCityStateZip(line)), "expected");
    }

    void isMultiLine_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("multiLine");
        QTest::newRow("one line") << "Springfield, IL 62706" << false;
        QTest::newRow("line then CR LF and LF") << "Springfield\r\n\n" << false;
        QTest::newRow("blank lines around one line") << "\n  \t\r\nSpringfield\n \t \r" << false;
        QTest::newRow("LF") << "401 S 2nd St\nSpringfield" << true;
        QTest::newRow("CR") << "401 S 2nd St\rSpringfield" << true;
        QTest::newRow("indented second line after a blank one") << "401 S 2nd St\n \t\n\tSpringfield" << true;
    }
    void isMultiLine()
    {
        QFETCH(QString, text);
        QTEST(corvalent::isMultiLine(text), "multiLine");
    }
};

QTEST_GUILESS_MAIN(TestAddressRecognition)
#include "tst_addressrecognition.moc"
