#include "act/DBusBackend.h"

#include "common/Error.h"
#include "common/ProgramTitle.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace corvalent {

using namespace dbuswire;

struct DBusBackend::Link {
    QDBusConnection connection;
    int timeoutMs;
    bool forwarding = true;
    quint64 attachments = 0; // counts Detach calls and new event controls; only the latest one decides
};

namespace {

const QString kNotRunning = QStringLiteral("The contact manager is not running");
const QString kNoAnswer = QStringLiteral("The contact manager did not answer");

Error errorOf(const QDBusMessage& reply, std::source_location at)
{
    const QString name = reply.errorName();
    const QString text = reply.errorMessage();
    if (name == kErrorName) {
        const qsizetype bar = text.indexOf(QLatin1Char('|'));
        bool numeric = false;
        const int number = bar > 0 ? text.left(bar).toInt(&numeric) : 0;
        if (numeric)
            return Error(number, text.mid(bar + 1), at);
        return Error(ErrorNumber::AutomationError, text, at);
    }
    static const QStringList gone = {
        QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"),
        QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner"),
        QStringLiteral("org.freedesktop.DBus.Error.Disconnected"),
    };
    static const QStringList silent = {
        QStringLiteral("org.freedesktop.DBus.Error.NoReply"),
        QStringLiteral("org.freedesktop.DBus.Error.Timeout"),
        QStringLiteral("org.freedesktop.DBus.Error.TimedOut"),
    };
    if (gone.contains(name))
        return Error(ErrorNumber::CannotCreateObject, kNotRunning, at);
    if (silent.contains(name))
        return Error(ErrorNumber::AutomationError, kNoAnswer, at);
    // Something between the two sides does not match (an older contact manager, another program on the name).
    return Error(ErrorNumber::AutomationError, text.isEmpty() ? name : text, at);
}

// One call, waited for without running the event loop.
QDBusMessage callHost(const DBusBackend::Link& link, const QString& destination, const QString& method,
                      const QVariantList& args, std::source_location at)
{
    if (!link.connection.isConnected())
        throw Error(ErrorNumber::CannotCreateObject, kNotRunning, at);
    QDBusMessage call = QDBusMessage::createMethodCall(destination, kRootPath, kInterface, method);
    call.setArguments(args);
    call.setAutoStartService(false); // nothing on the bus starts the contact manager for us
    const QDBusMessage reply = link.connection.call(call, QDBus::Block, link.timeoutMs);
    if (reply.type() == QDBusMessage::ErrorMessage)
        throw errorOf(reply, at);
    if (reply.type() != QDBusMessage::ReplyMessage)
        throw Error(ErrorNumber::AutomationError, kNoAnswer, at);
    return reply;
}

class DBusAutomationObject final : public AutomationObject {
public:
    DBusAutomationObject(std::shared_ptr<DBusBackend::Link> link, QString host, QString path, bool eventControl)
        : m_link(std::move(link)), m_host(std::move(host)), m_path(std::move(path)), m_eventControl(eventControl)
    {
    }

    ~DBusAutomationObject() override
    {
        // Not waited for and errors ignored: the contact manager may be gone, and it forgets a departed client's
        // objects by itself. Nothing is sent once the application (and with it the bus connection) is ending.
        if (!QCoreApplication::instance() || !m_link->connection.isConnected())
            return;
        QDBusMessage release = QDBusMessage::createMethodCall(m_host, kRootPath, kInterface, QStringLiteral("Release"));
        release.setArguments({QVariant::fromValue(QDBusObjectPath(m_path))});
        release.setAutoStartService(false);
        m_link->connection.send(release);
    }

    QVariant invoke(const QString& member, const QVariantList& args) override
    {
        const auto at = std::source_location::current();
        if (m_eventControl && member.compare(kEventMemberDetach, Qt::CaseInsensitive) == 0) {
            ++m_link->attachments;
            m_link->forwarding = false; // even if the contact manager cannot be told any more
        }
        const QDBusMessage reply = callHost(*m_link, m_host, QStringLiteral("Invoke"),
                                            {QVariant::fromValue(QDBusObjectPath(m_path)), member,
                                             QVariant::fromValue(toWire(args))},
                                            at);
        const QVariant answer = reply.arguments().value(0);
        if (answer.metaType() != QMetaType::fromType<QDBusVariant>())
            throw Error(ErrorNumber::AutomationError, QStringLiteral("The contact manager answered in an unknown form"), at);
        return fromWire(answer.value<QDBusVariant>().variant(), at);
    }

    const QString& host() const { return m_host; }
    const QString& path() const { return m_path; }

private:
    QVariantList toWire(const QVariantList& args) const
    {
        QVariantList wire;
        wire.reserve(args.size());
        for (const QVariant& arg : args) {
            switch (arg.metaType().id()) {
            case QMetaType::Short:
            case QMetaType::Int:
            case QMetaType::QString:
            case QMetaType::Bool:
            case QMetaType::Double:
                wire.append(arg);
                continue;
            default:
                break;
            }
            const auto* object = dynamic_cast<const DBusAutomationObject*>(toObject(arg).get());
            if (!object)
                throw Error(ErrorNumber::TypeMismatch,
                            QStringLiteral("Type mismatch: argument %1 cannot be sent to the contact manager")
                                .arg(wire.size() + 1));
            if (object->host() != m_host)
                throw Error(ErrorNumber::InvalidArgument,
                            QStringLiteral("Argument %1 belongs to a contact manager that has gone").arg(wire.size() + 1));
            wire.append(QVariant::fromValue(QDBusObjectPath(object->path())));
        }
        return wire;
    }

