#pragma once

// Real servers on 127.0.0.1 for the download tests (servers.py), each on a free port, and the folder they serve.

#include "support/TestHome.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QProcess>
#include <QStringList>

namespace corvalent::test {

// A service file as offices keep them: CR LF line ends, a lone LF and a byte that is not ASCII, all of which must
// arrive unchanged.
inline const QByteArray kServedPostal = "[Settings]\r\nName=Postal 2~1\r\nURL=http://example.org/?\r\nL7=Caf\xe9\n";
inline const QByteArray kServedYellow = "[Settings]\r\nName=Yellow pages\r\n";

class TestServer {
public:
    // Starts one kind of servers.py and waits (bounded) until it says its port.
    explicit TestServer(const QString& kind, const QString& folder = QString())
    {
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(QStringLiteral(CORVALENT_PYTHON), {QStringLiteral(CORVALENT_TEST_SERVERS), kind, folder});
        const QDeadlineTimer deadline(20000);
        while (!m_process.canReadLine() && !deadline.hasExpired())
            m_process.waitForReadyRead(int(deadline.remainingTime()));
        m_port = m_process.readLine().trimmed().toInt();
        if (m_port <= 0)
            qFatal("the %s server did not start", qPrintable(kind));
    }
    ~TestServer()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    QString url(const char* scheme) const
    {
        return QStringLiteral("%1://127.0.0.1:%2/").arg(QLatin1String(scheme)).arg(m_port);
    }

private:
    QProcess m_process;
    int m_port = 0;
};

// The folders the servers serve, in the test's home: "served" with two services and a text file, "empty".
struct ServedFolders {
    explicit ServedFolders(const TestHome& home)
        : full(home.path() + QStringLiteral("/served")), empty(home.path() + QStringLiteral("/empty"))
    {
        home.write(QStringLiteral("../served/Postal 2~1.isf"), kServedPostal);
        home.write(QStringLiteral("../served/Yellow pages.isf"), kServedYellow);
        home.write(QStringLiteral("../served/notes.txt"), "not a service");
        QDir().mkpath(empty);
    }
    QString full, empty;
};

} // namespace corvalent::test
