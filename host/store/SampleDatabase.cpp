#include "common/Error.h"
#include "store/ContactInserter.h"
#include "store/ContactSchema.h"
#include "store/ContactStore.h"
#include "store/SqliteConnection.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <utility>

namespace corvalent::host {

namespace {

enum Field : int {
    Company = 25, Contact = 26, Address1 = 27, Address2 = 28, Address3 = 29, City = 30, State = 31, Zip = 32,
    Country = 33, Title = 34, Phone = 35, Fax = 36, HomePhone = 37, Mobile = 38, Email = 40, Web = 41,
    HomeAddress1 = 65, HomeAddress2 = 66, HomeCity = 67, HomeState = 68, HomeZip = 69, HomeCountry = 70,
    User1 = 80, User2 = 81, User3 = 82, Status = 83,
};

using SampleContact = std::initializer_list<std::pair<Field, const char*>>;

// Made-up people and businesses; phone numbers are in ranges kept for fiction, addresses in the reserved
// ".example" domain. The first one is My Record.
const std::initializer_list<SampleContact> kSampleContacts = {
    {{Company, "Corvalent Démo"}, {Contact, "Hélène Tremblay"}, {Title, "Owner"},
     {Address1, "1234 rue Sainte-Catherine Ouest"}, {Address2, "Bureau 500"}, {City, "Montréal"}, {State, "QC"},
     {Zip, "H3G 1P1"}, {Country, "Canada"}, {Phone, "+1 (514) 555-0199"}, {Fax, "+1 (514) 555-0198"},
     {Mobile, "+1 (514) 555-0142"}, {Email, "helene.tremblay@corvalent.example"}, {Web, "www.corvalent.example"},
     {HomeAddress1, "4820 chemin de la Côte-des-Neiges"}, {HomeAddress2, "App. 12"}, {HomeCity, "Montréal"},
     {HomeState, "QC"}, {HomeZip, "H3V 1G5"}, {HomeCountry, "Canada"}, {HomePhone, "+1 (514) 555-0177"},
     {Status, "Personal"}},
    {{Company, "Boulangerie Saint-Denis"}, {Contact, "Jean-François Côté"}, {Title, "Owner"},
     {Address1, "3901 rue Saint-Denis"}, {City, "Montréal"}, {State, "QC"}, {Zip, "H2W 2M4"}, {Country, "Canada"},
     {Phone, "+1 (514) 555-0123"}, {Fax, "+1 (514) 555-0124"}, {Email, "jf.cote@boulangerie.example"},
     {Status, "Customer"}, {User1, "Livraison le mardi"}},
    {{Company, "Éditions du Plateau"}, {Contact, "Marie-Ève Gagnon"}, {Title, "Director"},
     {Address1, "455 boulevard René-Lévesque Est"}, {Address2, "3e étage"}, {City, "Montréal"}, {State, "QC"},
     {Zip, "H2L 4Y2"}, {Country, "Canada"}, {Phone, "+1 (514) 555-0147"}, {Mobile, "+1 (438) 555-0161"},
     {Email, "me.gagnon@editions-plateau.example"}, {Web, "www.editions-plateau.example"},
     {HomeAddress1, "77 avenue Laurier Ouest"}, {HomeCity, "Montréal"}, {HomeState, "QC"}, {HomeZip, "H2T 2N5"},
     {HomeCountry, "Canada"}, {HomePhone, "+1 (514) 555-0175"}, {Status, "Customer"}},
    {{Company, "Café Côte-des-Neiges"}, {Contact, "Stéphane Bélanger"}, {Title, "Manager"},
     {Address1, "5145 chemin de la Côte-des-Neiges"}, {City, "Montréal"}, {State, "QC"}, {Zip, "H3T 1X8"},
     {Country, "Canada"}, {Phone, "+1 (514) 555-0110"}, {Status, "Prospect"}},
    {{Company, "Québec Électrique Ltée"}, {Contact, "Geneviève Lévesque"}, {Title, "President"},
     {Address1, "880 boulevard Charest Est"}, {City, "Québec"}, {State, "QC"}, {Zip, "G1K 3J6"},
     {Country, "Canada"}, {Phone, "+1 (418) 555-0133"}, {Fax, "+1 (418) 555-0134"},
     {Mobile, "+1 (418) 555-0190"}, {Email, "glevesque@quebec-electrique.example"}, {Status, "Supplier"}},
    {{Company, "Ferme Beaulieu"}, {Contact, "Réjean Beaulieu"}, {Title, "Owner"},
     {Address1, "2150 rang Saint-Joseph"}, {City, "Saint-Hyacinthe"}, {State, "QC"}, {Zip, "J2S 7B6"},
     {Country, "Canada"}, {Phone, "+1 (450) 555-0188"}, {Status, "Supplier"}, {User2, "Bio"}},
    {{Company, "Librairie Sainte-Foy"}, {Contact, "Chloé Pelletier"}, {Title, "Sales"},
     {Address1, "2600 boulevard Laurier"}, {City, "Québec"}, {State, "QC"}, {Zip, "G1V 4T3"},
     {Country, "Canada"}, {Mobile, "+1 (581) 555-0102"}, {Email, "chloe@librairie-ste-foy.example"}},
    {{Company, "Laval Auto Pièces"}, {Contact, "François Gauthier"}, {Title, "Manager"},
     {Address1, "3035 boulevard Le Carrefour"}, {City, "Laval"}, {State, "QC"}, {Zip, "H7T 1C8"},
     {Country, "Canada"}, {Phone, "+1 (450) 555-0155"}, {Fax, "+1 (450) 555-0156"}, {Status, "Customer"}},
    {{Company, "Sherbrooke Design"}, {Contact, "Anaïs Roy"}, {Title, "Director"},
     {Address1, "100 rue King Ouest"}, {City, "Sherbrooke"}, {State, "QC"}, {Zip, "J1H 1P1"}, {Country, "Canada"},
     {Phone, "+1 (819) 555-0117"}, {Web, "www.sherbrooke-design.example"}},
    {{Company, "Gatineau Conseil"}, {Contact, "Émile Fortin"}, {Address1, "25 rue Laurier"}, {City, "Gatineau"},
     {State, "QC"}, {Zip, "J8X 3Y3"}, {Country, "Canada"}, {Phone, "+1 (819) 555-0166"},
     {HomeAddress1, "9 rue Champlain"}, {HomeCity, "Gatineau"}, {HomeState, "QC"}, {HomeZip, "J8X 2Z1"},
     {HomeCountry, "Canada"}, {HomePhone, "+1 (819) 555-0168"}},
    {{Company, "Rideau Canal Outfitters"}, {Contact, "Sarah O'Connor"}, {Title, "Owner"},
     {Address1, "88 Sparks St"}, {City, "Ottawa"}, {State, "ON"}, {Zip, "K1P 5B7"}, {Country, "Canada"},
     {Phone, "+1 (613) 555-0130"}, {Mobile, "+1 (613) 555-0131"}, {Status, "Customer"}},
    {{Company, "Pacific Cedar Works"}, {Contact, "David Chen"}, {Title, "President"},
     {Address1, "1088 Burrard St"}, {Address2, "Suite 2100"}, {City, "Vancouver"}, {State, "BC"},
     {Zip, "V6Z 2R9"}, {Country, "Canada"}, {Phone, "+1 (604) 555-0183"}, {Fax, "+1 (604) 555-0184"},
     {Email, "dchen@pacificcedar.example"}, {Status, "Prospect"}},
    {{Company, "Prairie Energy"}, {Contact, "Amanda Brooks"}, {Title, "Director"}, {Address1, "500 4 Ave SW"},
     {City, "Calgary"}, {State, "AB"}, {Zip, "T2P 2V6"}, {Country, "Canada"}, {Phone, "+1 (403) 555-0121"}},
    {{Company, "Harbourfront Books"}, {Contact, "Priya Patel"}, {Title, "Owner"}, {Address1, "250 Yonge Street"},
     {City, "Toronto"}, {State, "ON"}, {Zip, "M5B 2L7"}, {Country, "Canada"}, {Phone, "+1 (416) 555-0144"},
     {HomeAddress1, "18 Maple Ave"}, {HomeCity, "Toronto"}, {HomeState, "ON"}, {HomeZip, "M4W 2T7"},
     {HomeCountry, "Canada"}, {HomePhone, "+1 (416) 555-0145"}, {Mobile, "+1 (647) 555-0146"},
     {Status, "Customer"}},
    {{Company, "Bluenose Marine"}, {Contact, "Liam MacDonald"}, {Title, "Sales"},
     {Address1, "1505 Barrington St"}, {City, "Halifax"}, {State, "NS"}, {Zip, "B3J 3K5"}, {Country, "Canada"},
     {Phone, "+1 (902) 555-0158"}},
    {{Company, "Acme Hardware"}, {Contact, "John Smith"}, {Title, "Manager"}, {Address1, "742 Evergreen Terrace"},
     {City, "Springfield"}, {State, "IL"}, {Zip, "62704"}, {Country, "United States"},
     {Phone, "+1 (217) 555-0100"}, {Fax, "+1 (217) 555-0101"}, {Email, "john.smith@acme-hardware.example"},
     {Status, "Customer"}},
    {{Company, "Brooklyn Bagels"}, {Contact, "Rachel Goldberg"}, {Title, "Owner"}, {Address1, "88 Court Street"},
     {City, "Brooklyn"}, {State, "NY"}, {Zip, "11201"}, {Country, "United States"},
     {Phone, "+1 (718) 555-0114"}, {Mobile, "+1 (917) 555-0115"}},
    {{Company, "Lakeview Dental"}, {Contact, "Michael Johnson"}, {Address1, "1500 N Lake Shore Dr"},
     {Address2, "Suite 4B"}, {City, "Chicago"}, {State, "IL"}, {Zip, "60610"}, {Country, "United States"},
     {Phone, "+1 (312) 555-0127"}, {Status, "Prospect"}},
    {{Company, "Green Mountain Maple"}, {Contact, "Emily Carter"}, {Title, "President"},
     {Address1, "12B Main St"}, {City, "Burlington"}, {State, "VT"}, {Zip, "05401"},
     {Country, "United States"}, {Phone, "+1 (802) 555-0136"}, {Email, "emily@greenmountainmaple.example"},
     {Web, "www.greenmountainmaple.example"}, {Status, "Supplier"}},
    {{Company, "Sunset Surf Shop"}, {Contact, "Carlos Ramirez"}, {Title, "Owner"},
     {Address1, "2100 Ocean Front Walk"}, {City, "Venice"}, {State, "CA"}, {Zip, "90291"},
     {Country, "United States"}, {Phone, "+1 (310) 555-0119"}, {Mobile, "+1 (310) 555-0120"}},
    {{Company, "Rainier Coffee"}, {Contact, "Jessica Nguyen"}, {Title, "Manager"}, {Address1, "1912 Pike Pl"},
     {City, "Seattle"}, {State, "WA"}, {Zip, "98101"}, {Country, "United States"},
     {Phone, "+1 (206) 555-0151"}, {Status, "Customer"}},
    {{Company, "Lone Star BBQ"}, {Contact, "Robert Williams"}, {Title, "Owner"},
     {Address1, "4100 S Congress Ave"}, {City, "Austin"}, {State, "TX"}, {Zip, "78745"},
     {Country, "United States"}, {Phone, "+1 (512) 555-0162"}, {Fax, "+1 (512) 555-0163"}},
    {{Company, "Boston Harbor Tours"}, {Contact, "Patrick O'Brien"}, {Title, "Sales"}, {Address1, "1 Long Wharf"},
     {City, "Boston"}, {State, "MA"}, {Zip, "02110"}, {Country, "United States"},
     {Phone, "+1 (617) 555-0170"}, {HomeAddress1, "34 Beacon St"}, {HomeCity, "Boston"}, {HomeState, "MA"},
     {HomeZip, "02108"}, {HomeCountry, "United States"}, {HomePhone, "+1 (617) 555-0171"}},
    {{Company, "Miami Citrus Co."}, {Contact, "Isabella Garcia"}, {Title, "Director"},
     {Address1, "801 Brickell Ave"}, {City, "Miami"}, {State, "FL"}, {Zip, "33131"},
     {Country, "United States"}, {Phone, "+1 (305) 555-0181"}, {Email, "igarcia@miamicitrus.example"}},
    {{Contact, "Tom Baker"}, {HomeAddress1, "56 Elm St"}, {HomeCity, "Albany"}, {HomeState, "NY"},
     {HomeZip, "12203"}, {HomeCountry, "United States"}, {HomePhone, "+1 (518) 555-0107"},
     {Status, "Personal"}},
    {{Company, "Boulangerie du Marais"}, {Contact, "Amélie Dubois"}, {Title, "Owner"},
     {Address1, "12 rue des Rosiers"}, {City, "Paris"}, {Zip, "75004"}, {Country, "France"},
     {Phone, "+33 01 23 45 67 89"}, {Email, "amelie@boulangerie-marais.example"}, {Status, "Customer"}},
    {{Company, "Soieries Lyonnaises"}, {Contact, "Étienne Moreau"}, {Title, "President"},
     {Address1, "8 place Bellecour"}, {City, "Lyon"}, {Zip, "69002"}, {Country, "France"},
     {Phone, "+33 04 78 12 34 56"}, {Fax, "+33 04 78 12 34 57"}},
    {{Company, "Savonnerie du Vieux-Port"}, {Contact, "Léa Martin"}, {Address1, "45 quai des Belges"},
     {City, "Marseille"}, {Zip, "13001"}, {Country, "France"}, {Phone, "+33 04 91 23 45 67"},
     {Mobile, "+33 06 12 34 56 78"}},
    {{Company, "Vins de Bordeaux SARL"}, {Contact, "Théo Lefèvre"}, {Title, "Sales"},
     {Address1, "3 cours de l'Intendance"}, {City, "Bordeaux"}, {Zip, "33000"}, {Country, "France"},
     {Phone, "+33 05 56 12 34 56"}, {Status, "Supplier"}},
    {{Company, "Crêperie Saint-Malo"}, {Contact, "Océane Le Gall"}, {Address1, "10 rue Porcon de la Barbinais"},
     {City, "Saint-Malo"}, {Zip, "35400"}, {Country, "France"}, {Phone, "+33 02 99 12 34 56"}},
    {{Company, "Thames Tea Ltd"}, {Contact, "Oliver Bennett"}, {Title, "Director"},
     {Address1, "14 Camden High Street"}, {City, "London"}, {Zip, "NW1 0JH"}, {Country, "United Kingdom"},
     {Phone, "+44 020 7946 0012"}, {Fax, "+44 020 7946 0013"}, {Email, "oliver@thamestea.example"},
     {Status, "Customer"}},
    {{Company, "Manchester Mills"}, {Contact, "Charlotte Hughes"}, {Title, "Manager"}, {Address1, "55 Deansgate"},
     {City, "Manchester"}, {Zip, "M3 2BW"}, {Country, "United Kingdom"}, {Phone, "+44 0161 496 0021"}},
    {{Company, "Edinburgh Tartans"}, {Contact, "Fiona MacLeod"}, {Title, "Owner"}, {Address1, "120 Royal Mile"},
     {City, "Edinburgh"}, {Zip, "EH1 1PB"}, {Country, "United Kingdom"}, {Phone, "+44 0131 496 0034"},
     {HomeAddress1, "7 Dean Path"}, {HomeCity, "Edinburgh"}, {HomeZip, "EH4 3BG"},
     {HomeCountry, "United Kingdom"}, {HomePhone, "+44 0131 496 0035"}},
    {{Company, "Cardiff Bay Kayaks"}, {Contact, "Rhys Evans"}, {Address1, "3 Stuart Street"}, {City, "Cardiff"},
     {Zip, "CF10 5BW"}, {Country, "United Kingdom"}, {Mobile, "+44 07700 900123"}},
    {{Company, "Bäckerei Müller"}, {Contact, "Jürgen Müller"}, {Title, "Owner"},
     {Address1, "Friedrichstraße 123"}, {City, "Berlin"}, {Zip, "10117"}, {Country, "Germany"},
     {Phone, "+49 030 12345678"}, {Status, "Customer"}},
    {{Company, "Münchner Brauhaus GmbH"}, {Contact, "Sophie Schäfer"}, {Title, "Director"},
     {Address1, "Marienplatz 8"}, {City, "München"}, {Zip, "80331"}, {Country, "Germany"},
     {Phone, "+49 089 1234567"}, {Fax, "+49 089 1234568"}, {Email, "s.schaefer@brauhaus.example"}},
    {{Company, "Hamburger Hafen Logistik"}, {Contact, "Lukas Weiß"}, {Address1, "Große Elbstraße 14"},
     {City, "Hamburg"}, {Zip, "22767"}, {Country, "Germany"}, {Phone, "+49 040 9876543"}, {Status, "Supplier"}},
    {{Company, "Kölner Uhrmacher"}, {Contact, "Anna Schröder"}, {Address1, "Hohe Straße 52"}, {City, "Köln"},
     {Zip, "50667"}, {Country, "Germany"}, {Phone, "+49 0221 1234567"}},
    {{Company, "Artesanías Oaxaqueñas"}, {Contact, "María José Hernández"}, {Title, "Owner"},
     {Address1, "Calle Macedonio Alcalá 402"}, {City, "Oaxaca"}, {State, "OAX"}, {Zip, "68000"},
     {Country, "Mexico"}, {Phone, "+52 951 123 4567"}, {Status, "Supplier"}},
    {{Company, "Tacos El Güero"}, {Contact, "José Luis Martínez"}, {Title, "Owner"},
     {Address1, "Avenida Insurgentes Sur 1602"}, {City, "Ciudad de México"}, {State, "CDMX"}, {Zip, "03940"},
     {Country, "Mexico"}, {Phone, "+52 55 1234 5678"}, {Mobile, "+52 55 8765 4321"}},
    {{Company, "Tequila Los Altos"}, {Contact, "Guadalupe Torres"}, {Title, "Sales"},
     {Address1, "Avenida Vallarta 3233"}, {City, "Guadalajara"}, {State, "JAL"}, {Zip, "44690"},
     {Country, "Mexico"}, {Phone, "+52 33 3123 4567"}},
    {{Company, "Aceites del Sur"}, {Contact, "Lucía Fernández"}, {Address1, "Calle Sierpes 45"},
     {City, "Sevilla"}, {Zip, "41004"}, {Country, "Spain"}, {Phone, "+34 954 123 456"}, {Status, "Prospect"}},
    {{Company, "Barcelona Cerámica"}, {Contact, "Jordi Puig"}, {Address1, "Carrer de Mallorca 401"},
     {City, "Barcelona"}, {Zip, "08013"}, {Country, "Spain"}, {Phone, "+34 932 123 456"}},
    {{Company, "Pasticceria Romana"}, {Contact, "Giulia Rossi"}, {Title, "Owner"},
     {Address1, "Via del Corso 120"}, {City, "Roma"}, {Zip, "00186"}, {Country, "Italy"},
     {Phone, "+39 06 1234 5678"}},
    {{Company, "Milano Moda Srl"}, {Contact, "Marco Bianchi"}, {Title, "Director"},
     {Address1, "Via Montenapoleone 8"}, {City, "Milano"}, {Zip, "20121"}, {Country, "Italy"},
     {Phone, "+39 02 1234 5678"}, {Email, "m.bianchi@milanomoda.example"}},
    {{Company, "Chocolaterie Bruxelloise"}, {Contact, "Élise Janssens"}, {Address1, "Rue Neuve 60"},
     {City, "Bruxelles"}, {Zip, "1000"}, {Country, "Belgium"}, {Phone, "+32 02 123 45 67"}},
    {{Company, "Genève Horlogerie SA"}, {Contact, "Noé Favre"}, {Title, "President"},
     {Address1, "Rue du Rhône 42"}, {City, "Genève"}, {Zip, "1204"}, {Country, "Switzerland"},
     {Phone, "+41 022 123 45 67"}, {Status, "Prospect"}},
    {{Contact, "Kevin"}},
    {{Company, "Nouvelle Entreprise Inc."}},
    {{Contact, "Zoë Nakamura"}, {Mobile, "+1 (514) 555-0193"}, {Email, "zoe.nakamura@mail.example"},
     {Status, "Personal"}},
    {{Company, "Dépanneur Chez Ginette"}, {Contact, "Ginette Ouellet"}, {Address1, "6789 boulevard Saint-Laurent"},
     {City, "Montréal"}, {State, "QC"}, {Zip, "H2S 3C9"}, {Country, "Canada"}, {Phone, "+1 (514) 555-0108"}},
};

// Fills a database file in one transaction on a file of its own next to `path`, then puts it in place in one
// rename: a failure half-way leaves whatever was at `path` untouched. `fill` answers My Record's ID.
template <typename Fill>
void writeDatabaseFile(const QString& path, Fill&& fill)
{
    const QFileInfo target(path);
    if (!target.absoluteDir().exists())
        throw Error(ErrorNumber::PathNotFound, QStringLiteral("Path not found: \"%1\"").arg(target.absolutePath()));
    if (target.isDir())
        throw Error(ErrorNumber::AutomationError, QStringLiteral("\"%1\" is a folder").arg(path));
    const QString part = target.absoluteFilePath() + QStringLiteral(".part");
    QFile::remove(part);
    try {
        SqliteConnection connection;
        connection.open(part, false);
        // Nobody else sees this file before it is renamed: no journal, no waiting for the disk on each page.
        connection.exec(QStringLiteral("PRAGMA journal_mode = OFF"));
        connection.exec(QStringLiteral("PRAGMA synchronous = OFF"));
        connection.transaction();
        schema::create(connection);
        schema::setMyRecord(connection, fill(connection));
        schema::addLookupIndex(connection);
        connection.commit();
        connection.close();
        std::error_code error;
        std::filesystem::rename(QFile::encodeName(part).toStdString(),
                                QFile::encodeName(target.absoluteFilePath()).toStdString(), error);
        if (error)
            throw Error(ErrorNumber::PermissionDenied, QStringLiteral("Cannot write \"%1\": %2")
                                                           .arg(path, QString::fromStdString(error.message())));
    } catch (...) {
        QFile::remove(part);
        throw;
    }
}

// A small fast generator with a fixed seed, so that a generated database is the same on every run.
class Scramble {
public:
    quint32 next()
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 7;
        m_state ^= m_state << 17;
        return quint32(m_state >> 16);
    }
    template <typename List>
    const auto& pick(const List& list) { return list[next() % std::size(list)]; }

private:
    quint64 m_state = 0x9E3779B97F4A7C15ull;
};

struct Place {
    const char* city;
    const char* state;
    const char* zipPrefix;
    const char* country;
    const char* countryCode;
    const char* areaCode;
    // Made-up numbers: North America's 555 range, elsewhere just digits after the area code.
    bool northAmerican() const { return QByteArrayView(countryCode) == "1"; }
};

const Place kPlaces[] = {
    {"Montréal", "QC", "H2X", "Canada", "1", "514"},
    {"Québec", "QC", "G1R", "Canada", "1", "418"},
    {"Sherbrooke", "QC", "J1H", "Canada", "1", "819"},
    {"Toronto", "ON", "M5V", "Canada", "1", "416"},
    {"Vancouver", "BC", "V6B", "Canada", "1", "604"},
    {"New York", "NY", "100", "United States", "1", "212"},
    {"Chicago", "IL", "606", "United States", "1", "312"},
    {"Austin", "TX", "787", "United States", "1", "512"},
    {"Paris", "", "750", "France", "33", "01"},
    {"Lyon", "", "690", "France", "33", "04"},
    {"London", "", "EC1", "United Kingdom", "44", "020"},
    {"Berlin", "", "101", "Germany", "49", "030"},
    {"München", "", "803", "Germany", "49", "089"},
    {"Ciudad de México", "CDMX", "060", "Mexico", "52", "55"},
    {"Roma", "", "001", "Italy", "39", "06"},
};

const char* const kFirstNames[] = {
    "Hélène", "Jean", "Marie", "Luc", "Sophie", "Pierre", "Chloé", "Marc", "Émilie", "David", "Sarah", "John",
    "Emily", "Michael", "Jessica", "Robert", "Olivia", "James", "Amélie", "Étienne", "Léa", "Jürgen", "Anna",
    "Lukas", "María", "José", "Lucía", "Giulia", "Marco", "Noé", "Priya", "Wei", "Fatima", "Omar", "Zoë", "Björn",
};
const char* const kLastNames[] = {
    "Tremblay", "Gagnon", "Roy", "Côté", "Bouchard", "Gauthier", "Morin", "Lavoie", "Fortin", "Gagné", "Smith",
    "Johnson", "Williams", "Brown", "Jones", "Garcia", "Miller", "Davis", "Martin", "Bernard", "Dubois", "Lefèvre",
    "Müller", "Schmidt", "Schröder", "Hernández", "López", "Rossi", "Bianchi", "Patel", "Chen", "Nguyen",
    "O'Brien", "MacLeod",
};
const char* const kCompanyKinds[] = {
    "Inc.", "Ltée", "Ltd", "LLC", "SARL", "GmbH", "& Fils", "Consulting", "Boulangerie", "Hardware", "Design",
    "Logistics", "Conseil", "Imports",
};
const char* const kStreets[] = {
    "rue Sainte-Catherine Ouest", "chemin de la Côte-des-Neiges", "boulevard Saint-Laurent", "Main St",
    "Elm Street", "Yonge Street", "rue de Rivoli", "Friedrichstraße", "High Street", "Avenida Reforma", "Via Roma",
    "avenue du Parc", "Oak Ave", "Maple Drive",
};
const char* const kStatuses[] = {"Customer", "Customer", "Customer", "Prospect", "Supplier", "Personal"};

// A million contacts are made from pools of ready texts, so that each one costs a few picks rather than a
// few dozen string operations.
struct GeneratedPools {
    QStringList names, companies, addresses, statuses;
    struct PlaceTexts {
        QString city, state, country, countryCode;
        QStringList zips, numbers;
    };
    QList<PlaceTexts> places;

