#include "prefs/Preferences.h"

#include "common/ProgramTitle.h"

#include <QSettings>

namespace corvalent {

namespace {

QString fullKey(const QString& key)
{
    return QStringLiteral("Settings/") + key;
}

QSettings store()
{
    const QString title = QString::fromLatin1(kProgramTitle);
    return QSettings(QSettings::NativeFormat, QSettings::UserScope, title, title);
}

} // namespace

QString GetSetting(const QString& key, const QString& defaultValue)
{
    const QVariant value = store().value(fullKey(key));
    return value.isValid() ? value.toString() : defaultValue;
}

void SaveSetting(const QString& key, const QString& value)
{
    QSettings settings = store();
    settings.setValue(fullKey(key), value);
    settings.sync();
}

} // namespace corvalent
