#include "prefs/SettingsFile.h"

#include "prefs/Preferences.h"
#include "support/TestHome.h"

#include <QDir>
#include <QSettings>
#include <QTest>

using namespace corvalent;
using corvalent::test::TestHome;

class TestSettingsFile : public QObject {
    Q_OBJECT

private:
    TestHome m_home;

private slots:
    void init()
    {
        QSettings store(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Corvalent"),
                        QStringLiteral("Corvalent"));
        store.clear();
        store.sync();
    }

    void defaults()
    {
        QCOMPARE(SettingsFilePath(), m_home.programFolder() + QStringLiteral("/Settings.ini"));
        QCOMPARE(PresetsDir(), m_home.programFolder() + QStringLiteral("/Presets"));
    }

    // Browse stores a chosen settings file under SettingFilePath, a key no reader looks at: the default stays in
    // force. Both key names are kept exactly so.
    void browsedSettingsFileIsNeverUsed()
    {
        const QString chosen = m_home.path() + QStringLiteral("/elsewhere/Mine.ini");
        SaveBrowsedSettingsFile(chosen);

        QCOMPARE(GetSetting(QStringLiteral("SettingFilePath"), QString()), chosen);
        QCOMPARE(GetSetting(QStringLiteral("SettingsFilePath"), QStringLiteral("<unset>")), QStringLiteral("<unset>"));
        QCOMPARE(SettingsFilePath(), m_home.programFolder() + QStringLiteral("/Settings.ini"));
    }

    // A SettingsFilePath that is in the store (from an older version, or set by hand) is the one used.
    void storedSettingsFilePathIsUsed()
    {
        const QString stored = m_home.path() + QStringLiteral("/shared/Team.ini");
        SaveSetting(QStringLiteral("SettingsFilePath"), stored);
        QCOMPARE(SettingsFilePath(), stored);
        SaveBrowsedSettingsFile(m_home.path() + QStringLiteral("/other.ini"));
        QCOMPARE(SettingsFilePath(), stored);
    }

    void presetsDirSaved_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("absolute") << "/data/Services";
        QTest::newRow("with blanks") << "/data/My Services";
        QTest::newRow("Windows style") << "C:\\Data\\Services";
    }

    void presetsDirSaved()
    {
        QFETCH(QString, folder);
        SavePresetsDir(folder);
        QCOMPARE(PresetsDir(), folder);
        QCOMPARE(GetSetting(QStringLiteral("PresetsDir"), QString()), folder);
        QCOMPARE(SettingsFilePath(), m_home.programFolder() + QStringLiteral("/Settings.ini"));
    }

    // The defaults follow the program folder in use, not the one of the first call.
    void defaultsFollowProgramFolder()
    {
        QCOMPARE(SettingsFilePath(), m_home.programFolder() + QStringLiteral("/Settings.ini"));
        const QString other = m_home.path() + QStringLiteral("/other-home");
        m_home.write(QStringLiteral("../other-home/.keep"), QByteArray()); // not empty: nothing is seeded into it
        const QByteArray before = qgetenv("CORVALENT_HOME");
        qputenv("CORVALENT_HOME", QFile::encodeName(other));
        auto restore = qScopeGuard([&] { qputenv("CORVALENT_HOME", before); });
        QCOMPARE(SettingsFilePath(), other + QStringLiteral("/Settings.ini"));
        QCOMPARE(PresetsDir(), other + QStringLiteral("/Presets"));
    }
};

QTEST_GUILESS_MAIN(TestSettingsFile)
#include "tst_settingsfile.moc"