    explicit GeneratedPools(Scramble& scramble)
    {
        auto digits = [&](int width) {
            QString text(width, QLatin1Char('0'));
            for (quint32 n = scramble.next(); width > 0; n /= 10)
                text[--width] = QLatin1Char(char('0' + n % 10));
            return text;
        };
        for (const char* first : kFirstNames) {
            for (const char* last : kLastNames)
                names << QString::fromUtf8(first) + QLatin1Char(' ') + QString::fromUtf8(last);
        }
        for (const char* last : kLastNames) {
            for (const char* kind : kCompanyKinds)
                companies << QString::fromUtf8(last) + QLatin1Char(' ') + QString::fromUtf8(kind);
        }
        for (int i = 0; i < 5000; ++i)
            addresses << QString::number(1 + scramble.next() % 9999) + QLatin1Char(' ') +
                             QString::fromUtf8(scramble.pick(kStreets));
        for (const char* status : kStatuses)
            statuses << QString::fromUtf8(status);
        for (const Place& place : kPlaces) {
            PlaceTexts texts{QString::fromUtf8(place.city), QString::fromUtf8(place.state),
                             QString::fromUtf8(place.country), QString::fromUtf8(place.countryCode), {}, {}};
            for (int i = 0; i < 300; ++i)
                texts.zips << QString::fromUtf8(place.zipPrefix) + QLatin1Char(' ') + digits(3);
            const QString area = QString::fromUtf8(place.areaCode);
            for (int i = 0; i < 3000; ++i) {
                texts.numbers << (place.northAmerican()
                                      ? QLatin1Char('(') + area + QStringLiteral(") 555-") + digits(4)
                                      : area + QLatin1Char(' ') + digits(2) + QLatin1Char(' ') + digits(2) +
                                            QLatin1Char(' ') + digits(2) + QLatin1Char(' ') + digits(2));
            }
            places << texts;
        }
    }
};

} // namespace

