#include "request/PostPageCleaner.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>

#ifdef Q_OS_LINUX
#include <sys/inotify.h>
#include <unistd.h>
#endif

namespace corvalent {

PostPageCleaner& PostPageCleaner::instance()
{
    static PostPageCleaner* cleaner = [] {
        auto* c = new PostPageCleaner;
        if (auto* app = QCoreApplication::instance()) {
            c->setParent(app);
            QObject::connect(app, &QCoreApplication::aboutToQuit, c, &PostPageCleaner::deleteNow);
        }
        return c;
    }();
    return *cleaner;
}

PostPageCleaner::PostPageCleaner()
{
    m_quiet.setSingleShot(true);
    m_deadline.setSingleShot(true);
    setDelays(std::chrono::seconds(10), std::chrono::minutes(2));
    connect(&m_quiet, &QTimer::timeout, this, &PostPageCleaner::deleteNow);
    connect(&m_deadline, &QTimer::timeout, this, &PostPageCleaner::deleteNow);
}

PostPageCleaner::~PostPageCleaner()
{
    deleteNow();
}

void PostPageCleaner::setDelays(std::chrono::milliseconds quiet, std::chrono::milliseconds deadline)
{
    m_quiet.setInterval(quiet);
    m_deadline.setInterval(deadline);
}

void PostPageCleaner::watch(const QString& path)
{
    forget();
    m_path = path;
    m_openCount = 0;
    m_read = false;
#ifdef Q_OS_LINUX
    m_inotify = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_inotify >= 0) {
        m_watch = inotify_add_watch(m_inotify, QFile::encodeName(path).constData(),
                                    IN_OPEN | IN_CLOSE_NOWRITE | IN_CLOSE_WRITE);
        if (m_watch >= 0) {
            m_notifier = new QSocketNotifier(m_inotify, QSocketNotifier::Read, this);
            connect(m_notifier, &QSocketNotifier::activated, this, &PostPageCleaner::readEvents);
        }
    }
#endif
    m_deadline.start();
}

void PostPageCleaner::readEvents()
{
#ifdef Q_OS_LINUX
    alignas(inotify_event) char buffer[4096];
    for (;;) {
        const ssize_t n = ::read(m_inotify, buffer, sizeof buffer);
        if (n <= 0)
            break;
        for (ssize_t at = 0; at < n;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            if (event->mask & IN_OPEN) {
                ++m_openCount;
                m_quiet.stop();
            }
            if (event->mask & (IN_CLOSE_NOWRITE | IN_CLOSE_WRITE)) {
                m_openCount = std::max(0, m_openCount - 1);
                if (event->mask & IN_CLOSE_NOWRITE)
                    m_read = true;
                if (m_read && m_openCount == 0)
                    m_quiet.start();
            }
            at += ssize_t(sizeof(inotify_event) + event->len);
        }
    }
#endif
}

void PostPageCleaner::stopWatching()
{
    m_quiet.stop();
    m_deadline.stop();
    delete m_notifier;
    m_notifier = nullptr;
#ifdef Q_OS_LINUX
    if (m_inotify >= 0)
        ::close(m_inotify);
#endif
    m_inotify = -1;
    m_watch = -1;
}

void PostPageCleaner::forget()
{
    stopWatching();
    m_path.clear();
}

void PostPageCleaner::deleteNow()
{
    const QString path = m_path;
    forget();
    if (!path.isEmpty() && QFile::remove(path))
        emit deleted(path);
}

} // namespace corvalent
