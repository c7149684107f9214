#include "prefs/Preferences.h"

#include "support/TestHome.h"

#include <QSettings>
#include <QTest>

using namespace corvalent;

class TestPreferences : public QObject {
    Q_OBJECT

    corvalent::test::TestHome m_home;

    // The store as other parts of the program and its older versions see it: its names are part of the contract.
    // Where the settings file and the Presets folder are kept is tst_preferenceswindow's.
    static QSettings rawStore() { return {QSettings::NativeFormat, QSettings::UserScope, "Corvalent", "Corvalent"}; }

private slots:
    void init() { rawStore().clear(); }

    void roundTrip_data()
    {
        QTest::addColumn<QString>("value");
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
};

QTEST_GUILESS_MAIN(TestPreferences)
#include "tst_preferences.moc"
