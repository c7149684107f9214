#include "download/CurlTransfer.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSocketNotifier>
#include <QTimer>
#include <curl/curl.h>
#include <mutex>

namespace corvalent {

namespace {

void initialiseCurl()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

} // namespace

CurlTransfer::CurlTransfer(const QByteArray& url, const TransferLimits& limits, bool listOnly, QObject* parent)
    : QObject(parent), m_timer(new QTimer(this)), m_limits(limits)
{
    initialiseCurl();
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, [this] { act(CURL_SOCKET_TIMEOUT, 0); });

    m_easy = curl_easy_init();
    m_multi = curl_multi_init();
    if (!m_easy || !m_multi)
        return;
    curl_easy_setopt(m_easy, CURLOPT_URL, url.constData());
    curl_easy_setopt(m_easy, CURLOPT_PROTOCOLS_STR, "ftp,http,https");
    curl_easy_setopt(m_easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    // A folder address without its final "/" is answered with a redirect to the one with it.
    curl_easy_setopt(m_easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(m_easy, CURLOPT_MAXREDIRS, 5L);
    curl_easy_setopt(m_easy, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(m_easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(m_easy, CURLOPT_USERAGENT, "Corvalent");
    curl_easy_setopt(m_easy, CURLOPT_ERRORBUFFER, m_errorBuffer);
    curl_easy_setopt(m_easy, CURLOPT_DIRLISTONLY, listOnly ? 1L : 0L);
    // Service files are CR LF on disk and must arrive byte for byte: binary transfers, never ASCII mode.
    curl_easy_setopt(m_easy, CURLOPT_TRANSFERTEXT, 0L);
    curl_easy_setopt(m_easy, CURLOPT_CONNECTTIMEOUT, long(limits.connect.count()));
    curl_easy_setopt(m_easy, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(m_easy, CURLOPT_LOW_SPEED_TIME, long(limits.stall.count()));
    // FTP waits for each reply of the server; a server that stops answering is a stall as well.
    curl_easy_setopt(m_easy, CURLOPT_SERVER_RESPONSE_TIMEOUT, long(limits.stall.count()));
    curl_easy_setopt(m_easy, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(limits.maxBytes));
    curl_easy_setopt(m_easy, CURLOPT_WRITEFUNCTION, &CurlTransfer::onData);
    curl_easy_setopt(m_easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(m_easy, CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
    curl_easy_setopt(m_easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(m_easy, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(m_easy, CURLOPT_XFERINFOFUNCTION, &CurlTransfer::onProgress);
    curl_easy_setopt(m_easy, CURLOPT_XFERINFODATA, this);

    curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, &CurlTransfer::onSocket);
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, &CurlTransfer::onTimer);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERDATA, this);
}

CurlTransfer::~CurlTransfer()
{
    if (m_status == Status::Running)
        curl_multi_remove_handle(m_multi, m_easy);
    if (m_easy)
        curl_easy_cleanup(m_easy);
    if (m_multi)
        curl_multi_cleanup(m_multi);
    stopWatching();
}

void CurlTransfer::start()
{
    if (m_status != Status::Idle)
        return;
    m_status = Status::Running;
    // Adding the handle asks for a timer of 0 ms: the transfer begins when the event loop runs next.
    if (!m_easy || !m_multi || curl_multi_add_handle(m_multi, m_easy) != CURLM_OK) {
        QTimer::singleShot(0, this, [this] { finish(Status::Failed, CURLE_FAILED_INIT); });
    }
}

void CurlTransfer::cancel()
{
    if (m_status != Status::Running)
        return;
    curl_multi_remove_handle(m_multi, m_easy);
    m_errorText = QStringLiteral("Cancelled");
    m_status = Status::Cancelled;
    stopWatching();
    emit finished();
}

int CurlTransfer::onSocket(CURL*, int socket, int what, void* self, void*)
{
    static_cast<CurlTransfer*>(self)->watch(socket, what);
    return 0;
}

int CurlTransfer::onTimer(CURLM*, long timeoutMs, void* self)
{
    auto* transfer = static_cast<CurlTransfer*>(self);
    if (timeoutMs < 0)
        transfer->m_timer->stop();
    else
        transfer->m_timer->start(int(timeoutMs));
    return 0;
}

size_t CurlTransfer::onData(char* data, size_t size, size_t count, void* self)
{
    auto* transfer = static_cast<CurlTransfer*>(self);
    const size_t bytes = size * count;
    // The announced size is checked by libcurl; a server that announces nothing or lies is stopped here.
    if (transfer->m_body.size() + qint64(bytes) > transfer->m_limits.maxBytes) {
        transfer->m_tooLarge = true;
        return 0;
    }
    transfer->m_body.append(data, qsizetype(bytes));
    return bytes;
}

size_t CurlTransfer::onHeader(char* data, size_t size, size_t count, void* self)
{
    auto* transfer = static_cast<CurlTransfer*>(self);
    const size_t bytes = size * count;
    // FTP replies ("230 Login successful.") and HTTP status lines ("HTTP/1.1 404 Not Found"); other header lines
    // say nothing about success.
    static const QRegularExpression reply(QStringLiteral(R"(^(?:HTTP/\S+\s+)?([1-5][0-9][0-9])[ -]?(.*)$)"));
    const QString line = QString::fromUtf8(data, qsizetype(bytes)).trimmed();
    const auto match = reply.match(line);
    if (match.hasMatch()) {
        transfer->m_responseCode = match.captured(1).toLong();
        transfer->m_responseText = match.captured(2).trimmed();
        if (transfer->m_responseCode == 230 || line.startsWith(QLatin1String("HTTP/")))
            transfer->m_loggedIn = true;
    }
    return bytes;
}

int CurlTransfer::onProgress(void* self, qint64 total, qint64 received, qint64, qint64)
{
    auto* transfer = static_cast<CurlTransfer*>(self);
    transfer->m_total = total;
    transfer->m_received = received;
    return 0;
}

void CurlTransfer::watch(int socket, int what)
{
    Notifiers& n = m_sockets[socket];
    auto set = [this, socket](QSocketNotifier*& notifier, QSocketNotifier::Type type, bool wanted, int event) {
        if (wanted && !notifier) {
            notifier = new QSocketNotifier(socket, type, this);
            connect(notifier, &QSocketNotifier::activated, this, [this, socket, event] { act(socket, event); });
        }
        if (notifier)
            notifier->setEnabled(wanted);
    };
    if (what == CURL_POLL_REMOVE) {
        // libcurl may be closing the socket from within one of these notifiers' own signals.
        for (QSocketNotifier* notifier : {n.read, n.write}) {
            if (notifier) {
                notifier->setEnabled(false);
                notifier->deleteLater();
            }
        }
        m_sockets.erase(socket);
        return;
    }
    set(n.read, QSocketNotifier::Read, what == CURL_POLL_IN || what == CURL_POLL_INOUT, CURL_CSELECT_IN);
    set(n.write, QSocketNotifier::Write, what == CURL_POLL_OUT || what == CURL_POLL_INOUT, CURL_CSELECT_OUT);
}

void CurlTransfer::act(int socket, int events)
{
    if (m_status != Status::Running)
        return;
    int running = 0;
    curl_multi_socket_action(m_multi, curl_socket_t(socket), events, &running);
    if (m_received != m_reported) {
        m_reported = m_received;
        emit progress(m_received, m_total);
    }
    int queued = 0;
    while (CURLMsg* message = curl_multi_info_read(m_multi, &queued)) {
        if (message->msg == CURLMSG_DONE && message->easy_handle == m_easy) {
            const CURLcode code = message->data.result;
            finish(code == CURLE_OK ? Status::Done : Status::Failed, code);
            return;
        }
    }
}

void CurlTransfer::finish(Status status, int code)
{
    if (m_status != Status::Running)
        return;
    curl_off_t pretransfer = 0;
    if (m_easy) {
        curl_easy_getinfo(m_easy, CURLINFO_PRETRANSFER_TIME_T, &pretransfer);
        curl_multi_remove_handle(m_multi, m_easy);
    }
    m_loggedIn = m_loggedIn || pretransfer > 0;
    if (status == Status::Failed) {
        if (m_tooLarge || code == CURLE_FILESIZE_EXCEEDED)
            m_errorText = QStringLiteral("The file is larger than %1 bytes").arg(m_limits.maxBytes);
        else if (m_errorBuffer[0])
            m_errorText = QString::fromUtf8(m_errorBuffer);
        else
            m_errorText = QString::fromUtf8(curl_easy_strerror(CURLcode(code)));
    }
    m_status = status;
    stopWatching();
    emit finished();
}

void CurlTransfer::stopWatching()
{
    m_timer->stop();
    for (auto& [socket, n] : m_sockets) {
        for (QSocketNotifier* notifier : {n.read, n.write}) {
            if (notifier) {
                notifier->setEnabled(false);
                notifier->deleteLater();
            }
        }
    }
    m_sockets.clear();
}

} // namespace corvalent
