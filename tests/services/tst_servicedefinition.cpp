#include "services/ServiceDefinition.h"

#include "common/Error.h"
#include "services/IniLib.h"
#include "support/TestHome.h"

#include <QDir>
#include <QTest>

using namespace corvalent;
using corvalent::test::TestHome;

Q_DECLARE_METATYPE(corvalent::ServiceDefinition)

namespace {

QByteArray crlfLines(const QStringList& lines)
{
    return (lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n")).toUtf8();
}

ServiceDefinition postalCodes()
{
    ServiceDefinition s;
    s.name = QStringLiteral("Postal codes 2.1");
    s.url = QStringLiteral("www.example.com/lookup.asp?lang=en");
    s.base = ServiceBase::Address;
    s.countryFile = QStringLiteral("Countries.ini");
    s.defaultCountry = QStringLiteral("CA");
    s.fields = {25, 26, 27, 30, FieldCode::PhoneNumbers, 32, 33, 0, 0, 0};
    s.phoneFormats[4] = QStringLiteral("1,2,3");
    s.phoneFormats[2] = QStringLiteral("7,8"); // not a phone row: never written
    s.variables = {QStringLiteral("name"), QStringLiteral("company"), QStringLiteral("street"), QStringLiteral("city"),
                   QStringLiteral("phone"), QStringLiteral("&pcode"), QStringLiteral("country"), QString(), QString(),
                   QString()};
    return s;
}

const QStringList kPostalCodesLines = {
    "[Settings]",
    "Name=Postal codes 2~1",
    "URL=www.example.com/lookup.asp?lang=en",
    "Base=0",
    "CountryFile=Countries.ini",
    "DefaultCountry=CA",
    "F0=25",
    "F1=26",
    "F2=27",
    "F3=30",
    "F4=888",
    "PhFormat4=1,2,3",
    "F5=32",
    "F6=33",
    "F7=0",
    "F8=0",
    "F9=0",
    "V0=name",
    "V1=company",
    "V2=street",
    "V3=city",
    "V4=phone",
    "V5=&pcode",
    "V6=country",
    "V7=",
    "V8=",
    "V9=",
    "L7=Custom1",
    "L8=Custom2",
    "L9=Custom3",
};

ServiceDefinition phoneBook()
{
    ServiceDefinition s;
    s.name = QStringLiteral("Phone book");
    s.url = QStringLiteral("http://phone.example/find?");
    s.fields = {FieldCode::PhoneNumbers, 0, 0, 0, 0, 0, 0, FieldCode::StreetNumber, FieldCode::CityState,
                FieldCode::PhoneNumbers};
    s.phoneFormats[9] = QStringLiteral("4,5,6");
    s.variables[0] = QStringLiteral("&num");
    s.variables[9] = QStringLiteral("area");
    s.labels = {QStringLiteral("House"), QStringLiteral("Town"), QStringLiteral("Area code")};
    return s;
}

const QStringList kPhoneBookLines = {
    "[Settings]",
    "Name=Phone book",
    "URL=http://phone.example/find?",
    "CountryFile=",
    "DefaultCountry=",
    "F0=888",
    "PhFormat0=",
    "F1=0",
    "F2=0",
    "F3=0",
    "F4=0",
    "F5=0",
    "F6=0",
    "F7=777",
    "F8=779",
    "F9=888",
    "PhFormat9=4,5,6",
    "V0=&num",
    "V1=",
    "V2=",
    "V3=",
    "V4=",
    "V5=",
    "V6=",
    "V7=",
    "V8=",
    "V9=area",
    "L7=House",
    "L8=Town",
    "L9=Area code",
};

void compareDefinitions(const ServiceDefinition& actual, const ServiceDefinition& expected)
{
    QCOMPARE(actual.name, expected.name);
    QCOMPARE(actual.url, expected.url);
    QCOMPARE(actual.base, expected.base);
    QCOMPARE(actual.countryFile, expected.countryFile);
    // An empty DefaultCountry reads as the readers' default.
    QCOMPARE(actual.defaultCountry, expected.defaultCountry.isEmpty() ? QStringLiteral("US") : expected.defaultCountry);
    for (int row = 0; row < kFieldRows; ++row) {
        QCOMPARE(actual.fields[row], expected.fields[row]);
        QCOMPARE(actual.variables[row], expected.variables[row]);
    }
    for (int i = 0; i < kCustomRows; ++i)
        QCOMPARE(actual.labels[i], expected.labels[i]);
}

} // namespace

class TestServiceDefinition : public QObject {
    Q_OBJECT

private:
    TestHome m_home;
    int m_folders = 0;

