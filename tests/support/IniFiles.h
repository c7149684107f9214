#pragma once

#include "common/Error.h"
#include "services/IniLib.h"
#include "support/Raised.h"
#include "support/TestHome.h"

#include <QDir>

namespace corvalent::test {

inline const QString kDefault = QStringLiteral("<default>"); // held by no test file

// Each case gets a file name of its own, because the INI cache outlives a case and must not hand it another's parse.
class IniFiles : public TestHome {
public:
    IniFiles() { QDir().mkpath(file(QStringLiteral("ini"))); }
    // A new file holding `bytes`; for null bytes a new name only, with no file.
    QString add(const QByteArray& bytes = QByteArray())
    {
        const QString name = QStringLiteral("ini/%1.ini").arg(++m_count);
        return bytes.isNull() ? file(name) : write(name, bytes);
    }

private:
    int m_count = 0;
};

inline QString readKey(const QString& file, const QString& section, const QString& key)
{
    return GetKeyValue(section, key, kDefault, QString(), QString(), file);
}

} // namespace corvalent::test
