#include "download/ServiceServer.h"

#include "prefs/Preferences.h"

#include <QUrl>

namespace corvalent {

QString ServicesServer()
{
    return GetSetting(kServicesServerKey, kDefaultServicesServer);
}

ServiceServer::ServiceServer(const QString& url, const TransferLimits& limits, QObject* parent)
    : QObject(parent), m_url(url.trimmed()), m_limits(limits)
{
}

QByteArray ServiceServer::folderUrl() const
{
    // Without its final "/" an FTP address names a file, not the folder to list.
    QByteArray url = m_url.toUtf8();
    if (!url.endsWith('/'))
        url += '/';
    return url;
}

void ServiceServer::list()
{
    begin(folderUrl(), true, QString());
}

void ServiceServer::fetch(const QString& fileName)
{
    begin(folderUrl() + QUrl::toPercentEncoding(fileName), false, fileName);
}

void ServiceServer::cancel()
{
    if (m_transfer)
        m_transfer->cancel();
}

void ServiceServer::begin(const QByteArray& url, bool listing, const QString& fileName)
{
    if (busy())
        return;
    const bool ftp = m_url.startsWith(QLatin1String("ftp://"), Qt::CaseInsensitive);
    auto* transfer = new CurlTransfer(url, m_limits, listing && ftp, this);
    m_transfer = transfer;
    connect(transfer, &CurlTransfer::progress, this, &ServiceServer::progress);
    connect(transfer, &CurlTransfer::finished, this, [this, transfer, listing, ftp, fileName] {
        transfer->deleteLater();
        m_transfer.clear();
        switch (transfer->status()) {
        case CurlTransfer::Status::Done:
            if (listing)
                emit listed(ftp ? ParseFtpNameList(transfer->body()) : ParseHtmlListing(transfer->body()));
            else
                emit fetched(fileName, transfer->body());
            return;
        case CurlTransfer::Status::Cancelled:
            emit cancelled();
            return;
        default:
            break;
        }
        ServerFailure failure;
        if (!transfer->loggedIn())
            failure.function = QStringLiteral("InternetConnect");
        else if (!listing)
            failure.function = QStringLiteral("FtpGetFile");
        else if (transfer->body().isEmpty())
            failure.function = QStringLiteral("FtpFindFirstFile");
        else
            failure.function = QStringLiteral("InternetFindNextFile");
        failure.text = transfer->errorText();
        if (transfer->responseCode() >= 400) {
            failure.responseCode = transfer->responseCode();
            failure.responseText = transfer->responseText();
        }
        emit failed(failure);
    });
    transfer->start();
}

} // namespace corvalent
