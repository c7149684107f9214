#pragma once

#include "download/CurlTransfer.h"
#include "download/ServerListing.h"

#include <QObject>
#include <QPointer>
#include <QString>

namespace corvalent {

// The preferences key of the server's address, and the address used when it is not set.
inline const QString kServicesServerKey = QStringLiteral("ServicesServer");
inline const QString kDefaultServicesServer = QStringLiteral("ftp://ftp.corvalent.org/");

// The server's address from the preferences.
QString ServicesServer();

// Why a request to the server failed: the name of the step that failed, as error reports name it
// ("InternetConnect", "FtpFindFirstFile", "InternetFindNextFile", "FtpGetFile"), libcurl's error text, and the
// server's own last answer when it refused (its code, 400 and up, and its text).
struct ServerFailure {
    QString function;
    QString text;
    long responseCode = 0;
    QString responseText;
};

// The folder of services on a server: an ftp:// folder (anonymous, passive) whose name list is read, or an
// http:// or https:// folder whose listing page links the files. One request at a time; each ends in exactly one
// of listed(), fetched(), failed() or cancelled().
class ServiceServer : public QObject {
    Q_OBJECT
public:
    explicit ServiceServer(const QString& url, const TransferLimits& limits = {}, QObject* parent = nullptr);

    const QString& url() const { return m_url; }
    bool busy() const { return !m_transfer.isNull(); }

    // Reads the folder's entries.
    void list();
    // Downloads one file of the folder, named as the listing names it.
    void fetch(const QString& fileName);
    void cancel();

signals:
    void progress(qint64 received, qint64 total);
    void listed(const ServerListing& listing);
    void fetched(const QString& fileName, const QByteArray& bytes);
    void failed(const ServerFailure& failure);
    void cancelled();

private:
    QByteArray folderUrl() const;
    void begin(const QByteArray& url, bool listing, const QString& fileName);

    QString m_url;
    TransferLimits m_limits;
    QPointer<CurlTransfer> m_transfer;
};

} // namespace corvalent