    QVariant fromWire(const QVariant& value, std::source_location at) const
    {
        if (value.metaType() == QMetaType::fromType<QDBusObjectPath>())
            return toVariant(std::make_shared<DBusAutomationObject>(m_link, m_host, value.value<QDBusObjectPath>().path(),
                                                                    false));
        if (value.metaType() == QMetaType::fromType<QDBusArgument>()
            || value.metaType() == QMetaType::fromType<QDBusVariant>())
            throw Error(ErrorNumber::AutomationError, QStringLiteral("The contact manager answered in an unknown form"), at);
        return value;
    }

    std::shared_ptr<DBusBackend::Link> m_link;
    QString m_host; // the unique bus name of the contact manager that made the object
    QString m_path;
    bool m_eventControl;
};

} // namespace

DBusBackend::DBusBackend(const QDBusConnection& connection, int timeoutMs, QObject* parent)
    : QObject(parent), m_link(std::make_shared<Link>(Link{connection, timeoutMs})),
      m_hostWatcher(kBusName, connection, QDBusServiceWatcher::WatchForUnregistration)
{
    QDBusConnection c = connection;
    c.connect(kBusName, kRootPath, kInterface, QStringLiteral("OnActUserWantsToClose"), this,
              SLOT(onActUserWantsToClose()));
    c.connect(kBusName, kRootPath, kInterface, QStringLiteral("OnDatabaseClose"), this, SLOT(onDatabaseClose()));
    c.connect(kBusName, kRootPath, kInterface, QStringLiteral("OnContactChange"), this,
              SLOT(onContactChange(QString)));
    c.connect(kBusName, kRootPath, kInterface, QStringLiteral("OnContactLookupChange"), this,
              SLOT(onContactLookupChange()));
    c.connect(kBusName, kRootPath, kInterface, QStringLiteral("OnContactPosChange"), this,
              SLOT(onContactPosChange(QString)));
    connect(&m_hostWatcher, &QDBusServiceWatcher::serviceUnregistered, this, &DBusBackend::onHostGone);
}

DBusBackend::~DBusBackend()
{
    QDBusConnection c = m_link->connection;
    c.disconnect(kBusName, kRootPath, kInterface, QStringLiteral("OnActUserWantsToClose"), this,
                 SLOT(onActUserWantsToClose()));
    c.disconnect(kBusName, kRootPath, kInterface, QStringLiteral("OnDatabaseClose"), this, SLOT(onDatabaseClose()));
    c.disconnect(kBusName, kRootPath, kInterface, QStringLiteral("OnContactChange"), this,
                 SLOT(onContactChange(QString)));
    c.disconnect(kBusName, kRootPath, kInterface, QStringLiteral("OnContactLookupChange"), this,
                 SLOT(onContactLookupChange()));
    c.disconnect(kBusName, kRootPath, kInterface, QStringLiteral("OnContactPosChange"), this,
                 SLOT(onContactPosChange(QString)));
}

QString DBusBackend::hostName() const
{
    // The bus carries the contact manager of this project only.
    return QString::fromLatin1(kContactsTitle);
}

AutomationPtr DBusBackend::create(const QString& progId, std::source_location at)
{
    const QDBusMessage reply = callHost(*m_link, kBusName, QStringLiteral("Create"), {progId}, at);
    const QVariant path = reply.arguments().value(0);
    if (path.metaType() != QMetaType::fromType<QDBusObjectPath>())
        throw Error(ErrorNumber::AutomationError, QStringLiteral("The contact manager answered in an unknown form"), at);
    const bool eventControl = progId.compare(kProgIdEvents, Qt::CaseInsensitive) == 0;
    if (eventControl) {
        // Events the contact manager sent before it answered are already queued here; they belong to the time
        // before this control and stay silent.
        const quint64 attachment = ++m_link->attachments;
        QMetaObject::invokeMethod(
            this,
            [link = m_link, attachment] {
                if (link->attachments == attachment)
                    link->forwarding = true;
            },
            Qt::QueuedConnection);
    }
    // The answer's sender is the contact manager's unique name: later calls go to that instance only.
    const QString host = reply.service().isEmpty() ? kBusName : reply.service();
    return std::make_shared<DBusAutomationObject>(m_link, host, path.value<QDBusObjectPath>().path(),
                                                  eventControl);
}

bool DBusBackend::forwarding() const
{
    return m_link->forwarding;
}

void DBusBackend::onActUserWantsToClose()
{
    if (forwarding())
        emit m_events.OnActUserWantsToClose();
}

void DBusBackend::onDatabaseClose()
{
    if (forwarding())
        emit m_events.OnDatabaseClose();
}

void DBusBackend::onContactChange(const QString& contactId)
{
    if (forwarding())
        emit m_events.OnContactChange(contactId);
}

void DBusBackend::onContactLookupChange()
{
    if (forwarding())
        emit m_events.OnContactLookupChange();
}

void DBusBackend::onContactPosChange(const QString& contactId)
{
    if (forwarding())
        emit m_events.OnContactPosChange(contactId);
}

void DBusBackend::onHostGone()
{
    if (forwarding())
        emit m_events.hostLost();
}

} // namespace corvalent
