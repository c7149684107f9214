#include "download/ManageServices.h"

#include "common/Error.h"
#include "common/ErrorTrap.h"
#include "common/Prompter.h"
#include "download/InstalledServices.h"
#include "services/ServiceCatalogue.h"
#include "services/ServiceDefinition.h"

namespace corvalent {

namespace {

const QString kForm = QStringLiteral("frmManage: Sub ");

} // namespace

QString ManageServices::replaceQuestion(const QString& shownName)
{
    return QStringLiteral("A version of '") + shownName
           + QStringLiteral("' is already installed. Do you want to replace it with the servers'version?");
}

QString ManageServices::installedMessage(const QString& shownName)
{
    return shownName + QStringLiteral(" was installed succesfully.");
}

ManageServices::ManageServices(const QString& presetsFolder, const QString& serverUrl, const TransferLimits& limits,
                               QObject* parent)
    : QObject(parent), m_presets(presetsFolder), m_server(serverUrl, limits)
{
    connect(&m_server, &ServiceServer::progress, this, &ManageServices::progress);
    connect(&m_server, &ServiceServer::listed, this, &ManageServices::onListed);
    connect(&m_server, &ServiceServer::fetched, this, &ManageServices::onFetched);
    connect(&m_server, &ServiceServer::failed, this, &ManageServices::onFailed);
    connect(&m_server, &ServiceServer::cancelled, this, &ManageServices::onCancelled);
}

QStringList ManageServices::installedServices()
{
    return trapped(kForm + QStringLiteral("Fill_lstPresets"), QStringList(),
                   [&] { return ServiceListEntries(m_presets, false); });
}

void ManageServices::cmdConnect_Click()
{
    trappedSub(kForm + QStringLiteral("cmdConnect_Click"), [&] {
        // A second press while the session is open neither reconnects nor refreshes the list.
        if (m_connected || busy())
            return;
        m_server.list();
        emit busyChanged(true);
        emit status(tr("Getting the list of services from %1 ...").arg(m_server.url()));
    });
}

void ManageServices::onListed(const ServerListing& listing)
{
    emit busyChanged(false);
    trappedSub(kForm + QStringLiteral("cmdConnect_Click"), [&] {
        m_connected = true;
        m_serverServices = ShownServiceNames(listing.names);
        emit serverServicesChanged();
        QString line = tr("%n service(s) on the server.", nullptr, int(m_serverServices.size()));
        if (listing.ignored > 0)
            line += QLatin1Char(' ')
                    + tr("%n name(s) ignored: not plain file names.", nullptr, listing.ignored);
        emit status(line);
        if (listing.names.isEmpty() && listing.ignored == 0)
            Prompter::instance().message(kDirectoryEmpty, Prompter::OkOnly);
    });
}

void ManageServices::cmdGet_Click(const QStringList& selected)
{
    trappedSub(kForm + QStringLiteral("cmdGet_Click"), [&] {
        if (busy())
            return;
        if (!m_connected) {
            Prompter::instance().message(kNotInSession, Prompter::OkOnly);
            emit installedServicesChanged();
            return;
        }
        if (selected.isEmpty()) {
            Prompter::instance().message(kSelectToGet, Prompter::OkOnly);
            return;
        }
        m_toInstall = selected;
        m_installed = 0;
        nextInstall();
    });
}

void ManageServices::nextInstall()
{
    // After "Close Connection and Session?" was answered Yes there is no session to fetch the rest with.
    while (m_connected && !m_toInstall.isEmpty()) {
        const QString shown = m_toInstall.takeFirst();
        if (FolderFileExists(ServiceFilePath(m_presets, shown))
            && Prompter::instance().message(replaceQuestion(shown),
                                            Prompter::YesNo | Prompter::Exclamation | Prompter::DefaultButton2)
                   != Prompter::Yes)
            continue;
        m_installing = shown;
        m_server.fetch(ServiceFileName(shown));
        emit busyChanged(true);
        emit status(tr("Installing %1 ...").arg(shown));
        return;
    }
    endInstalls();
}

void ManageServices::endInstalls()
{
    m_toInstall.clear();
    m_installing.clear();
    emit installedServicesChanged();
}

void ManageServices::onFetched(const QString& fileName, const QByteArray& bytes)
{
    emit busyChanged(false);
    trappedSub(kForm + QStringLiteral("cmdGet_Click"), [&] {
        const QString shown = m_installing;
        m_installing.clear();
        const QString problem = InstallServiceFile(m_presets, fileName, bytes);
        if (problem.isEmpty()) {
            ++m_installed;
            emit status(tr("%n service(s) installed.", nullptr, m_installed));
            Prompter::instance().message(installedMessage(shown), Prompter::Information);
        } else {
            ErrorOut({QStringLiteral("FtpGetFile"), problem, 0, QString()});
        }
    });
    nextInstall();
}

void ManageServices::onFailed(const ServerFailure& failure)
{
    emit busyChanged(false);
    const bool installing = !m_installing.isEmpty();
    m_installing.clear();
    emit status(failure.function + QStringLiteral(": ") + failure.text);
    trappedSub(kForm + (installing ? QStringLiteral("cmdGet_Click") : QStringLiteral("cmdConnect_Click")), [&] {
        if (!installing) {
            // Past the log-in the session stands, even when its listing failed.
            m_connected = failure.function != QLatin1String("InternetConnect");
            m_serverServices.clear();
            emit serverServicesChanged();
        }
        ErrorOut(failure);
    });
    if (installing)
        nextInstall();
}

void ManageServices::onCancelled()
{
    emit busyChanged(false);
    m_toInstall.clear();
    if (m_installing.isEmpty()) {
        m_serverServices.clear();
        emit serverServicesChanged();
    }
    endInstalls();
    emit status(tr("Cancelled."));
}

void ManageServices::cancel()
{
    m_toInstall.clear();
    m_server.cancel();
}

void ManageServices::ErrorOut(const ServerFailure& failure)
{
    Prompter& prompter = Prompter::instance();
    // The server said why it refused: its own words first, as the server's extended error.
    if (failure.responseCode > 0)
        prompter.message(failure.function + QStringLiteral(" Extd Err: ") + QString::number(failure.responseCode)
                             + QLatin1Char(' ') + failure.responseText,
                         Prompter::OkOnly);
    if (prompter.message(failure.function + QStringLiteral(" Err: ") + failure.text + QLatin1Char('\r')
                             + kCloseQuestion,
                         Prompter::YesNo)
        == Prompter::Yes)
        m_connected = false;
}

void ManageServices::cmdDelete_Click(const QString& selected)
{
    trappedSub(kForm + QStringLiteral("cmdDelete_Click"), [&] {
        if (selected.isEmpty())
            return;
        if (Prompter::instance().message(kDeleteQuestion, Prompter::YesNo | Prompter::Critical
                                                              | Prompter::DefaultButton2,
                                         kDeleteTitle)
            != Prompter::Yes)
            return;
        const bool deleted = DeleteInstalledService(m_presets, selected);
        emit installedServicesChanged();
        if (!deleted)
            throw Error(FolderFileExists(ServiceFilePath(m_presets, selected)) ? ErrorNumber::PermissionDenied
                                                                                 : ErrorNumber::FileNotFound);
    });
}

void ManageServices::Form_Unload()
{
    m_toInstall.clear();
    m_serverServices.clear();
    m_server.cancel();
    m_connected = false;
}

} // namespace corvalent