    // A fresh Presets-like folder per case, named as the case asks.
    QString newFolder(const QString& name = QStringLiteral("Presets"))
    {
        const QString folder = m_home.file(QStringLiteral("case%1/%2").arg(++m_folders).arg(name));
        QDir().mkpath(folder);
        return folder;
    }

private slots:
    void writeNewService_data()
    {
        QTest::addColumn<ServiceDefinition>("service");
        QTest::addColumn<QStringList>("lines");

        QTest::newRow("address service with a phone row") << postalCodes() << kPostalCodesLines;
        QTest::newRow("no type chosen, phone rows first and last") << phoneBook() << kPhoneBookLines;

        ServiceDefinition other = phoneBook();
        other.base = ServiceBase::Other;
        QStringList otherLines = kPhoneBookLines;
        otherLines.insert(3, QStringLiteral("Base=2"));
        QTest::newRow("other type") << other << otherLines;
    }

    void writeNewService()
    {
        QFETCH(ServiceDefinition, service);
        QFETCH(QStringList, lines);

        const QString path = ServiceFilePath(newFolder(), service.name);
        QVERIFY(WriteNewService(path, service));
        QCOMPARE(QString::fromUtf8(TestHome::read(path)), QString::fromUtf8(crlfLines(lines)));

        // What was written reads back as the service it came from.
        compareDefinitions(ReadServiceDefinition(path), service);
    }

    // A new service starts from an empty file: nothing of an older file of that name survives.
    void writeNewServiceTruncates()
    {
        const QString path = ServiceFilePath(newFolder(), QStringLiteral("Postal codes 2.1"));
        m_home.write(QDir(m_home.programFolder()).relativeFilePath(path),
                     "; old notes\r\n[Settings]\r\nName=Postal codes 2~1\r\nOld=1\r\nF4=5\r\n[Other]\r\nx=1\r\n");
        QVERIFY(WriteNewService(path, postalCodes()));
        QCOMPARE(QString::fromUtf8(TestHome::read(path)), QString::fromUtf8(crlfLines(kPostalCodesLines)));
    }

    void readDefaults()
    {
        const QString path = ServiceFilePath(newFolder(), QStringLiteral("Bare"));
        m_home.write(QDir(m_home.programFolder()).relativeFilePath(path), "[Settings]\r\nURL=example.com/?\r\n");
        const ServiceDefinition s = ReadServiceDefinition(path);
        QCOMPARE(s.url, QStringLiteral("example.com/?"));
        QCOMPARE(s.defaultCountry, QStringLiteral("US"));
        QCOMPARE(s.countryFile, QString());
        QCOMPARE(s.base, ServiceBase::None);
        for (int row = 0; row < kFieldRows; ++row) {
            QCOMPARE(s.fields[row], 0);
            QCOMPARE(s.variables[row], QString());
            QCOMPARE(s.phoneFormats[row], QString());
        }
    }

    // Re-saving after row 4 stopped being a phone row leaves its PhFormat4 where it was; everything else is
    // replaced in place.
    void saveEditedKeepsStaleKeys()
    {
        QString path = ServiceFilePath(newFolder(), QStringLiteral("Postal codes 2.1"));
        const QString original = path;
        QVERIFY(WriteNewService(path, postalCodes()));

        ServiceDefinition edited = postalCodes();
        edited.fields[4] = 31;
        edited.url = QStringLiteral("www.example.com/v2?");
        edited.variables[7] = QStringLiteral("extra");
        QVERIFY(SaveEditedService(path, edited));
        QCOMPARE(path, original);

        QStringList lines = kPostalCodesLines;
        lines.replace(lines.indexOf(QStringLiteral("F4=888")), QStringLiteral("F4=31"));
        lines.replace(lines.indexOf(QStringLiteral("URL=www.example.com/lookup.asp?lang=en")),
                      QStringLiteral("URL=www.example.com/v2?"));
        lines.replace(lines.indexOf(QStringLiteral("V7=")), QStringLiteral("V7=extra"));
        QCOMPARE(QString::fromUtf8(TestHome::read(path)), QString::fromUtf8(crlfLines(lines)));
    }

    // Keys the editor never writes are no business of the editor's: an edit keeps them.
    void saveEditedKeepsForeignLines()
    {
        QString path = ServiceFilePath(newFolder(), QStringLiteral("Phone book"));
        m_home.write(QDir(m_home.programFolder()).relativeFilePath(path),
                     "; downloaded\r\n[Settings]\r\nName=Phone book\r\nAuthor=someone\r\nF3=888\r\nPhFormat3=1\r\n");
        QVERIFY(SaveEditedService(path, phoneBook()));
        const QString text = QString::fromUtf8(TestHome::read(path));
        QVERIFY(text.startsWith(QStringLiteral("; downloaded\r\n[Settings]\r\nName=Phone book\r\nAuthor=someone\r\n"
                                               "F3=0\r\nPhFormat3=1\r\n")));
        QCOMPARE(ReadServiceDefinition(path).phoneFormats[3], QStringLiteral("1"));
        compareDefinitions(ReadServiceDefinition(path), phoneBook());
    }