QString sampleDatabaseFolder()
{
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return data + QStringLiteral("/corvalent-contacts");
}

void writeSampleDatabase(const QString& path)
{
    writeDatabaseFile(path, [](const SqliteConnection& connection) {
        ContactInserter inserter(connection);
        qint64 myRecord = -1;
        for (const SampleContact& contact : kSampleContacts) {
            for (const auto& [field, text] : contact)
                inserter.set(field, QString::fromUtf8(text));
            const qint64 id = inserter.insert();
            if (myRecord < 0)
                myRecord = id;
        }
        return myRecord;
    });
}

void writeGeneratedDatabase(const QString& path, qint64 count)
{
    if (count < 1)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("A generated database holds at least My Record, not %1 contacts").arg(count));
    writeDatabaseFile(path, [count](const SqliteConnection& connection) {
        Scramble scramble;
        const GeneratedPools pools(scramble);
        ContactInserter inserter(connection);
        const QString mailPrefix = QStringLiteral("contact");
        const QString mailDomain = QStringLiteral("@mail.example");
        qint64 myRecord = -1;
        for (qint64 i = 0; i < count; ++i) {
            const GeneratedPools::PlaceTexts& place = scramble.pick(pools.places);
            inserter.set(Contact, scramble.pick(pools.names));
            inserter.set(Company, scramble.pick(pools.companies));
            inserter.set(Address1, scramble.pick(pools.addresses));
            inserter.set(City, place.city);
            inserter.set(State, place.state);
            inserter.set(Zip, scramble.pick(place.zips));
            inserter.set(Country, place.country);
            inserter.setPhone(Phone, place.countryCode, scramble.pick(place.numbers));
            if (scramble.next() % 3 == 0)
                inserter.setPhone(Mobile, place.countryCode, scramble.pick(place.numbers));
            if (scramble.next() % 4 == 0)
                inserter.setPhone(Fax, place.countryCode, scramble.pick(place.numbers));
            inserter.set(Email, mailPrefix + QString::number(i + 1) + mailDomain);
            inserter.set(Status, scramble.pick(pools.statuses));
            const qint64 id = inserter.insert();
            if (myRecord < 0)
                myRecord = id;
        }
        return myRecord;
    });
}

} // namespace corvalent::host
