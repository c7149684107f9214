#include "services/IniLib.h"

#include "common/ErrorTrap.h"
#include "common/ProgramFolder.h"
#include "common/VbRuntime.h"
#include "services/IniCache.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>

namespace corvalent {

namespace {

QString& settingsFile()
{
    static QString path;
    return path;
}

// A write through a symbolic link updates the file it points to and leaves the link in place.
QString writeTarget(const QString& path)
{
    const QFileInfo info(path);
    if (info.isSymLink()) {
        const QString target = info.symLinkTarget();
        if (!target.isEmpty())
            return target;
    }
    return path;
}

} // namespace

void SetIniSettingsFile(const QString& path)
{
    settingsFile() = path;
}

QString IniSettingsFile()
{
    if (settingsFile().isEmpty())
        return ProgramFolder::join(ProgramFolder::path(), QStringLiteral("Settings.ini"));
    return settingsFile();
}

QString GetKeyValue(const QString& Section, const QString& KeyName, const QString& Default,
                    const QString& KeyType, const QString& FailValue, QString& FileName)
{
    QString result;
    trappedSub(QStringLiteral("IniLib: Function GetKeyValue"), [&] {
        if (FileName.isEmpty())
            FileName = IniSettingsFile();
        const auto doc = IniCache::instance().load(FileName);
        const auto value = doc ? doc->value(Section, KeyName) : std::nullopt;
        result = value && !value->isEmpty() ? value->left(kMaxIniValueLength) : Default;
        // The cut counts UTF-16 units; half a character would reach a request as garbage.
        if (result.size() == kMaxIniValueLength && result.back().isHighSurrogate())
            result.chop(1);
        if (KeyType == QLatin1String("Numeric") || KeyType == QLatin1String("Boolean")) {
            // Booleans are stored as numbers; the words True and False fail this check on purpose.
            if (!IsNumeric(result) && !FailValue.isEmpty())
                result = FailValue;
        }
    });
    return result;
}

QString GetKeyValue(const QString& Section, const QString& KeyName, const QString& Default,
                    const QString& KeyType, const QString& FailValue, const QString& FileName)
{
    QString file = FileName;
    return GetKeyValue(Section, KeyName, Default, KeyType, FailValue, file);
}

bool WriteKeyValue(const QString& Section, const QString& KeyName, const QString& Value, QString& FileName)
{
    if (FileName.isEmpty())
        FileName = IniSettingsFile();
    return WriteKeyValues(Section, {{KeyName, Value}}, FileName);
}

bool WriteKeyValues(const QString& Section, const IniKeys& keys, const QString& FileName,
                    const std::optional<QByteArray>& startFrom)
{
    const QString file = FileName.isEmpty() ? IniSettingsFile() : FileName;
    auto writable = [&](const std::pair<QString, QString>& key) {
        return !key.second.contains(QLatin1Char('\n')) && !key.second.contains(QLatin1Char('\r'))
            && !Section.isEmpty() && !key.first.isEmpty();
    };
    const bool allWritable = std::all_of(keys.begin(), keys.end(), writable);
    // Nothing to write leaves the file alone, as a single refused write always has.
    if (!startFrom && std::none_of(keys.begin(), keys.end(), writable))
        return false;

    const QString target = writeTarget(file);
    IniDocument doc;
    if (startFrom) {
        doc = IniDocument::parse(*startFrom);
    } else {
        QFile existing(target);
        if (existing.exists()) {
            if (!existing.open(QIODevice::ReadOnly))
                return false;
            doc = IniDocument::parse(existing.readAll());
            existing.close();
        }
    }
    for (const auto& key : keys) {
        if (writable(key))
            doc.setValue(Section, key.first, key.second);
    }

    QSaveFile out(target);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    const QByteArray bytes = doc.serialize();
    if (out.write(bytes) != bytes.size()) {
        out.cancelWriting();
        return false;
    }
    const bool ok = out.commit();
    IniCache::instance().invalidate(file);
    IniCache::instance().invalidate(target);
    return ok && allWritable;
}

bool WriteKeyValue(const QString& Section, const QString& KeyName, const QString& Value, const QString& FileName)
{
    QString file = FileName;
    return WriteKeyValue(Section, KeyName, Value, file);
}

} // namespace corvalent
