#pragma once

#include <QString>

namespace corvalent {

// The settings file in use: `SettingsFilePath` of the preferences, by default Settings.ini in the program's folder.
QString SettingsFilePath();

// What the preferences window's Browse stores for a chosen settings file. It is written under the key
// `SettingFilePath`, which no reader looks at: a chosen settings file is shown once and never used. Both key
// names stay exactly so.
void SaveBrowsedSettingsFile(const QString& path);

// The folder of the service files: `PresetsDir` of the preferences, by default Presets in the program's folder.
QString PresetsDir();
void SavePresetsDir(const QString& folder);

} // namespace corvalent
