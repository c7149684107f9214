// The preferences window driven by its control names: what it shows of the stored settings, what OK and Browse
// store, and the main window taking the new colours at once.

#include "../app/WindowFixture.h"
#include "support/Controls.h"

#include "app/ColourScheme.h"
#include "prefs/PreferencesWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>

using namespace corvalent;
using namespace Qt::StringLiterals;

using test::control;

class TestPreferencesWindow : public QObject {
    Q_OBJECT

    std::unique_ptr<test::WindowFixture> m;

    QPointer<PreferencesWindow> open()
    {
        auto w = new PreferencesWindow;
        w->Form_Load();
        w->show();
        return w;
    }

private slots:
    void init() { m = std::make_unique<test::WindowFixture>(); }
    void cleanup() { m.reset(); }

    void shows_data()
    {
        QTest::addColumn<QStringList>("stored"); // KEY=VALUE
        QTest::addColumn<QString>("country");
        QTest::addColumn<bool>("standard");
        QTest::addColumn<bool>("usAuto");
        QTest::addColumn<bool>("contactInfo");
        QTest::newRow("nothing stored") << QStringList() << u"US"_s << true << true << false;
        QTest::newRow("stored") << QStringList{u"Country=CA"_s, u"ColorStandard=0"_s, u"USAuto=0"_s, u"Startup=1"_s}
                                << u"CA"_s << false << false << true;
        QTest::newRow("empty country, words for Booleans")
            << QStringList{u"Country="_s, u"ColorStandard=True"_s, u"Startup=0"_s} << u"US"_s << true << true << false;
    }

    void shows()
    {
        QFETCH(QStringList, stored);
        QFETCH(bool, standard);
        QFETCH(bool, contactInfo);
        for (const QString& item : stored)
            SaveSetting(item.section(u'=', 0, 0), item.section(u'=', 1));
        QPointer<PreferencesWindow> w = open();
        QTEST(control<QLineEdit>(w, u"txtCountry"_s)->text(), "country");
        QCOMPARE(control<QRadioButton>(w, u"optStandard"_s)->isChecked(), standard);
        QCOMPARE(control<QRadioButton>(w, u"optModern"_s)->isChecked(), !standard);
        QTEST(control<QCheckBox>(w, u"chkUSAuto"_s)->isChecked(), "usAuto");
        QCOMPARE(control<QRadioButton>(w, u"optStartup(1)"_s)->isChecked(), contactInfo);
        QCOMPARE(control<QRadioButton>(w, u"optStartup(0)"_s)->isChecked(), !contactInfo);
        QCOMPARE(control<QComboBox>(w, u"cboFile"_s)->currentText(), u"Settings file"_s);
        QCOMPARE(control<QLineEdit>(w, u"txtPath"_s)->text(), QDir::toNativeSeparators(SettingsFilePath()));
        QTest::mouseClick(control<QPushButton>(w, u"cmdCancel"_s), Qt::LeftButton);
        QTRY_VERIFY(w.isNull());
        QCOMPARE(test::storedPreferences().size(), stored.size());
    }

    // OK stores the four settings, under their own names and nothing else, and the main window takes the colours at
    // once.
    void okStoresAndRefreshes()
    {
        MainWindow& main = m->start();
        main.findChild<QAction*>(u"mnuPreferences"_s)->trigger();
        auto w = main.findChild<PreferencesWindow*>(u"frmPreferences"_s);
        QVERIFY(w && w->isModal());
        control<QLineEdit>(w, u"txtCountry"_s)->setText(u"FR"_s);
        QTest::mouseClick(control<QRadioButton>(w, u"optModern"_s), Qt::LeftButton);
        QTest::mouseClick(control<QCheckBox>(w, u"chkUSAuto"_s), Qt::LeftButton);
        QTest::mouseClick(control<QRadioButton>(w, u"optStartup(1)"_s), Qt::LeftButton);
        QTest::mouseClick(control<QPushButton>(w, u"cmdOK"_s), Qt::LeftButton);
        const QMap<QString, QString> stored{{u"Settings/Country"_s, u"FR"_s}, {u"Settings/ColorStandard"_s, u"0"_s},
                                           {u"Settings/USAuto"_s, u"0"_s}, {u"Settings/Startup"_s, u"1"_s}};
        QCOMPARE(test::storedPreferences(), stored);
        QCOMPARE(m->box(0)->palette().color(QPalette::Base), ColourScheme::Modern().back);
    }

    // Browse stores a location at once: the settings file under a key no reader uses, the Presets folder as the
    // folder of the file chosen in it; a cancelled Presets dialog ends in the error box and stores nothing.
    void browse_data()
    {
        QTest::addColumn<int>("item");
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("errorBox");
        QTest::newRow("settings file") << 0 << u"/data/other.ini"_s << u"SettingFilePath"_s << u"/data/other.ini"_s
                                       << false;
        QTest::newRow("presets folder") << 1 << u"/data/Services/x.iss"_s << u"PresetsDir"_s << u"/data/Services"_s
                                        << false;
        QTest::newRow("presets folder, cancelled") << 1 << QString() << u"PresetsDir"_s << u"<none>"_s << true;
    }

    void browse()
    {
        QFETCH(int, item);
        QFETCH(QString, chosen);
        QFETCH(QString, key);
        QFETCH(QString, stored);
        QFETCH(bool, errorBox);
        QPointer<PreferencesWindow> w = open();
        const QString settingsFile = SettingsFilePath();
        control<QComboBox>(w, u"cboFile"_s)->setCurrentIndex(item);
        m->prompter->scriptFileName(chosen);
        QTest::mouseClick(control<QPushButton>(w, u"cmdBrowse"_s), Qt::LeftButton);
        QCOMPARE(GetSetting(key, u"<none>"_s), stored);
        if (key == u"PresetsDir" && !errorBox) // the services are read from the chosen folder from now on
            QCOMPARE(PresetsDir(), stored);
        QCOMPARE(m->prompter->prompts().size(), errorBox ? 2 : 1); // the file dialog, and the error box
        if (!errorBox)
            QCOMPARE(control<QLineEdit>(w, u"txtPath"_s)->text(), QDir::toNativeSeparators(stored));
        QTest::mouseClick(control<QPushButton>(w, u"cmdCancel"_s), Qt::LeftButton);
        QTRY_VERIFY(w.isNull());
        // A browsed settings file is never used: the window shows the one in force again.
        QCOMPARE(SettingsFilePath(), settingsFile);
    }
};

QTEST_MAIN(TestPreferencesWindow)
#include "tst_preferenceswindow.moc"
