#include "services/ServiceCatalogue.h"

#include "common/Error.h"
#include "common/ErrorTrap.h"
#include "common/Prompter.h"
#include "support/TestHome.h"

#include <QDir>
#include <QTest>

using namespace corvalent;
using corvalent::test::TestHome;

class TestServiceCatalogue : public QObject {
    Q_OBJECT

private:
    TestHome m_home;
    int m_folders = 0;

    // A Presets folder holding the given entries: names ending in "/" are folders, the rest empty files.
    QString presets(const QStringList& entries)
    {
        const QString folder = m_home.file(QStringLiteral("presets%1").arg(++m_folders));
        QDir().mkpath(folder);
        for (const QString& entry : entries) {
            if (entry.endsWith(QLatin1Char('/')))
                QDir(folder).mkpath(entry);
            else
                m_home.write(QDir(m_home.programFolder()).relativeFilePath(folder + QLatin1Char('/') + entry),
                             "[Settings]\r\n");
        }
        return folder;
    }

    static QStringList sorted(QStringList list)
    {
        list.sort();
        return list;
    }

private slots:
    void init() { Prompter::install(std::make_unique<RecordingPrompter>()); }

    void listing_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QStringList>("stored");    // what ListServiceFiles answers, in any order
        QTest::addColumn<QStringList>("displayed"); // what a service list shows, in any order

        QTest::newRow("blank and tilde names")
            << QStringList{"Yellow pages.isf", "White~pages.isf", "notes.txt"}
            << QStringList{"White~pages", "Yellow pages"} << QStringList{"White.pages", "Yellow pages"};
        QTest::newRow("extension counted from the first dot")
            << QStringList{"a.b.isf", "Good.isf", "y.isf.bak", "c~d~e.isf"} << QStringList{"Good", "c~d~e"}
            << QStringList{"Good", "c.d.e"};
        QTest::newRow("extension case matters") << QStringList{"X.ISF", "Y.Isf", "z.isf"} << QStringList{"z"}
                                                << QStringList{"z"};
        QTest::newRow("folders are not services") << QStringList{"Folder.isf/", "Archive/", "Real.isf"}
                                                  << QStringList{"Real"} << QStringList{"Real"};
        QTest::newRow("hidden files are not services") << QStringList{".hidden.isf", "Shown.isf"}
                                                       << QStringList{"Shown"} << QStringList{"Shown"};
        QTest::newRow("nothing but other files") << QStringList{"notes.txt", "Settings.ini"} << QStringList{}
                                                 << QStringList{};
        QTest::newRow("empty folder") << QStringList{} << QStringList{} << QStringList{};
    }

    void listing()
    {
        QFETCH(QStringList, entries);
        QFETCH(QStringList, stored);
        QFETCH(QStringList, displayed);

        const QString folder = presets(entries);
        QCOMPARE(sorted(ListServiceFiles(folder)), sorted(stored));

        QCOMPARE(sorted(ServiceListEntries(folder, false)), sorted(displayed));
        const QStringList withBlank = ServiceListEntries(folder, true);
        QVERIFY(!withBlank.isEmpty());
        QCOMPARE(withBlank.first(), QString());
        QCOMPARE(sorted(withBlank.mid(1)), sorted(displayed));
    }

    void missingFolderListsNothing()
    {
        const QString folder = m_home.file(QStringLiteral("no-such-presets"));
        QCOMPARE(ListServiceFiles(folder), QStringList());
        QCOMPARE(ServiceListEntries(folder, false), QStringList());
        QCOMPARE(ServiceListEntries(folder, true), QStringList{QString()});
        QCOMPARE(ListServiceFiles(QString()), QStringList());
    }

    // A file without any "." cannot give an extension; the listing stops with "Invalid procedure call or
    // argument", which the caller's trap reports.
    void fileWithoutDotStopsListing()
    {
        const QString folder = presets({QStringLiteral("A.isf"), QStringLiteral("README"), QStringLiteral("B.isf")});
        int number = 0;
        try {
            ListServiceFiles(folder);
        } catch (const Error& e) {
            number = e.number();
        }
        QCOMPARE(number, ErrorNumber::InvalidArgument);

        auto prompter = std::make_unique<RecordingPrompter>();
        RecordingPrompter* recorder = prompter.get();
        Prompter::install(std::move(prompter));
        QStringList shown{QStringLiteral("untouched")};
        trappedSub(QStringLiteral("frmEdit: Sub Form_Load"), [&] { shown = ServiceListEntries(folder, true); });
        QCOMPARE(shown, QStringList{QStringLiteral("untouched")});
        QCOMPARE(recorder->prompts().size(), 1);
        QVERIFY2(recorder->prompts().first().text.startsWith(
                     QStringLiteral("Error 5: 'Invalid procedure call or argument'\rin frmEdit: Sub Form_Load")),
                 qPrintable(recorder->prompts().first().text));
    }

    void folderFileExists_data()
    {
        QTest::addColumn<QString>("relative"); // below the test's own folder; "" asks for the empty path itself
        QTest::addColumn<bool>("exists");

        QTest::newRow("empty path") << "" << false;
        QTest::newRow("existing folder") << "home" << true;
        QTest::newRow("existing folder with trailing slash") << "home/" << true;
        QTest::newRow("existing file") << "home/.test" << true;
        QTest::newRow("missing file") << "home/none.isf" << false;
        QTest::newRow("missing folder") << "nowhere/" << false;
    }

    void folderFileExists()
    {
        QFETCH(QString, relative);
        QFETCH(bool, exists);
        const QString path = relative.isEmpty() ? QString() : m_home.path() + QLatin1Char('/') + relative;
        QCOMPARE(FolderFileExists(path), exists);
    }

    void fileExtension_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("extension"); // null when the name has no "."

        QTest::newRow("service") << "Yellow pages.isf" << ".isf";
        QTest::newRow("two dots") << "a.b.isf" << ".b.isf";
        QTest::newRow("upper case kept") << "X.ISF" << ".ISF";
        QTest::newRow("dot first") << ".isf" << ".isf";
        QTest::newRow("dot last") << "name." << ".";
        QTest::newRow("no dot") << "README" << QString();
        QTest::newRow("empty") << "" << QString();
    }

    void fileExtension()
    {
        QFETCH(QString, fileName);
        QFETCH(QString, extension);
        if (extension.isNull()) {
            int number = 0;
            try {
                FileExtension(fileName);
            } catch (const Error& e) {
                number = e.number();
            }
            QCOMPARE(number, ErrorNumber::InvalidArgument);
        } else {
            QCOMPARE(FileExtension(fileName), extension);
        }
    }

    void fileStem_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("stem");

        QTest::newRow("file name") << "Yellow pages.isf" << "Yellow pages";
        QTest::newRow("full path") << "/data/Presets/White~pages.isf" << "White~pages";
        QTest::newRow("folder with .isf in its name") << "/data/old.isf/Maps.isf" << "Maps";
        QTest::newRow("every .isf removed") << "a.isf.isf" << "a";
        QTest::newRow(".isf inside the name") << "x.isfy.isf" << "xy";
        QTest::newRow("upper case not removed") << "X.ISF" << "X.ISF";
        QTest::newRow("other extension kept") << "notes.txt" << "notes.txt";
        QTest::newRow("no extension") << "/data/Presets/plain" << "plain";
    }

    void fileStem()
    {
        QFETCH(QString, path);
        QFETCH(QString, stem);
        QCOMPARE(FileStem(path), stem);
    }
};

QTEST_GUILESS_MAIN(TestServiceCatalogue)
#include "tst_servicecatalogue.moc"
