#pragma once

#include "act/AutomationBackend.h"
#include "common/ProgramTitle.h"

#include <QPointer>
#include <memory>

namespace corvalent::host {
class ContactHost;
}

namespace corvalent::test {

// The contact manager's object model in this process, seen through the interface the add-on uses, so tests drive
// the real model rather than a stand-in. Events reach events() through the event loop, as they do from another
// process: a call made by the add-on returns before the event it caused is handled. As over the bus, an event
// control that was detached stops the events (a newer event control starts them again), also those already on
// their way.
class InProcessBackend : public AutomationBackend {
public:
    // `hostName` lets a test stand the model in for another contact manager, ACT! for one, to see its texts.
    explicit InProcessBackend(host::ContactHost& host, QString hostName = QString::fromLatin1(kContactsTitle));
    ~InProcessBackend() override;

    AutomationPtr create(const QString& progId, std::source_location at = std::source_location::current()) override;
    HostEvents& events() override { return m_events; }
    QString hostName() const override { return m_hostName; }

    // Once the host is gone, create() raises 429 as for a contact manager that is not running.
    host::ContactHost* host() const { return m_host; }

private:
    QPointer<host::ContactHost> m_host;
    QString m_hostName;
    HostEvents m_events;
    // Shared with the event controls handed out, which may outlive this backend.
    std::shared_ptr<bool> m_forwarding = std::make_shared<bool>(true);
};

} // namespace corvalent::test
