#include "services/ServiceCatalogue.h"
#include "support/IniFiles.h"

#include <QTest>

using namespace corvalent;
using namespace corvalent::test;

class TestServiceCatalogue : public QObject {
    Q_OBJECT

    TestHome m_home;

    QString presets(const QString& name, const QStringList& files)
    {
        for (const QString& file : files)
            m_home.write(name + QLatin1Char('/') + file, "[Settings]\r\n");
        return m_home.file(name);
    }

private slots:
    // The extension counts from the first "." and its case matters; folders are not services.
    void listing()
    {
        const QString folder = presets(QStringLiteral("Presets"),
                                       {QStringLiteral("Yellow pages.isf"), QStringLiteral("White~pages.isf"),
                                        QStringLiteral("notes.txt"), QStringLiteral("a.b.isf"), QStringLiteral("X.ISF"),
                                        QStringLiteral("Old.isf/kept.txt")});
        const auto sorted = [](QStringList list) { list.sort(); return list; };
        QCOMPARE(sorted(ListServiceFiles(folder)), (QStringList{"White~pages", "Yellow pages"}));
        const QStringList entries = ServiceListEntries(folder, true);
        QCOMPARE(entries.value(0, QStringLiteral("none")), QString());
        QCOMPARE(sorted(entries.mid(1)), (QStringList{"White.pages", "Yellow pages"}));

        const QString missing = m_home.file(QStringLiteral("none"));
        QCOMPARE(ListServiceFiles(missing), QStringList());
        QCOMPARE(ServiceListEntries(missing, true), QStringList{QString()});
    }

    void fileWithoutDotStopsTheListing()
    {
        const QString folder = presets(QStringLiteral("Broken"), {QStringLiteral("A.isf"), QStringLiteral("README")});
        QCOMPARE(raised([&] { ListServiceFiles(folder); }).number(), ErrorNumber::InvalidArgument);
    }

    // FileStem drops every ".isf", wherever it stands, and the folders.
    void pathHelpers()
    {
        QVERIFY(!FolderFileExists(QString()));
        QCOMPARE(FileStem(QStringLiteral("/data/old.isf/x.isfy.isf")), QStringLiteral("xy"));
        QCOMPARE(FileStem(QStringLiteral("X.ISF")), QStringLiteral("X.ISF"));
    }
};

QTEST_GUILESS_MAIN(TestServiceCatalogue)
#include "tst_servicecatalogue.moc"
