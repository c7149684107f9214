#pragma once

#include <QLockFile>
#include <QString>
#include <memory>

namespace corvalent {

// One add-on per user and program folder. The lock lives in the session's runtime folder and is released when
// the holder ends, also when it crashes (a lock whose process is gone is taken over), so a crash never locks the
// user out.
class SingleInstance {
public:
    // The lock of the program folder in use.
    SingleInstance();
    explicit SingleInstance(const QString& lockPath);

    // Takes the lock; false when another running instance holds it (a lock that cannot be made at all does not
    // count). Taking it twice is harmless.
    bool acquire();
    void release();

    static QString defaultLockPath();

private:
    QString m_path;
    std::unique_ptr<QLockFile> m_lock;
};

} // namespace corvalent
