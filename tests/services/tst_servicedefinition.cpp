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
        QTest::newRow("Address") << ServiceBase::Address << QByteArray("Base=0|");
        QTest::newRow("Other") << ServiceBase::Other << QByteArray("Base=2|");
    }

    // Starts afresh over an older file of the name.
    void writeNewService()
    {
        QFETCH(int, base);
        QFETCH(QByteArray, baseLine);
        const QString path = m_files.add("; old\r\n[Settings]\r\nF4=5\r\nOld=1\r\n");
        QVERIFY(WriteNewService(path, postalCodes(base)));
        QByteArray expected = QByteArray("[Settings]|Name=Postal codes 2~1|URL=example.com/?q=|" + baseLine
                                         + "CountryFile=Countries.ini|DefaultCountry=|F0=25|F1=0|F2=0|F3=0|F4=888|"
                                           "PhFormat4=1,2,3|F5=0|F6=0|F7=0|F8=0|F9=779|V0=name|V1=|V2=|V3=|V4=|V5=|"
                                           "V6=|V7=|V8=|V9=&city|L7=Custom1|L8=Custom2|L9=Area code|")
                                  .replace('|', "\r\n");
        QCOMPARE(TestHome::read(path), expected);

        // Read back and written anew, it makes the same file but for the readers' default country.
        const QString again = m_files.add();
        QVERIFY(WriteNewService(again, ReadServiceDefinition(path)));
        QCOMPARE(TestHome::read(again), expected.replace("DefaultCountry=\r", "DefaultCountry=US\r"));
    }

    // Lines the editor never writes stay, in place or copied along when only the file's own name changes, never a
    // folder's; as a new service of that name would, the renamed one takes the place of a file it meets.
    void saveEdited_data()
    {
        QTest::addColumn<QString>("oldName"); // as stored, and the name of the folder it is in
        QTest::addColumn<QString>("newName");
        QTest::addColumn<QString>("newFile");
        QTest::addColumn<bool>("met"); // a file of the new name is there
        QTest::newRow("same name: in place") << "Kept" << "Kept" << "Kept.isf" << false;
        QTest::newRow("new name") << "Maps" << "Atlas" << "Atlas.isf" << false;
        QTest::newRow("dots") << "a~b" << "a.b.c" << "a~b~c.isf" << false;
        QTest::newRow("over the file of the new name") << "First" << "Second" << "Second.isf" << true;
    }

    void saveEdited()
    {
        QFETCH(QString, oldName);
        QFETCH(QString, newName);
        QFETCH(QString, newFile);
        QFETCH(bool, met);
        const QString folder = oldName + QLatin1Char('/');
        QString path = m_files.write(folder + oldName + QStringLiteral(".isf"),
                                     "[Settings]\r\nName=" + oldName.toUtf8() + "\r\nAuthor=me\r\n");
        if (met)
            m_files.write(folder + newFile, "[Settings]\r\nName=" + newName.toUtf8() + "\r\nOld=1\r\n");
        ServiceDefinition service = postalCodes();
        service.name = newName;
        QVERIFY(SaveEditedService(path, service));
        QCOMPARE(path, m_files.file(folder + newFile));
        QCOMPARE(QDir(m_files.file(folder)).entryList(QDir::Files), QStringList{newFile});
        QCOMPARE(readKey(path, kServiceSection, QStringLiteral("Author")), QStringLiteral("me"));
        QCOMPARE(ReadServiceDefinition(path).name, newName);
        if (met)
            QCOMPARE(readKey(path, kServiceSection, QStringLiteral("Old")), kDefault);
    }
};

QTEST_GUILESS_MAIN(TestServiceDefinition)
#include "tst_servicedefinition.moc"
