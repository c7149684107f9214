#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>

class QSocketNotifier;

namespace corvalent {

// Deletes the POST page once the browser has read it. The opener returns before the browser has even started, so
// the page cannot go at once: it goes when it has been read and nobody has opened it again for a quiet spell
// (the desktop's opener sniffs the file before the browser reads it), at the latest after a bounded time, and in
// any case when the program ends. Where file access cannot be watched, only the bound applies.
class PostPageCleaner : public QObject {
    Q_OBJECT
public:
    static PostPageCleaner& instance();
    ~PostPageCleaner() override;

    void watch(const QString& path);
    // Stops watching without deleting (the page is about to be written anew).
    void forget();
    // Deletes the watched page now.
    void deleteNow();

    void setDelays(std::chrono::milliseconds quiet, std::chrono::milliseconds deadline);
    QString watchedPath() const { return m_path; }

signals:
    void deleted(const QString& path);

private:
    PostPageCleaner();
    void readEvents();
    void stopWatching();

    QString m_path;
    int m_inotify = -1;
    int m_watch = -1;
    QSocketNotifier* m_notifier = nullptr;
    int m_openCount = 0;
    bool m_read = false;
    QTimer m_quiet;
    QTimer m_deadline;
};

} // namespace corvalent