    void renameByCopy_data()
    {
        QTest::addColumn<QString>("folderName");
        QTest::addColumn<QString>("oldName");
        QTest::addColumn<QString>("newName");
        QTest::addColumn<QString>("newFileName");
        QTest::addColumn<QString>("storedName");

        QTest::newRow("plain") << "Presets" << "Old name" << "New name" << "New name.isf" << "New name";
        QTest::newRow("folder named like the service") << "Maps" << "Maps" << "Atlas" << "Atlas.isf" << "Atlas";
        QTest::newRow("dots in the new name") << "Presets" << "a.b" << "a.b.c" << "a~b~c.isf" << "a~b~c";
        QTest::newRow("dots dropped") << "Presets" << "v1.2" << "v2" << "v2.isf" << "v2";
    }

    void renameByCopy()
    {
        QFETCH(QString, folderName);
        QFETCH(QString, oldName);
        QFETCH(QString, newName);
        QFETCH(QString, newFileName);
        QFETCH(QString, storedName);

        const QString folder = newFolder(folderName);
        ServiceDefinition service = postalCodes();
        service.name = oldName;
        QString path = ServiceFilePath(folder, oldName);
        QVERIFY(WriteNewService(path, service));
        // Something the editor never writes, to show the new file is a copy of the old one.
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::Append));
            f.write("; kept\r\nAuthor=someone\r\n");
        }
        const QString oldPath = path;

        service.name = newName;
        service.defaultCountry = QStringLiteral("DE");
        QVERIFY(SaveEditedService(path, service));

        QCOMPARE(path, folder + QLatin1Char('/') + newFileName);
        QVERIFY(!QFileInfo::exists(oldPath));
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{newFileName});
        QVERIFY(QDir(folder).exists()); // the folder itself was not renamed

        QStringList lines = kPostalCodesLines;
        lines[1] = QStringLiteral("Name=") + storedName;
        lines.replace(lines.indexOf(QStringLiteral("DefaultCountry=CA")), QStringLiteral("DefaultCountry=DE"));
        lines << QStringLiteral("; kept") << QStringLiteral("Author=someone");
        QCOMPARE(QString::fromUtf8(TestHome::read(path)), QString::fromUtf8(crlfLines(lines)));
        QCOMPARE(ReadServiceDefinition(path).name, newName);
    }

    void renameNeverOverwrites()
    {
        const QString folder = newFolder();
        ServiceDefinition first = postalCodes();
        first.name = QStringLiteral("First");
        ServiceDefinition second = phoneBook();
        second.name = QStringLiteral("Second");
        QString firstPath = ServiceFilePath(folder, first.name);
        const QString secondPath = ServiceFilePath(folder, second.name);
        QVERIFY(WriteNewService(firstPath, first));
        QVERIFY(WriteNewService(secondPath, second));
        const QByteArray firstBytes = TestHome::read(firstPath);
        const QByteArray secondBytes = TestHome::read(secondPath);
        const QString originalPath = firstPath;

        first.name = QStringLiteral("Second");
        first.url = QStringLiteral("changed");
        int number = 0;
        int line = 0;
        const int callLine = __LINE__ + 2;
        try {
            SaveEditedService(firstPath, first);
        } catch (const Error& e) {
            number = e.number();
            line = int(e.where().line());
        }
        QCOMPARE(number, 58);
        QCOMPARE(line, callLine);
        QCOMPARE(firstPath, originalPath);
        QCOMPARE(TestHome::read(originalPath), firstBytes);
        QCOMPARE(TestHome::read(secondPath), secondBytes);
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden).size(), 2);
    }

    // A service named a.b.c lives in a~b~c.isf and calls itself a~b~c there.
    void dottedNameStoredWithTildes()
    {
        const QString folder = newFolder();
        ServiceDefinition service = postalCodes();
        service.name = QStringLiteral("a.b.c");
        const QString path = ServiceFilePath(folder, service.name);
        QCOMPARE(QFileInfo(path).fileName(), QStringLiteral("a~b~c.isf"));
        QCOMPARE(QFileInfo(path).path(), folder);
        QVERIFY(WriteNewService(path, service));
        QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList{QStringLiteral("a~b~c.isf")});
        QCOMPARE(GetKeyValue(kServiceSection, QStringLiteral("Name"), QString(), QString(), QString(), path),
                 QStringLiteral("a~b~c"));
        QCOMPARE(ReadServiceDefinition(path).name, QStringLiteral("a.b.c"));
    }
};

QTEST_GUILESS_MAIN(TestServiceDefinition)
#include "tst_servicedefinition.moc"
