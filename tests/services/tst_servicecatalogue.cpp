#include "services/ServiceCatalogue.h"
#include "support/IniFiles.h"

#include <QTest>

using namespace corvalent;
using namespace corvalent::test;

class TestServiceCatalogue : public QObject {
    Q_OBJECT

    TestHome m_home;

private slots:
    // The extension counts from the first "." and its case matters; folders are not services. A file without a
    // "." stops the listing.
    void listing()
    {
        for (const char* file :
             {"Yellow pages.isf", "White~pages.isf", "notes.txt", "a.b.isf", "X.ISF", "Old.isf/kept.txt"})
            m_home.write(QStringLiteral("Presets/") + QLatin1String(file), "[Settings]\r\n");
        const QString folder = m_home.file(QStringLiteral("Presets"));
        const auto sorted = [](QStringList list) { list.sort(); return list; };
        QCOMPARE(sorted(ListServiceFiles(folder)), (QStringList{"White~pages", "Yellow pages"}));
        const QStringList entries = ServiceListEntries(folder, true);
        QCOMPARE(entries.value(0, QStringLiteral("none")), QString());
        QCOMPARE(sorted(entries.mid(1)), (QStringList{"White.pages", "Yellow pages"}));

        const QString missing = m_home.file(QStringLiteral("none"));
        QCOMPARE(ListServiceFiles(missing), QStringList());
        QCOMPARE(ServiceListEntries(missing, true), QStringList{QString()});

        m_home.write(QStringLiteral("Presets/README"), "");
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
