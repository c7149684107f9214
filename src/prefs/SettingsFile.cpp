#include "prefs/SettingsFile.h"

#include "common/ProgramFolder.h"
#include "prefs/Preferences.h"

namespace corvalent {

QString SettingsFilePath()
{
    return GetSetting(QStringLiteral("SettingsFilePath"),
                      ProgramFolder::join(ProgramFolder::path(), QStringLiteral("Settings.ini")));
}

void SaveBrowsedSettingsFile(const QString& path)
{
    SaveSetting(QStringLiteral("SettingFilePath"), path);
}

QString PresetsDir()
{
    return GetSetting(QStringLiteral("PresetsDir"), ProgramFolder::join(ProgramFolder::path(), QStringLiteral("Presets")));
}

void SavePresetsDir(const QString& folder)
{
    SaveSetting(QStringLiteral("PresetsDir"), folder);
}

} // namespace corvalent
