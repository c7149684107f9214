#include "app/SingleInstance.h"

#include "common/ProgramFolder.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

namespace corvalent {

namespace {

// Long enough for a busy holder's event loop to accept the connection, short enough that a hung holder does not
// keep the refused start waiting.
constexpr int kAskMs = 2000;
const QByteArray kComeForward = QByteArrayLiteral("come forward\n");

} // namespace

SingleInstance::SingleInstance() : SingleInstance(defaultLockPath()) {}

SingleInstance::SingleInstance(const QString& lockPath) : m_path(lockPath) {}

SingleInstance::~SingleInstance() = default;

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

QString SingleInstance::socketName() const
{
    return m_path + QStringLiteral(".socket");
}

bool SingleInstance::acquire()
{
    if (m_lock && m_lock->isLocked())
        return true;
    m_lock = std::make_unique<QLockFile>(m_path);
    // Never treat a live holder's lock as stale, however old it is: only a lock whose process is gone is.
    m_lock->setStaleLockTime(0);
    if (m_lock->tryLock(0)) {
        listen();
        return true;
    }
    // Only another instance's lock keeps this one from running; a runtime folder that cannot be written to must not
    // lock the user out of the program.
    return m_lock->error() != QLockFile::LockFailedError;
}

void SingleInstance::listen()
{
    m_server = std::make_unique<QLocalServer>();
    // The socket file of a holder that crashed is left behind; holding the lock proves it is nobody's now.
    QLocalServer::removeServer(socketName());
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(socketName())) {
        m_server.reset();
        return;
    }
    connect(m_server.get(), &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* caller = m_server->nextPendingConnection()) {
            connect(caller, &QLocalSocket::disconnected, caller, &QObject::deleteLater);
            connect(caller, &QLocalSocket::readyRead, this, [this, caller] {
                const bool asked = caller->readAll().contains(kComeForward);
                caller->disconnectFromServer();
                // Later, not from inside the socket's handler: coming forward waits for the window manager with
                // the event loop running, and the socket may be deleted meanwhile.
                if (asked)
                    QMetaObject::invokeMethod(this, &SingleInstance::comeForwardRequested, Qt::QueuedConnection);
            });
        }
    });
}

void SingleInstance::release()
{
    m_server.reset();
    m_lock.reset();
}

bool SingleInstance::askHolderToComeForward()
{
    QLocalSocket socket;
    socket.connectToServer(socketName());
    if (!socket.waitForConnected(kAskMs))
        return false;
    socket.write(kComeForward);
    return socket.waitForBytesWritten(kAskMs);
}

} // namespace corvalent
