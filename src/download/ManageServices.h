#pragma once

#include "download/ServiceServer.h"

#include <QObject>
#include <QStringList>

namespace corvalent {

// What frmManage does, without its widgets: get the list of services from the server, install the chosen ones
// into the Presets folder (asking before one is replaced), delete installed ones, and report a failed request
// with ErrorOut. Requests run on the event loop; busyChanged() tells when one runs, for the busy pointer, the
// progress bar and the Cancel button. Every message goes through the prompter.
class ManageServices : public QObject {
    Q_OBJECT
public:
    static inline const QString kNotInSession = QStringLiteral("Not in session");
    static inline const QString kSelectToGet = QStringLiteral("Please select the item to GET!");
    static inline const QString kDirectoryEmpty = QStringLiteral("This directory is empty!");
    static inline const QString kDeleteQuestion = QStringLiteral("Are you sure you want to delete this service?");
    static inline const QString kDeleteTitle = QStringLiteral("App.title");
    static inline const QString kCloseQuestion = QStringLiteral("Close Connection and Session?");
    static QString replaceQuestion(const QString& shownName);
    static QString installedMessage(const QString& shownName);

    ManageServices(const QString& presetsFolder, const QString& serverUrl, const TransferLimits& limits = {},
                   QObject* parent = nullptr);

    bool connected() const { return m_connected; }
    bool busy() const { return m_server.busy(); }
    const QString& serverUrl() const { return m_server.url(); }
    // The shown names of the server's services, in the server's order.
    const QStringList& serverServices() const { return m_serverServices; }
    // The shown names of the installed services (the Presets folder's order).
    QStringList installedServices();

    void cmdConnect_Click();
    void cmdGet_Click(const QStringList& selected);
    void cmdDelete_Click(const QString& selected);
    // Abandons the running request and whatever installs were still to come.
    void cancel();
    // The window closes: the names read are dropped and the session ends.
    void Form_Unload();

signals:
    void busyChanged(bool busy);
    void progress(qint64 received, qint64 total);
    void serverServicesChanged();
    void installedServicesChanged();
    // One line on how the last request went.
    void status(const QString& text);

private:
    void nextInstall();
    void onListed(const ServerListing& listing);
    void onFetched(const QString& fileName, const QByteArray& bytes);
    void onFailed(const ServerFailure& failure);
    void onCancelled();
    void ErrorOut(const ServerFailure& failure);
    void endInstalls();

    QString m_presets;
    ServiceServer m_server;
    bool m_connected = false;
    QStringList m_serverServices;
    QStringList m_toInstall; // shown names still to come, top first
    QString m_installing;
    int m_installed = 0;
};

} // namespace corvalent
