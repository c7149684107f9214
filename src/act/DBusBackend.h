#pragma once

#include "act/AutomationBackend.h"
#include "common/DBusWire.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

#include <memory>

namespace corvalent {

// The contact manager reached over the session bus (corvalent-contacts on Linux), in the wire format of
// common/DBusWire.h. Objects are bound to the contact manager that made them: once it has gone, their calls fail
// with 429 even when a new one has started.
//
// Every call waits for its answer without running the event loop, so no event is handled in the middle of a call,
// and gives up after the time-out: no answer is Error 440 "The contact manager did not answer", no contact manager
// on the bus is Error 429 "The contact manager is not running", and an error of the contact manager keeps its own
// number and description. The add-on passes 16- and 32-bit integers, text and booleans (and doubles and this
// backend's own objects); anything else is Error 13 before it is sent.
//
// Events come as signals of the bus and leave events() on the event loop. Detach on an event control made here
// silences events() (hostLost included) for every object of this backend, as the contact manager's own control
// stops sending events once detached; creating a new event control makes them flow again.
class DBusBackend : public QObject, public AutomationBackend {
    Q_OBJECT
public:
    explicit DBusBackend(const QDBusConnection& connection = QDBusConnection::sessionBus(),
                         int timeoutMs = dbuswire::kCallTimeoutMs, QObject* parent = nullptr);
    ~DBusBackend() override;

    AutomationPtr create(const QString& progId, std::source_location at = std::source_location::current()) override;
    HostEvents& events() override { return m_events; }
    QString hostName() const override;

    // Shared with the objects, which may outlive the backend.
    struct Link;

private slots:
    void onActUserWantsToClose();
    void onDatabaseClose();
    void onContactChange(const QString& contactId);
    void onContactLookupChange();
    void onContactPosChange(const QString& contactId);
    void onHostGone();

private:
    bool forwarding() const;

    std::shared_ptr<Link> m_link;
    HostEvents m_events;
    QDBusServiceWatcher m_hostWatcher;
};

} // namespace corvalent
