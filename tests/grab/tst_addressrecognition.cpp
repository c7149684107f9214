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

void row(const char* input, const char* expected)
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

        // State capitols, one per state, in the forms pages write them in.
        row("Montgomery, AL 36130", "Montgomery|AL|36130");
        row("Juneau, Alaska 99801", "Juneau|AK|99801");
        row("Phoenix AZ 85007", "Phoenix|AZ|85007");
        row("Little Rock, AR  72201", "Little Rock|AR|72201");
        row("Sacramento, CA 95814, USA", "Sacramento|CA|95814");
        row("Denver, Colorado 80203 U.S.A.", "Denver|CO|80203");
        row("Hartford, CT 06106", "Hartford|CT|06106");
        row("Dover, Del. 19901", "Dover|DE|19901");
        row("Tallahassee, FL 32399-0001", "Tallahassee|FL|32399-0001");
        row("Atlanta, GA 30334", "Atlanta|GA|30334");
        row("Honolulu, Hawaii 96813", "Honolulu|HI|96813");
        row("Boise,\u00a0ID\u00a083702", "Boise|ID|83702");
        row("Springfield, IL 62706", "Springfield|IL|62706");
        row("indianapolis, in 46204", "indianapolis|IN|46204");
        row("Des Moines, Iowa 50319", "Des Moines|IA|50319");
        row("Topeka, KS 66612,", "Topeka|KS|66612");
        row("Frankfort, Kentucky 40601", "Frankfort|KY|40601");
        row("Baton Rouge, LA 70802", "Baton Rouge|LA|70802");
        row("Augusta, ME 04330", "Augusta|ME|04330");
        row("Annapolis, Md. 21401", "Annapolis|MD|21401");
        row("Boston, Massachusetts 02133", "Boston|MA|02133");
        row("Lansing, MI 48933", "Lansing|MI|48933");
        row("St. Paul, MN 55155", "St. Paul|MN|55155");
        row("Jackson, Mississippi 39201", "Jackson|MS|39201");
        row("Jefferson City, MO 65101", "Jefferson City|MO|65101");
        row("Helena, Montana 59601", "Helena|MT|59601");
        row("Lincoln NE 68508", "Lincoln|NE|68508");
        row("Carson City, NV 89701", "Carson City|NV|89701");
        row("Concord, New Hampshire 03301", "Concord|NH|03301");
        row("Trenton, N.J. 08608", "Trenton|NJ|08608");
        row("Santa Fe, New Mexico 87501", "Santa Fe|NM|87501");
        row("Albany, NY 12224", "Albany|NY|12224");
        row("1 E Edenton St, Raleigh, NC 27601", "Raleigh|NC|27601");
        row("Bismarck, North Dakota 58505", "Bismarck|ND|58505");
        row("Columbus, Ohio 43215", "Columbus|OH|43215");
        row("Oklahoma City, OK 73105", "Oklahoma City|OK|73105");
        row("Salem, OR 97301", "Salem|OR|97301");
        row("Harrisburg, Pennsylvania 17120", "Harrisburg|PA|17120");
        row("Providence, Rhode Island 02903", "Providence|RI|02903");
        row("Columbia, SC 29201", "Columbia|SC|29201");
        row("Pierre, South Dakota 57501", "Pierre|SD|57501");
        row("Nashville, TN 37243", "Nashville|TN|37243");
        row("AUSTIN, TEXAS 78701.", "AUSTIN|TX|78701");
        row("Salt Lake City, UT 84114", "Salt Lake City|UT|84114");
        row("Montpelier, Vermont 05633", "Montpelier|VT|05633");
        row("Richmond, VA 23219", "Richmond|VA|23219");
        row("Olympia, Washington 98504", "Olympia|WA|98504");
        row("Charleston, West Virginia 25305", "Charleston|WV|25305");
        row("Madison, WI 53703 United States", "Madison|WI|53703");
        row("Cheyenne, Wyo. 82001", "Cheyenne|WY|82001");

        // The federal district and the territories.
        row("Washington, DC 20004", "Washington|DC|20004");
        row("Washington, D.C. 20500-0003", "Washington|DC|20500-0003");
        row("Washington D. C. 20004", "Washington|DC|20004");
        row("Washington, District of Columbia 20004", "Washington|DC|20004");
        row("San Juan, PR 00901", "San Juan|PR|00901");
        row("Hagåtña, Guam 96910", "Hagåtña|GU|96910");
        row("Charlotte Amalie, U.S. Virgin Islands 00802", "Charlotte Amalie|VI|00802");
        row("Pago Pago, AS 96799", "Pago Pago|AS|96799");
        row("Saipan, MP 96950", "Saipan|MP|96950");

        // Provincial and territorial legislatures, one per province and territory.
        row("Victoria, BC V8V 1X4", "Victoria|BC|V8V 1X4");
        row("Edmonton, Alberta T5K 2B6", "Edmonton|AB|T5K 2B6");
        row("Regina SK S4S 0B3", "Regina|SK|S4S 0B3");
        row("Winnipeg, Manitoba R3C 0V8, Canada", "Winnipeg|MB|R3C 0V8");
        row("Toronto, ON M7A 1A2", "Toronto|ON|M7A 1A2");
        row("Québec (Québec) G1A 1A3", "Québec|QC|G1A 1A3");
        row("Fredericton, NB E3B 5H1", "Fredericton|NB|E3B 5H1");
        row("Halifax, Nova Scotia B3J 2Y3", "Halifax|NS|B3J 2Y3");
        row("Charlottetown, PE C1A 7N8", "Charlottetown|PE|C1A 7N8");
        row("St. John's, NL A1B 4J6", "St. John's|NL|A1B 4J6");
        row("Whitehorse, Yukon Y1A 2C6", "Whitehorse|YT|Y1A 2C6");
        row("Yellowknife, NT X1A 2L9", "Yellowknife|NT|X1A 2L9");
        row("Iqaluit, Nunavut X0A 0H0", "Iqaluit|NU|X0A 0H0");

        // The same legislatures in French, in other spellings, and in odd case and spacing.
        row("Victoria (Colombie-Britannique) V8V 1X4", "Victoria|BC|V8V 1X4");
        row("Fredericton (Nouveau-Brunswick) E3B 5H1", "Fredericton|NB|E3B 5H1");
        row("Halifax (Nouvelle-Écosse) B3J 2Y3", "Halifax|NS|B3J 2Y3");
        row("Charlottetown (Île-du-Prince-Édouard) C1A 7N8", "Charlottetown|PE|C1A 7N8");
        row("St. John's (Terre-Neuve-et-Labrador) A1B 4J6", "St. John's|NL|A1B 4J6");
        row("Yellowknife (Territoires du Nord-Ouest) X1A 2L9", "Yellowknife|NT|X1A 2L9");
        row("Charlottetown, Prince Edward Island C1A 7N8", "Charlottetown|PE|C1A 7N8");
        row("Charlottetown, Ile du Prince Edouard C1A 7N8", "Charlottetown|PE|C1A 7N8");
        row("St. John's, Newfoundland and Labrador A1B 4J6", "St. John's|NL|A1B 4J6");
        row("Yellowknife, Northwest Territories X1A2L9", "Yellowknife|NT|X1A 2L9");
        row("Quebec City, QUEBEC g1a 1a3", "Quebec City|QC|G1A 1A3");
        row("Regina, Sask. s4s0b3", "Regina|SK|S4S 0B3");
        row("Toronto ON M7A-1A2", "Toronto|ON|M7A 1A2");
        row("iqaluit nu x0a 0h0 canada", "iqaluit|NU|X0A 0H0");

        // City halls and universities.
        row("New York, NY 10007", "New York|NY|10007");
        row("New York, New York 10007", "New York|NY|10007");
        row("New York New York 10007", "New York|NY|10007");
        row("Chicago IL 60602 USA", "Chicago|IL|60602");
        row("Winston-Salem, North Carolina 27101", "Winston-Salem|NC|27101");
        row("Kansas City, MO 64106", "Kansas City|MO|64106");
        row("Cambridge, MA 02138", "Cambridge|MA|02138");
        row("Princeton, New Jersey 08544", "Princeton|NJ|08544");
        row("Toronto, ON M5H 2N2", "Toronto|ON|M5H 2N2");
        row("Ottawa, Ontario K1P1J1", "Ottawa|ON|K1P 1J1");
        row("Ottawa ON K1P 1J1 Canada", "Ottawa|ON|K1P 1J1");
        row("Ottawa, Ontario, Canada K1P 1J1", "Ottawa|ON|K1P 1J1");
        row("Montréal (Québec) H2Y 1C6", "Montréal|QC|H2Y 1C6");
        row("Vancouver, B.C. V5Y 1V4", "Vancouver|BC|V5Y 1V4");

        // What a selection drags along: spaces, punctuation, line breaks, other dashes.
        row("  Springfield ,   IL    62706  ", "Springfield|IL|62706");
        row("Springfield,\tIL\t62706\r\n", "Springfield|IL|62706");
        row("Salt  Lake   City, UT 84114", "Salt Lake City|UT|84114");
        row("Tallahassee FL 32399 0001", "Tallahassee|FL|32399-0001");
        row("Tallahassee, FL 32399\u20130001", "Tallahassee|FL|32399-0001");
        row("Springfield, IL, 62706", "Springfield|IL|62706");

        // A zip or a state on its own.
        row("IL 62706", "-|IL|62706");
        row("Florida 32399-0001", "-|FL|32399-0001");
        row("62706", "-|-|62706");
        row("32399-0001", "-|-|32399-0001");
        row("k1p 1j1", "-|-|K1P 1J1");
        row("Canada K1A 0A6", "-|-|K1A 0A6");
        row("Illinois", "-|IL|-");
        row("il", "-|IL|-");
        row("Québec", "-|QC|-");
        row("New York", "-|NY|-");
        row("Springfield, Illinois", "Springfield|IL|-");
        row("Springfield, Ill.", "Springfield|IL|-");
        row("Springfield, IL, USA", "Springfield|IL|-");
        row("Washington, D.C.", "Washington|DC|-");
        row("Montréal (Québec)", "Montréal|QC|-");

        // A Canadian code with a US state is reported as it stands; the user decides.
        row("Niagara Falls, ON 14303", "Niagara Falls|ON|14303");

        // Lines of another shape.
        row("", "-|-|-");
        row("   \t ", "-|-|-");
        row("123 Main Street", "-|-|-");
        row("(555) 123-4567", "-|-|-");
        row("Phone: 555-1234", "-|-|-");
        row("Hello world", "-|-|-");
        row("jane.doe@example.com", "-|-|-");
        row("Suite 100", "-|-|-");
        row("Springfield IL", "-|-|-");
        row("100 Main St IN", "-|-|-");
        row("Kansas City Missouri", "-|-|-");
        row("Springfield, Ill", "-|-|-");
        row("Seattle, Wash", "-|-|-");
        row("PO Box 62706", "-|-|-");
        row("Paris 75001", "-|-|-");
        row("62706 0001", "-|-|-");
        row("Toronto, ON D1F 2G3", "-|-|-");
        row("Ottawa, ON K1P 1U1", "-|-|-");
        row("Springfield, IL 627061", "-|-|-");
        row("Springfield, IL62706", "-|-|-");
        row("Toronto, ONM5H 2N2", "-|-|-");
        row("Canada", "-|-|-");
        row("401 S 2nd St\nSpringfield, IL 62706", "-|-|-");
    }
    void recogniseCityStateZip()
    {
        QFETCH(QString, line);
        QFETCH(QString, expected);
        QCOMPARE(encoded(RecogniseCityStateZip(line)), expected);
    }

    void isMultiLine_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("multiLine");
        QTest::newRow("empty") << "" << false;
        QTest::newRow("one line") << "Springfield, IL 62706" << false;
        QTest::newRow("line then CR LF") << "Springfield\r\n" << false;
        QTest::newRow("line then several LF") << "Springfield\n\n\n" << false;
        QTest::newRow("blank lines around one line") << "\n  \t\r\nSpringfield\n \t \r" << false;
        QTest::newRow("CR LF") << "401 S 2nd St\r\nSpringfield" << true;
        QTest::newRow("LF") << "401 S 2nd St\nSpringfield" << true;
        QTest::newRow("CR") << "401 S 2nd St\rSpringfield" << true;
        QTest::newRow("blank line between") << "401 S 2nd St\n \t\nSpringfield" << true;
        QTest::newRow("indented second line") << "401 S 2nd St\n\tSpringfield" << true;
    }
    void isMultiLine()
    {
        QFETCH(QString, text);
        QFETCH(bool, multiLine);
        QCOMPARE(corvalent::isMultiLine(text), multiLine);
    }
};

QTEST_GUILESS_MAIN(TestAddressRecognition)
#include "tst_addressrecognition.moc"
