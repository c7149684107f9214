#pragma once

#include <QList>
#include <QString>
#include <functional>
#include <memory>

namespace corvalent {

// Opens a web address or a file the way the desktop's "open" does. The target is handed over exactly as given:
// no URL normalisation, no percent-encoding, no shell in between.
class Launcher {
public:
    virtual ~Launcher() = default;
    // Answers whether the opener could be started; whether the browser then succeeded is not known.
    virtual bool open(const QString& target, const QString& workingFolder) = 0;

    static Launcher& instance();
    static void install(std::unique_ptr<Launcher> launcher);
};

// Starts the desktop's opener (xdg-open, or the program named by $CORVALENT_OPENER) detached, with the target as
// its one argument. On Linux it is spawned without copying the add-on's memory first, which is most of the time a
// fork takes for a Qt program; the openers that have ended are reaped at the next open.
class DesktopLauncher : public Launcher {
public:
    bool open(const QString& target, const QString& workingFolder) override;
    static QString opener();

private:
    QList<qint64> m_children;
};

// Records what would have been opened; tests install it.
class RecordingLauncher : public Launcher {
public:
    struct Opened {
        QString target;
        QString workingFolder;
    };
    bool open(const QString& target, const QString& workingFolder) override;
    const QList<Opened>& opened() const { return m_opened; }

    // When set, runs for each open before it answers (a test can look at a file before it goes away).
    std::function<void(const QString&)> onOpen;

private:
    QList<Opened> m_opened;
};

} // namespace corvalent
