#include "prefs/Preferences.h"

#include "support/TestHome.h"

#include <QDirIterator>
#include <QSettings>
#include <QTest>

using namespace corvalent;
using corvalent::test::TestHome;

namespace {

// The store as any other part of the program (or an older version of it) sees it.
QSettings rawStore()
{
    return QSettings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Corvalent"),
                     QStringLiteral("Corvalent"));
}

} // namespace

class TestPreferences : public QObject {
    Q_OBJECT

private:
    TestHome m_home;

private slots:
    void init()
    {
        QSettings store = rawStore();
        store.clear();
        store.sync();
    }

    // Each reader names its own default; the two readers of ComboPhone disagree and each gets its own.
    void missingKeyGivesReadersDefault_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("defaultValue");

        QTest::newRow("Country") << "Country" << "US";
        QTest::newRow("ColorStandard") << "ColorStandard" << "1";
        QTest::newRow("USAuto") << "USAuto" << "1";
        QTest::newRow("Startup") << "Startup" << "";
        QTest::newRow("Left") << "Left" << "100";
        QTest::newRow("Top") << "Top" << "100";
        QTest::newRow("ComboPhone, first reader") << "ComboPhone" << "37";
        QTest::newRow("ComboPhone, second reader") << "ComboPhone" << "38";
        QTest::newRow("service option") << "Yellow pages_option" << "0";
    }

    void missingKeyGivesReadersDefault()
    {
        QFETCH(QString, key);
        QFETCH(QString, defaultValue);

        SaveSetting(QStringLiteral("Unrelated"), QStringLiteral("x"));
        QCOMPARE(GetSetting(key, defaultValue), defaultValue);
        // Reading does not store the default: the next reader still gets its own.
        QCOMPARE(GetSetting(key, QStringLiteral("other default")), QStringLiteral("other default"));
        QVERIFY(!rawStore().contains(QStringLiteral("Settings/") + key));
    }

    void roundTrip_data()
    {
        QTest::addColumn<QString>("value");

        QTest::newRow("plain") << "CA";
        QTest::newRow("empty stays empty, not the default") << "";
        QTest::newRow("blanks kept") << "  a  b ";
        QTest::newRow("accented") << "Montréal";
        QTest::newRow("number text kept as written") << "12.50";
        QTest::newRow("negative") << "-1";
        QTest::newRow("true as text") << "true";
        QTest::newRow("False as text") << "False";
        QTest::newRow("comma list") << "1,2,3";
        QTest::newRow("comma and blank") << "a, b";
        QTest::newRow("Windows path") << "C:\\Data\\Services";
        QTest::newRow("Unix path") << "/home/user/Presets";
        QTest::newRow("INI punctuation") << "[x] a=b; c#d \"q\"";
        QTest::newRow("at sign") << "@Invalid()";
        QTest::newRow("at sign, byte array") << "@ByteArray(x)";
        QTest::newRow("long") << QString(2000, QLatin1Char('z'));
    }

    void roundTrip()
    {
        QFETCH(QString, value);
        SaveSetting(QStringLiteral("Country"), value);
        QCOMPARE(GetSetting(QStringLiteral("Country"), QStringLiteral("<default>")), value);
    }

    // Keys made from a service button's caption carry whatever the service name holds.
    void captionKeys_data()
    {
        QTest::addColumn<QString>("key");
        QTest::newRow("blank") << "Yellow pages_option";
        QTest::newRow("dot") << "Postal codes 2.1_option";
        QTest::newRow("accent") << "Annuaire Québec_option";
        QTest::newRow("INI punctuation") << "a;b=c [d] #e_option";
        QTest::newRow("ampersand and percent") << "&Maps 100%_option";
    }

    void captionKeys()
    {
        QFETCH(QString, key);
        SaveSetting(key, QStringLiteral("2"));
        SaveSetting(QStringLiteral("Option"), QStringLiteral("9"));
        QCOMPARE(GetSetting(key, QStringLiteral("0")), QStringLiteral("2"));
        QCOMPARE(GetSetting(key + QLatin1Char('x'), QStringLiteral("0")), QStringLiteral("0"));
        QCOMPARE(GetSetting(QStringLiteral("Option"), QStringLiteral("0")), QStringLiteral("9"));
    }

    void laterSaveReplacesEarlier()
    {
        SaveSetting(QStringLiteral("Left"), QStringLiteral("5"));
        SaveSetting(QStringLiteral("Top"), QStringLiteral("6"));
        SaveSetting(QStringLiteral("Left"), QStringLiteral("7"));
        QCOMPARE(GetSetting(QStringLiteral("Left"), QStringLiteral("100")), QStringLiteral("7"));
        QCOMPARE(GetSetting(QStringLiteral("Top"), QStringLiteral("100")), QStringLiteral("6"));
    }

    // Application and section names are part of the contract: the store is "Corvalent", section "Settings".
    void storeLayout()
    {
        {
            QSettings store = rawStore();
            store.setValue(QStringLiteral("Settings/Country"), QStringLiteral("FR"));
            store.setValue(QStringLiteral("USAuto"), QStringLiteral("0")); // outside the section: not ours
            store.sync();
        }
        QCOMPARE(GetSetting(QStringLiteral("Country"), QStringLiteral("US")), QStringLiteral("FR"));
        QCOMPARE(GetSetting(QStringLiteral("USAuto"), QStringLiteral("1")), QStringLiteral("1"));

        SaveSetting(QStringLiteral("Startup"), QStringLiteral("1"));
        QCOMPARE(rawStore().value(QStringLiteral("Settings/Startup")).toString(), QStringLiteral("1"));
    }

    // A save reaches the disk at once, in the test's own folder and not the user's.
    void saveIsWrittenToDisk()
    {
        SaveSetting(QStringLiteral("Country"), QStringLiteral("NZ-on-disk"));
        bool found = false;
        QDirIterator it(m_home.path() + QStringLiteral("/config"), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            found = TestHome::read(it.next()).contains("NZ-on-disk") || found;
        QVERIFY(found);
    }
};

QTEST_GUILESS_MAIN(TestPreferences)
#include "tst_preferences.moc"
