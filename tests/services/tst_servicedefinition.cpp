#include "KillVariants.h"
#include "services/ServiceDefinition.h"
#include "support/IniFiles.h"

#include <QDeadlineTimer>
#include <QProcess>
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

    // The file is copied (lines the editor never writes go along) and only its own name changes, never a folder's;
    // as a new service of that name would, the renamed one takes the place of a file it meets.
    void renameByCopy_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("oldName"); // as stored
        QTest::addColumn<QString>("newName");
        QTest::addColumn<QString>("newFile");
        QTest::addColumn<bool>("met"); // a file of the new name is there
        QTest::newRow("folder named like the service") << "Maps" << "Maps" << "Atlas" << "Atlas.isf" << false;
        QTest::newRow("dots") << "Presets" << "a~b" << "a.b.c" << "a~b~c.isf" << false;
        QTest::newRow("over the file of the new name") << "Clash" << "First" << "Second" << "Second.isf" << true;
    }

    void renameByCopy()
    {
        QFETCH(QString, folder);
        QFETCH(QString, oldName);
        QFETCH(QString, newName);
        QFETCH(QString, newFile);
        QFETCH(bool, met);
        QString path = m_files.write(folder + QLatin1Char('/') + oldName + QStringLiteral(".isf"),
                                     "[Settings]\r\nName=" + oldName.toUtf8() + "\r\nAuthor=me\r\n");
        if (met)
            m_files.write(folder + QLatin1Char('/') + newFile, "[Settings]\r\nName=" + newName.toUtf8() + "\r\nOld=1\r\n");
        ServiceDefinition service = postalCodes();
        service.name = newName;
        QVERIFY(SaveEditedService(path, service));
        QCOMPARE(path, m_files.file(folder + QLatin1Char('/') + newFile));
        QCOMPARE(QDir(m_files.file(folder)).entryList(QDir::Files), QStringList{newFile});
        QCOMPARE(readKey(path, kServiceSection, QStringLiteral("Author")), QStringLiteral("me"));
        QCOMPARE(ReadServiceDefinition(path).name, newName);
        if (met)
            QCOMPARE(readKey(path, kServiceSection, QStringLiteral("Old")), kDefault);
    }

    // A saver killed at any moment, a few hundred saves in all, leaves complete services only: the old one, the
    // new one, or (killed between writing the new and deleting the old) both.
    void killedSaveLeavesWholeServices()
    {
        constexpr int kWaitMs = 60000; // a bound for a child that hangs, not a pace
        const QString folder = m_files.file(QStringLiteral("killed"));
        QDir().mkpath(folder);
        QByteArray whole[2];
        for (int which = 0; which < 2; ++which) {
            const QString scratch = m_files.add();
            QVERIFY(WriteNewService(scratch, killVariant(which)));
            whole[which] = TestHome::read(scratch);
        }
        QVERIFY(WriteNewService(killVariantFile(folder, 0), killVariant(0)));

        int saves = 0;
        for (int round = 0; round < 16 || saves < 200; ++round) {
            QProcess child;
            child.start(QStringLiteral(SERVICE_SAVER_CHILD), {folder, QStringLiteral("100000")});
            QVERIFY2(child.waitForStarted(kWaitMs), qPrintable(child.errorString()));
            const QDeadlineTimer deadline(kWaitMs);
            for (int announced = 0; announced < 1 + (round * 7) % 23;) {
                QVERIFY2(child.waitForReadyRead(int(deadline.remainingTime())), child.readAllStandardError().data());
                const int finished = int(child.readAllStandardOutput().count('\n'));
                announced += finished;
                saves += finished;
            }
            child.kill();
            QVERIFY(child.waitForFinished(kWaitMs));

            const QStringList services = QDir(folder).entryList({QStringLiteral("*.isf")}, QDir::Files);
            QVERIFY2(!services.isEmpty(), qPrintable(QStringLiteral("round %1: no service left").arg(round)));
            for (const QString& name : services) {
                const int which = name == QLatin1String("Kill.isf") ? 0 : 1;
                QVERIFY2(name == QFileInfo(killVariantFile(folder, which)).fileName(), qPrintable(name));
                QVERIFY2(TestHome::read(ProgramFolder::join(folder, name)) == whole[which],
                         qPrintable(QStringLiteral("round %1: %2 is torn").arg(round).arg(name)));
            }
            // The next child starts from the one that is there (after a kill between the two steps, the old one).
            if (services.size() == 2)
                QFile::remove(killVariantFile(folder, 1));
            if (!QFileInfo::exists(killVariantFile(folder, 0)))
                QVERIFY(QFile::rename(killVariantFile(folder, 1), killVariantFile(folder, 0))
                        && WriteNewService(killVariantFile(folder, 0), killVariant(0)));
        }
    }
};

QTEST_GUILESS_MAIN(TestServiceDefinition)
#include "tst_servicedefinition.moc"
