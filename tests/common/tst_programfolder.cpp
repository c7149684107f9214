#include "common/ProgramFolder.h"
#include "support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace corvalent;
using corvalent::test::TestHome;

class TestProgramFolder : public QObject {
    Q_OBJECT

    TestHome m_home; // its program folder is only a scratch area here: each test names its own

    QString useHome(const QString& relative) const
    {
        const QString home = m_home.file(relative);
        qputenv("CORVALENT_HOME", QFile::encodeName(home));
        return home;
    }

private slots:
    // $CORVALENT_HOME wins; a new folder is made and seeded from the shipped data, one in use is left alone.
    void homeVariableWinsAndOnlyANewFolderIsSeeded_data()
    {
        QTest::addColumn<bool>("inUse");
        QTest::newRow("new") << false;
        QTest::newRow("in use") << true;
    }
    void homeVariableWinsAndOnlyANewFolderIsSeeded()
    {
        QFETCH(bool, inUse);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        if (inUse)
            m_home.write(name + QStringLiteral("/Presets/Mine.isf"), "[Settings]\r\n");
        const QString home = useHome(name);
        QCOMPARE(ProgramFolder::path(), home);
        const QFileInfo settings(home + QStringLiteral("/Settings.ini"));
        QCOMPARE(settings.exists(), !inUse);
        QCOMPARE(settings.isWritable(), !inUse);
        QCOMPARE(QDir(home + QStringLiteral("/Presets")).entryList({QStringLiteral("*.isf")}).size() > 1, !inUse);
    }

    void xdgDataHomeWhenNoHomeIsSet()
    {
        qunsetenv("CORVALENT_HOME");
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.file(QStringLiteral("data"))));
        QCOMPARE(ProgramFolder::path(), m_home.file(QStringLiteral("data/corvalent")));
    }

    void seedingNeverOverwrites()
    {
        m_home.write(QStringLiteral("source/Settings.ini"), "shipped");
        m_home.write(QStringLiteral("source/Presets/A.isf"), "shipped A");
        m_home.write(QStringLiteral("source/Presets/B.isf"), "shipped B");
        m_home.write(QStringLiteral("target/Presets/A.isf"), "user's A");
        // The desktop's and the contact manager's files stay where they are.
        for (const char* other : {"/corvalent-contacts.desktop", "/icons/corvalent-16.png"})
            m_home.write(QStringLiteral("source") + QLatin1String(other), "not the program folder's");

        const QString target = m_home.file(QStringLiteral("target"));
        QVERIFY(ProgramFolder::seed(target, m_home.file(QStringLiteral("source"))));
        QCOMPARE(QDir(target).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 (QStringList{QStringLiteral("Presets"), QStringLiteral("Settings.ini")}));
        QCOMPARE(TestHome::read(target + QStringLiteral("/Presets/A.isf")), QByteArray("user's A"));
        QCOMPARE(TestHome::read(target + QStringLiteral("/Presets/B.isf")), QByteArray("shipped B"));
        QCOMPARE(TestHome::read(target + QStringLiteral("/Settings.ini")), QByteArray("shipped"));
    }

    // A file the program folder lacks comes from the installed data; the folder's own copy always wins.
    void provideFindsOrBringsInAFile_data()
    {
        QTest::addColumn<QByteArray>("own");       // "" for none
        QTest::addColumn<QByteArray>("installed"); // "" for none
        QTest::addColumn<bool>("readOnlyFolder");
        QTest::addColumn<QString>("answer"); // after the program folder's path; "" for none
        QTest::newRow("in the folder") << QByteArray("user's") << QByteArray("new") << false << "/Manual.pdf";
        QTest::newRow("only installed") << QByteArray() << QByteArray("new") << false << "/Manual.pdf";
        QTest::newRow("folder refuses") << QByteArray() << QByteArray("new") << true << "-installed/Manual.pdf";
        QTest::newRow("nowhere") << QByteArray() << QByteArray() << false << "";
    }

    void provideFindsOrBringsInAFile()
    {
        QFETCH(QByteArray, own);
        QFETCH(QByteArray, installed);
        QFETCH(bool, readOnlyFolder);
        QFETCH(QString, answer);
        const QString name = QStringLiteral("provide-") + QString::fromLatin1(QTest::currentDataTag());
        m_home.write(name + QStringLiteral("/Settings.ini"), "in use");
        if (!own.isEmpty())
            m_home.write(name + QStringLiteral("/Manual.pdf"), own);
        if (!installed.isEmpty())
            m_home.write(name + QStringLiteral("-installed/Manual.pdf"), installed);
        const QString home = useHome(name);
        if (readOnlyFolder)
            QFile::setPermissions(home, QFile::ReadOwner | QFile::ExeOwner);
        if (readOnlyFolder && QFileInfo(home).isWritable())
            QSKIP("running as a user whom permissions do not stop");

        const QString file = ProgramFolder::provide(QStringLiteral("Manual.pdf"), home + QStringLiteral("-installed"));
        QFile::setPermissions(home, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(file, answer.isEmpty() ? QString() : home + answer);
        QCOMPARE(TestHome::read(file), own.isEmpty() ? installed : own);
    }

    void joinUsesOneSeparator()
    {
        QCOMPARE(ProgramFolder::join(QStringLiteral("/a/b/"), QStringLiteral("c.ini")), QStringLiteral("/a/b/c.ini"));
    }
};

QTEST_GUILESS_MAIN(TestProgramFolder)
#include "tst_programfolder.moc"
