#pragma once

#include <QLockFile>
#include <QObject>
#include <QString>
#include <memory>

class QLocalServer;

namespace corvalent {

// One add-on per user and program folder. The lock lives in the session's runtime folder and is released when
// the holder ends, also when it crashes (a lock whose process is gone is taken over), so a crash never locks the
// user out. The holder also listens on a local socket beside the lock, so that a second start, which must not
// run, can ask it to come forward.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    // The lock of the program folder in use.
    SingleInstance();
    explicit SingleInstance(const QString& lockPath);
    ~SingleInstance() override;

    // Takes the lock; false when another running instance holds it (a lock that cannot be made at all does not
    // count). Taking it twice is harmless.
    bool acquire();
    void release();
    // Asks the instance that holds the lock to come forward; answers whether it was reached.
    bool askHolderToComeForward();

    static QString defaultLockPath();

signals:
    // Another start asked this instance, the holder, to come forward.
    void comeForwardRequested();

private:
    QString socketName() const;
    void listen();

    QString m_path;
    std::unique_ptr<QLockFile> m_lock;
    std::unique_ptr<QLocalServer> m_server;
};

} // namespace corvalent
