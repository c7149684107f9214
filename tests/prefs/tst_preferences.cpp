#include "prefs/Preferences.h"
#include "prefs/SettingsFile.h"

#include "support/TestHome.h"

#include <QSettings>
#include <QTest>

using namespace corvalent;

class TestPreferences : public QObject {
    Q_OBJECT

    corvalent::test::TestHome m_home;

    // The store as other parts of the program and its older versions see it: its names are part of the contract.
    static QSettings rawStore() { return {QSettings::NativeFormat, QSettings::UserScope, "Corvalent", "Corvalent"}; }

private slots:
    void init() { rawStore().clear(); }

    void roundTrip_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("plain") << "CA";
        QTest::newRow("empty, not the default") << "";
        QTest::newRow("comma list stays text") << "1,2,3";
    }

    void roundTrip()
    {
        QFETCH(QString, value);
        SaveSetting(QStringLiteral("Country"), value);
        QCOMPARE(GetSetting(QStringLiteral("Country"), QStringLiteral("<default>")), value);
        QCOMPARE(rawStore().value(QStringLiteral("Settings/Country")).toString(), value);
    }

    // Browse stores the chosen file under SettingFilePath, which no reader looks at: both names stay exactly so.
    void settingsFileAndPresets()
    {
        QCOMPARE(PresetsDir(), m_home.file(QStringLiteral("Presets")));
        SavePresetsDir(QStringLiteral("/data/My Services"));
        QCOMPARE(PresetsDir(), QStringLiteral("/data/My Services"));

        SaveBrowsedSettingsFile(QStringLiteral("/elsewhere/Mine.ini"));
        QCOMPARE(rawStore().value(QStringLiteral("Settings/SettingFilePath")).toString(),
                 QStringLiteral("/elsewhere/Mine.ini"));
        QCOMPARE(SettingsFilePath(), m_home.file(QStringLiteral("Settings.ini")));

        SaveSetting(QStringLiteral("SettingsFilePath"), QStringLiteral("/shared/Team.ini"));
        QCOMPARE(SettingsFilePath(), QStringLiteral("/shared/Team.ini"));
    }
};

QTEST_GUILESS_MAIN(TestPreferences)
#include "tst_preferences.moc"
