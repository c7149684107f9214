#include "support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

namespace corvalent::test {

TestHome::TestHome()
{
    QDir(m_dir.path()).mkpath(QStringLiteral("home"));
    QDir(m_dir.path()).mkpath(QStringLiteral("config"));
    qputenv("CORVALENT_HOME", QFile::encodeName(programFolder()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_dir.path() + QStringLiteral("/config")));
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.path() + QStringLiteral("/config"));
    // Keep the folder non-empty so that it is not seeded with the shipped data unless a test asks for that.
    write(QStringLiteral(".test"), QByteArray());
}

QString TestHome::programFolder() const
{
    return m_dir.path() + QStringLiteral("/home");
}

QString TestHome::file(const QString& relative) const
{
    return programFolder() + QLatin1Char('/') + relative;
}

QString TestHome::write(const QString& relative, const QByteArray& bytes) const
{
    const QString path = file(relative);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QByteArray TestHome::read(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace corvalent::test
