#pragma once

#include "common/Automation.h"
#include "dbus/ClientObjects.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariantList>

#include <functional>

namespace corvalent::host {

// The contact manager's automation objects and events on the bus, in the wire format of common/DBusWire.h: the
// object at kRootPath answers Create, Invoke and Release, and the five events go out as signals of the same names.
//
// Objects are kept per client (the caller's unique bus name) and go when that client leaves the bus. Whatever a
// client sends, it gets an answer or an error, never a crash: a corvalent::Error thrown by the model travels as
// "number|description", anything else as 440.
class AutomationService : public QObject, protected QDBusContext {
    Q_OBJECT
public:
    // Makes a new object of a ProgID (ContactHost::createObject); throws Error 429 for one it does not know.
    using Factory = std::function<AutomationPtr(const QString& progId)>;

    // `events` is whatever sends the five events (the ContactHost): any QObject with signals of those names and
    // arguments. It may be null.
    AutomationService(Factory factory, QObject* events,
                      const QDBusConnection& connection = QDBusConnection::sessionBus(), QObject* parent = nullptr);
    ~AutomationService() override;

    enum class Start {
        Serving,        // the name is ours, calls are answered
        AlreadyRunning, // another contact manager owns the name
        Failed,         // no bus, or the bus refused; see errorString()
    };
    // Serves the root object and takes the bus name, in that order, so that a client that sees the name can call.
    Start start();
    QString errorString() const { return m_error; }

    // Objects held for all clients together.
    int objectCount() const { return m_objects.count(); }

    // The wire interface. Called by the bus only.
public slots:
    Q_SCRIPTABLE QDBusObjectPath Create(const QString& progId);
    Q_SCRIPTABLE QDBusVariant Invoke(const QDBusObjectPath& object, const QString& member, const QVariantList& args);
    Q_SCRIPTABLE void Release(const QDBusObjectPath& object);

private slots:
    void relayActUserWantsToClose();
    void relayDatabaseClose();
    void relayContactChange(const QString& contactId);
    void relayContactLookupChange();
    void relayContactPosChange(const QString& contactId);
    void clientLeft(const QString& client);
    void clientChecked(QDBusPendingCallWatcher* call);

private:
    QString caller() const;
    void watchClient(const QString& client);
    QVariantList fromWire(const QString& client, const QVariantList& args) const;
    QDBusVariant toWire(const QString& client, const QVariant& value);
    void replyError(int number, const QString& description);
    void emitSignal(const QString& name, const QVariantList& args = {});

    Factory m_factory;
    QDBusConnection m_connection;
    QDBusServiceWatcher m_clientWatcher;
    ClientObjects m_objects;
    bool m_registeredObject = false;
    bool m_ownsName = false;
    QString m_error;
};

} // namespace corvalent::host
