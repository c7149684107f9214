#include "common/ProgramFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace corvalent;

namespace {

void writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

class TestProgramFolder : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private slots:
    void homeVariableWins()
    {
        const QString home = m_dir.path() + QStringLiteral("/explicit");
        qputenv("CORVALENT_HOME", QFile::encodeName(home));
        QCOMPARE(ProgramFolder::path(), home);
        QVERIFY(QDir(home).exists());
    }

    void xdgDataHomeWhenNoHomeIsSet()
    {
        qunsetenv("CORVALENT_HOME");
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_dir.path() + QStringLiteral("/data")));
        QCOMPARE(ProgramFolder::path(), m_dir.path() + QStringLiteral("/data/corvalent"));
    }

    void newFolderIsSeededFromTheShippedData()
    {
        const QString home = m_dir.path() + QStringLiteral("/fresh");
        qputenv("CORVALENT_HOME", QFile::encodeName(home));
        ProgramFolder::path();
        QVERIFY(QFile::exists(home + QStringLiteral("/Settings.ini")));
        QVERIFY(!QDir(home + QStringLiteral("/Presets")).entryList({QStringLiteral("*.isf")}).isEmpty());
        QVERIFY(QFileInfo(home + QStringLiteral("/Settings.ini")).isWritable());
    }

    void folderInUseIsNotSeeded()
    {
        const QString home = m_dir.path() + QStringLiteral("/used");
        writeFile(home + QStringLiteral("/Presets/Mine.isf"), "[Settings]\r\n");
        qputenv("CORVALENT_HOME", QFile::encodeName(home));
        ProgramFolder::path();
        QVERIFY(!QFile::exists(home + QStringLiteral("/Settings.ini")));
    }

    void seedingNeverOverwrites()
    {
        const QString source = m_dir.path() + QStringLiteral("/source");
        const QString target = m_dir.path() + QStringLiteral("/target");
        writeFile(source + QStringLiteral("/Settings.ini"), "shipped");
        writeFile(source + QStringLiteral("/Presets/A.isf"), "shipped A");
        writeFile(source + QStringLiteral("/Presets/B.isf"), "shipped B");
        writeFile(target + QStringLiteral("/Presets/A.isf"), "user's A");
        // The desktop's and the contact manager's files stay where they are.
        for (const char* other : {"/corvalent-contacts.desktop", "/corvalent-contacts-mime.xml", "/Phone.fmt",
                                  "/icons/corvalent-16.png", "/CMakeLists.txt"})
            writeFile(source + QLatin1String(other), "not the program folder's");

        QVERIFY(ProgramFolder::seed(target, source));
        QCOMPARE(QDir(target).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 (QStringList{QStringLiteral("Presets"), QStringLiteral("Settings.ini")}));
        QCOMPARE(readFile(target + QStringLiteral("/Presets/A.isf")), QByteArray("user's A"));
        QCOMPARE(readFile(target + QStringLiteral("/Presets/B.isf")), QByteArray("shipped B"));
        QCOMPARE(readFile(target + QStringLiteral("/Settings.ini")), QByteArray("shipped"));
    }

    // A file the program folder lacks comes from the installed data; the folder's own copy always wins.
    void provideFindsOrBringsInAFile_data()
    {
        QTest::addColumn<QByteArray>("own");       // "" for none
        QTest::addColumn<QByteArray>("installed"); // "" for none
        QTest::addColumn<bool>("readOnlyFolder");
        QTest::addColumn<QString>("answer");       // "own", "installed" or ""
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("in the folder") << QByteArray("user's") << QByteArray("new") << false << "own" << QByteArray("user's");
        QTest::newRow("only installed") << QByteArray() << QByteArray("new") << false << "own" << QByteArray("new");
        QTest::newRow("folder refuses") << QByteArray() << QByteArray("new") << true << "installed" << QByteArray("new");
        QTest::newRow("nowhere") << QByteArray() << QByteArray() << false << "" << QByteArray();
    }

    void provideFindsOrBringsInAFile()
    {
        QFETCH(QByteArray, own);
        QFETCH(QByteArray, installed);
        QFETCH(bool, readOnlyFolder);
        QFETCH(QString, answer);
        QFETCH(QByteArray, content);
        const QString home = m_dir.path() + QStringLiteral("/provide-") + QTest::currentDataTag();
        const QString source = home + QStringLiteral("-installed");
        writeFile(home + QStringLiteral("/Settings.ini"), "in use");
        if (!own.isEmpty())
            writeFile(home + QStringLiteral("/Manual.pdf"), own);
        if (!installed.isEmpty())
            writeFile(source + QStringLiteral("/Manual.pdf"), installed);
        qputenv("CORVALENT_HOME", QFile::encodeName(home));
        if (readOnlyFolder)
            QFile::setPermissions(home, QFile::ReadOwner | QFile::ExeOwner);
        if (readOnlyFolder && QFileInfo(home).isWritable())
            QSKIP("running as a user whom permissions do not stop");

        const QString file = ProgramFolder::provide(QStringLiteral("Manual.pdf"), source);
        QFile::setPermissions(home, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        const QString expected = answer == u"own" ? home + QStringLiteral("/Manual.pdf")
                                 : answer == u"installed" ? source + QStringLiteral("/Manual.pdf")
                                                           : QString();
        QCOMPARE(file, expected);
        QCOMPARE(readFile(file), content);
    }

    void joinUsesOneSeparator()
    {
        QCOMPARE(ProgramFolder::join(QStringLiteral("/a/b"), QStringLiteral("c.ini")), QStringLiteral("/a/b/c.ini"));
        QCOMPARE(ProgramFolder::join(QStringLiteral("/a/b/"), QStringLiteral("c.ini")), QStringLiteral("/a/b/c.ini"));
    }
};

QTEST_GUILESS_MAIN(TestProgramFolder)
#include "tst_programfolder.moc"
