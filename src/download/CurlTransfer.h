#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <chrono>
#include <map>

class QSocketNotifier;
class QTimer;
typedef void CURL;
typedef void CURLM;

namespace corvalent {

// How long a transfer may take to connect, how long it may go without receiving a byte, and how many bytes it
// may bring at most. A server that breaks any of them ends the transfer with an error.
struct TransferLimits {
    std::chrono::seconds connect{15};
    std::chrono::seconds stall{30};
    qint64 maxBytes = 1024 * 1024;
};

// One download with libcurl, driven from the Qt event loop: libcurl's multi interface tells which sockets to
// watch and when to wake it, socket notifiers and a timer do the watching. Nothing blocks and no thread is
// started, so the window stays responsive. The whole body is kept in memory (it is small by its limit).
class CurlTransfer : public QObject {
    Q_OBJECT
public:
    enum class Status { Idle, Running, Done, Failed, Cancelled };

    // `listOnly` asks an FTP server for its name list instead of a file.
    CurlTransfer(const QByteArray& url, const TransferLimits& limits, bool listOnly, QObject* parent = nullptr);
    ~CurlTransfer() override;

    // Begins the transfer; finished() comes later from the event loop, never from within start().
    void start();
    // Abandons a running transfer; finished() follows at once with the status Cancelled.
    void cancel();

    Status status() const { return m_status; }
    const QByteArray& body() const { return m_body; }
    // curl's own words for what went wrong.
    const QString& errorText() const { return m_errorText; }
    // Whether the server let us in (FTP log-in done, or the HTTP request sent) before the transfer ended.
    bool loggedIn() const { return m_loggedIn; }
    // The last answer of the server: its code (FTP reply or HTTP status) and its text.
    long responseCode() const { return m_responseCode; }
    const QString& responseText() const { return m_responseText; }

signals:
    void progress(qint64 received, qint64 total);
    // Receivers must not delete the transfer directly (deleteLater() is fine).
    void finished();

private:
    static int onSocket(CURL* easy, int socket, int what, void* self, void* socketData);
    static int onTimer(CURLM* multi, long timeoutMs, void* self);
    static size_t onData(char* data, size_t size, size_t count, void* self);
    static size_t onHeader(char* data, size_t size, size_t count, void* self);
    static int onProgress(void* self, qint64 total, qint64 received, qint64, qint64);

    void watch(int socket, int what);
    void act(int socket, int events);
    void finish(Status status, int code);
    void stopWatching();

    CURL* m_easy = nullptr;
    CURLM* m_multi = nullptr;
    QTimer* m_timer = nullptr;
    struct Notifiers {
        QSocketNotifier* read = nullptr;
        QSocketNotifier* write = nullptr;
    };
    std::map<int, Notifiers> m_sockets;
    TransferLimits m_limits;
    Status m_status = Status::Idle;
    QByteArray m_body;
    bool m_tooLarge = false;
    bool m_loggedIn = false;
    qint64 m_received = 0, m_total = 0, m_reported = -1;
    long m_responseCode = 0;
    QString m_responseText;
    QString m_errorText;
    char m_errorBuffer[256] = {};
};

} // namespace corvalent
