#include "app/SingleInstance.h"

#include "common/ProgramFolder.h"

#include <QCryptographicHash>
#include <QDir>
#include <QStandardPaths>

namespace corvalent {

SingleInstance::SingleInstance() : SingleInstance(defaultLockPath()) {}

SingleInstance::SingleInstance(const QString& lockPath) : m_path(lockPath) {}

QString SingleInstance::defaultLockPath()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    // Keyed on the program folder: two program folders are two separate installations.
    const QByteArray key = QCryptographicHash::hash(QDir::cleanPath(ProgramFolder::path()).toUtf8(),
                                                    QCryptographicHash::Sha1).toHex().left(16);
    return QDir(folder).filePath(QStringLiteral("corvalent-%1.lock").arg(QString::fromLatin1(key)));
}

bool SingleInstance::acquire()
{
    if (m_lock && m_lock->isLocked())
        return true;
    m_lock = std::make_unique<QLockFile>(m_path);
    // Never treat a live holder's lock as stale, however old it is: only a lock whose process is gone is.
    m_lock->setStaleLockTime(0);
    if (m_lock->tryLock(0))
        return true;
    // Only another instance's lock keeps this one from running; a runtime folder that cannot be written to must not
    // lock the user out of the program.
    return m_lock->error() != QLockFile::LockFailedError;
}

void SingleInstance::release()
{
    m_lock.reset();
}

} // namespace corvalent
