#include "support/InProcessBackend.h"

#include "common/Error.h"
#include "model/ContactHost.h"

namespace corvalent::test {

namespace {

// The event control as the add-on holds it: its Detach also stops the events on the add-on's side.
class EventControl : public AutomationObject {
public:
    EventControl(AutomationPtr inner, std::shared_ptr<bool> forwarding)
        : m_inner(std::move(inner)), m_forwarding(std::move(forwarding))
    {
    }
    QVariant invoke(const QString& member, const QVariantList& args) override
    {
        if (member.compare(kEventMemberDetach, Qt::CaseInsensitive) == 0)
            *m_forwarding = false;
        return m_inner->invoke(member, args);
    }

private:
    AutomationPtr m_inner;
    std::shared_ptr<bool> m_forwarding;
};

} // namespace

InProcessBackend::InProcessBackend(host::ContactHost& host, QString hostName)
    : m_host(&host), m_hostName(std::move(hostName))
{
    using host::ContactHost;
    // Whether an event still counts is decided when it arrives, as over the bus.
    const auto forward = [&](auto hostSignal, auto eventSignal) {
        QObject::connect(&host, hostSignal, &m_events, [this, eventSignal](const auto&... args) {
            if (*m_forwarding)
                emit (m_events.*eventSignal)(args...);
        }, Qt::QueuedConnection);
    };
    forward(&ContactHost::OnActUserWantsToClose, &HostEvents::OnActUserWantsToClose);
    forward(&ContactHost::OnDatabaseClose, &HostEvents::OnDatabaseClose);
    forward(&ContactHost::OnContactChange, &HostEvents::OnContactChange);
    forward(&ContactHost::OnContactLookupChange, &HostEvents::OnContactLookupChange);
    forward(&ContactHost::OnContactPosChange, &HostEvents::OnContactPosChange);
    // The host going away is the one loss an in-process host can have.
    QObject::connect(&host, &QObject::destroyed, &m_events, &HostEvents::hostLost);
}

InProcessBackend::~InProcessBackend() = default;

AutomationPtr InProcessBackend::create(const QString& progId, std::source_location at)
{
    if (!m_host)
        throw Error(ErrorNumber::CannotCreateObject, at);
    try {
        AutomationPtr object = m_host->createObject(progId);
        if (progId.compare(kProgIdEvents, Qt::CaseInsensitive) != 0)
            return object;
        *m_forwarding = true;
        return std::make_shared<EventControl>(std::move(object), m_forwarding);
    } catch (const Error& e) {
        throw Error(e.number(), e.description(), at);
    }
}

} // namespace corvalent::test
