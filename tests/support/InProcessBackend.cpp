#include "support/InProcessBackend.h"

#include "common/Error.h"
#include "model/ContactHost.h"

namespace corvalent::test {

InProcessBackend::InProcessBackend(host::ContactHost& host)
    : m_host(&host)
{
    using host::ContactHost;
    const auto queued = Qt::QueuedConnection;
    QObject::connect(&host, &ContactHost::OnActUserWantsToClose, &m_events, &HostEvents::OnActUserWantsToClose, queued);
    QObject::connect(&host, &ContactHost::OnDatabaseClose, &m_events, &HostEvents::OnDatabaseClose, queued);
    QObject::connect(&host, &ContactHost::OnContactChange, &m_events, &HostEvents::OnContactChange, queued);
    QObject::connect(&host, &ContactHost::OnContactLookupChange, &m_events, &HostEvents::OnContactLookupChange, queued);
    QObject::connect(&host, &ContactHost::OnContactPosChange, &m_events, &HostEvents::OnContactPosChange, queued);
    // The host going away is the one loss an in-process host can have.
    QObject::connect(&host, &QObject::destroyed, &m_events, &HostEvents::hostLost);
}

InProcessBackend::~InProcessBackend() = default;

AutomationPtr InProcessBackend::create(const QString& progId, std::source_location at)
{
    if (!m_host)
        throw Error(ErrorNumber::CannotCreateObject, at);
    try {
        return m_host->createObject(progId);
    } catch (const Error& e) {
        throw Error(e.number(), e.description(), at);
    }
}

} // namespace corvalent::test
