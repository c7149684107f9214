#pragma once

// Shared by the main window tests: the contact manager with contacts A and B, the add-on's program folder as a new
// installation leaves it, recording stand-ins for message boxes and the browser, and the main window itself.

#include "app/MainWindow.h"
#include "app/ServicesPanel.h"
#include "common/ProgramFolder.h"
#include "common/ProgramTitle.h"
#include "prefs/Preferences.h"
#include "prefs/SettingsFile.h"
#include "services/IniLib.h"
#include "support/HostFixture.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <memory>
#include <vector>

namespace corvalent::test {

// Contact A's business rows as an address service shows them.
inline const QStringList kBoxesA{QStringLiteral("Jean Tremblay"), QStringLiteral("Acme Ltée"),
                                 QStringLiteral("1500 Rue Peel"), QStringLiteral("Montréal"), QStringLiteral("QC"),
                                 QStringLiteral("H3A 1S9"), QStringLiteral("Canada"), {}, {}, {}};
// The rows of the shipped services, for services of a test's own.
inline const QString kRows = QStringLiteral("F0=26|F1=25|F2=27|F3=30|F4=31|F5=32|F6=33|F7=0|F8=0|F9=0");
// The display names the shipped Settings.ini puts on the four buttons.
inline const QStringList kShippedButtons{QStringLiteral("OpenStreetMap address"), QStringLiteral("OpenCorporates"),
                                         QStringLiteral("Area code lookup"), QStringLiteral("SEC EDGAR companies")};

// `boxes` with one slot changed.
inline QStringList with(QStringList boxes, int slot, const QString& text)
{
    boxes[slot] = text;
    return boxes;
}

// The whole preferences store, to tell whether anything was written.
inline QMap<QString, QString> storedPreferences()
{
    const QString title = QString::fromLatin1(kProgramTitle);
    QSettings settings(QSettings::NativeFormat, QSettings::UserScope, title, title);
    QMap<QString, QString> all;
    for (const QString& key : settings.allKeys())
        all.insert(key, settings.value(key).toString());
    return all;
}

inline QString stored(const QString& key)
{
    return GetSetting(key, QStringLiteral("<none>"));
}

// Each case makes its own: a new program folder, new preferences, a new database.
class WindowFixture {
public:
    WindowFixture()
    {
        ProgramFolder::seed(host.home.programFolder(), qEnvironmentVariable("CORVALENT_TEST_DATA"));
        prompter = install<RecordingPrompter, Prompter>();
        launcher = install<RecordingLauncher, Launcher>();
        // The events of opening the database are history before any window starts.
        QCoreApplication::sendPostedEvents();
    }

    // Starts a window as the program does, through `backend` (by default the contact manager above).
    MainWindow& start(AutomationBackend* backend = nullptr)
    {
        windows.push_back(std::make_unique<MainWindow>(backend ? *backend : host.backend));
        MainWindow& w = *windows.back();
        started = w.Form_Load();
        if (started)
            w.show();
        return w;
    }
    MainWindow& window() { return *windows.front(); }

    template <typename T = QWidget>
    T* widget(const QString& name) { return window().findChild<T*>(name); }
    QLineEdit* box(int slot) { return widget<QLineEdit>(QStringLiteral("txtField(%1)").arg(slot)); }
    QPushButton* serviceButton(int index) { return widget<QPushButton>(QStringLiteral("chkServices(%1)").arg(index)); }
    QStringList boxes()
    {
        QStringList texts;
        for (int slot = 0; slot < 10; ++slot)
            texts << box(slot)->text();
        return texts;
    }
    // Types over the box's text as a user does; "" empties it.
    void type(int slot, const QString& text)
    {
        QLineEdit* field = box(slot);
        field->selectAll();
        if (text.isEmpty())
            QTest::keyClick(field, Qt::Key_Delete);
        for (const QChar c : text) // keyClicks takes ASCII only
            QTest::sendKeyEvent(QTest::Click, field, Qt::Key_unknown, QString(c), Qt::NoModifier);
    }
    void press(int button) { QTest::mouseClick(serviceButton(button), Qt::LeftButton); }
    // Puts a service of the test's own on a button, as the drop-down list would.
    void putOnButton(int button, const QString& name, const QString& keys)
    {
        writeService(host.home, QStringLiteral("Name=") + name + QLatin1Char('|') + keys, name);
        WriteKeyValue(QStringLiteral("Buttons"), QString::number(button + 1), name, SettingsFilePath());
    }
    QString serviceFile(const QString& name) const
    {
        return ProgramFolder::join(PresetsDir(), name + QStringLiteral(".isf"));
    }

    HostFixture host;
    RecordingPrompter* prompter = nullptr;
    RecordingLauncher* launcher = nullptr;
    bool started = false;
    // Last, so that the windows go before the contact manager they talk to.
    std::vector<std::unique_ptr<MainWindow>> windows;
};

} // namespace corvalent::test
