#include "services/ServiceDefinition.h"
#include "support/IniFiles.h"

#include <QTest>

using namespace corvalent;
using namespace corvalent::test;

namespace {

ServiceDefinition postalCodes(int base = ServiceBase::Address)
{
    ServiceDefinition s;
    s.name = QStringLiteral("Postal codes 2.1");
    s.url = QStringLiteral("example.com/?q=");
    s.base = base;
    s.countryFile = QStringLiteral("Countries.ini");
    s.fields = {25, 0, 0, 0, FieldCode::PhoneNumbers, 0, 0, 0, 0, FieldCode::CityState};
    s.phoneFormats[4] = QStringLiteral("1,2,3");
    s.phoneFormats[9] = QStringLiteral("7,8"); // not a phone row: never written
    s.variables[0] = QStringLiteral("name");
    s.variables[9] = QStringLiteral("&city");
    s.labels[2] = QStringLiteral("Area code");
    return s;
}

// What WriteNewService makes of postalCodes(), with `base` the Base line if any.
QByteArray postalCodesFile(const QByteArray& base)
{
    return QByteArray("[Settings]|Name=Postal codes 2~1|URL=example.com/?q=|" + base
                      + "CountryFile=Countries.ini|DefaultCountry=|F0=25|F1=0|F2=0|F3=0|F4=888|PhFormat4=1,2,3|"
                        "F5=0|F6=0|F7=0|F8=0|F9=779|V0=name|V1=|V2=|V3=|V4=|V5=|V6=|V7=|V8=|V9=&city|"
                        "L7=Custom1|L8=Custom2|L9=Area code|")
        .replace('|', "\r\n");
}

} // namespace

class TestServiceDefinition : public QObject {
    Q_OBJECT

    IniFiles m_files;

private slots:
    void writeNewService_data()
    {
        QTest::addColumn<int>("base");
        QTest::addColumn<QByteArray>("baseLine");
        QTest::newRow("no type: no Base line") << ServiceBase::None << QByteArray();
        QTest::newRow("Other") << ServiceBase::Other << QByteArray("Base=2|");
    }

    // Starts afresh over an older file of the name.
    void writeNewService()
    {
        QFETCH(int, base);
        QFETCH(QByteArray, baseLine);
        const QString path = m_files.add("; old\r\n[Settings]\r\nF4=5\r\nOld=1\r\n");
        QVERIFY(WriteNewService(path, postalCodes(base)));
        QCOMPARE(TestHome::read(path), postalCodesFile(baseLine));

        // Read back and written anew, it makes the same file but for the readers' default country.
        const QString again = m_files.add();
        QVERIFY(WriteNewService(again, ReadServiceDefinition(path)));
        QCOMPARE(TestHome::read(again), postalCodesFile(baseLine).replace("DefaultCountry=\r", "DefaultCountry=US\r"));
    }

    // Row 4 stops being a phone row: its PhFormat4 stays where it was and does no harm.
    void saveEditedKeepsStalePhFormat()
    {
        const QString original = m_files.add();
        QString path = original;
        ServiceDefinition service = postalCodes();
        QVERIFY(WriteNewService(path, service));
        service.fields[4] = 31;
        QVERIFY(SaveEditedService(path, service));
        QCOMPARE(path, original);
        QCOMPARE(TestHome::read(path), postalCodesFile("Base=0|").replace("F4=888", "F4=31"));
    }

    // The file is copied (lines the editor never writes go along) and only its own name changes, never a folder's.
    void renameByCopy_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("oldName"); // as stored
        QTest::addColumn<QString>("newName");
        QTest::addColumn<QString>("newFile");
        QTest::newRow("folder named like the service") << "Maps" << "Maps" << "Atlas" << "Atlas.isf";
        QTest::newRow("dots") << "Presets" << "a~b" << "a.b.c" << "a~b~c.isf";
    }

    void renameByCopy()
    {
        QFETCH(QString, folder);
        QFETCH(QString, oldName);
        QFETCH(QString, newName);
        QFETCH(QString, newFile);
        QString path = m_files.write(folder + QLatin1Char('/') + oldName + QStringLiteral(".isf"),
                                     "[Settings]\r\nName=" + oldName.toUtf8() + "\r\nAuthor=me\r\n");
        ServiceDefinition service = postalCodes();
        service.name = newName;
        QVERIFY(SaveEditedService(path, service));
        QCOMPARE(path, m_files.file(folder + QLatin1Char('/') + newFile));
        QCOMPARE(QDir(m_files.file(folder)).entryList(QDir::Files), QStringList{newFile});
        QCOMPARE(readKey(path, kServiceSection, QStringLiteral("Author")), QStringLiteral("me"));
        QCOMPARE(ReadServiceDefinition(path).name, newName);
    }

    // As a new service of that name would, the renamed one takes the place of the file it meets.
    void renameReplacesTheFileOfTheNewName()
    {
        QString first = m_files.write(QStringLiteral("Clash/First.isf"), "[Settings]\r\nName=First\r\nAuthor=me\r\n");
        m_files.write(QStringLiteral("Clash/Second.isf"), "[Settings]\r\nName=Second\r\nOld=1\r\n");
        ServiceDefinition service = postalCodes();
        service.name = QStringLiteral("Second");
        QVERIFY(SaveEditedService(first, service));
        QCOMPARE(first, m_files.file(QStringLiteral("Clash/Second.isf")));
        QCOMPARE(QDir(m_files.file(QStringLiteral("Clash"))).entryList(QDir::Files), QStringList{"Second.isf"});
        QCOMPARE(readKey(first, kServiceSection, QStringLiteral("Author")), QStringLiteral("me"));
        QCOMPARE(readKey(first, kServiceSection, QStringLiteral("Old")), QStringLiteral("<default>"));
    }
};

QTEST_GUILESS_MAIN(TestServiceDefinition)
#include "tst_servicedefinition.moc"
