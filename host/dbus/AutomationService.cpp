#include "dbus/AutomationService.h"

#include "common/DBusWire.h"
#include "common/Error.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingReply>

#include <exception>

namespace corvalent::host {

using namespace dbuswire;

namespace {

// Runs one call of a client: every failure becomes an error answer, whatever was thrown.
template <typename Result, typename Body, typename Fail>
Result answer(Result fallback, Body&& body, Fail&& fail)
{
    try {
        return body();
    } catch (const Error& e) {
        fail(e.number(), e.description());
    } catch (const std::exception& e) {
        fail(ErrorNumber::AutomationError, QString::fromLocal8Bit(e.what()));
    } catch (...) {
        fail(ErrorNumber::AutomationError, standardDescription(ErrorNumber::AutomationError));
    }
    return fallback;
}

bool isPlainValue(const QVariant& value)
{
    switch (value.metaType().id()) {
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::QString:
    case QMetaType::Bool:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

// What the model may answer beyond the plain values; all of them have a wire type of their own.
bool isSendableNumber(const QVariant& value)
{
    switch (value.metaType().id()) {
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return false;
    }
}

} // namespace

AutomationService::AutomationService(Factory factory, QObject* events, const QDBusConnection& connection,
                                     QObject* parent)
    : QObject(parent), m_factory(std::move(factory)), m_connection(connection)
{
    m_clientWatcher.setConnection(connection);
    m_clientWatcher.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&m_clientWatcher, &QDBusServiceWatcher::serviceUnregistered, this, &AutomationService::clientLeft);
    if (!events)
        return;
    // By name, so that the transport needs nothing of the model but its signals.
    const bool wired =
        connect(events, SIGNAL(OnActUserWantsToClose()), this, SLOT(relayActUserWantsToClose()))
        && connect(events, SIGNAL(OnDatabaseClose()), this, SLOT(relayDatabaseClose()))
        && connect(events, SIGNAL(OnContactChange(QString)), this, SLOT(relayContactChange(QString)))
        && connect(events, SIGNAL(OnContactLookupChange()), this, SLOT(relayContactLookupChange()))
        && connect(events, SIGNAL(OnContactPosChange(QString)), this, SLOT(relayContactPosChange(QString)));
    if (!wired)
        qWarning("AutomationService: %s lacks some of the five events", events->metaObject()->className());
}

AutomationService::~AutomationService()
{
    if (m_ownsName)
        m_connection.unregisterService(kBusName);
    if (m_registeredObject)
        m_connection.unregisterObject(kRootPath);
}

AutomationService::Start AutomationService::start()
{
    if (!m_connection.isConnected()) {
        m_error = QStringLiteral("The session bus cannot be reached: %1").arg(m_connection.lastError().message());
        return Start::Failed;
    }
    if (!m_connection.registerObject(kRootPath, kInterface, this, QDBusConnection::ExportScriptableSlots)) {
        m_error = QStringLiteral("%1 is already served on this connection").arg(kRootPath);
        return Start::Failed;
    }
    m_registeredObject = true;

    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply = m_connection.interface()->registerService(
        kBusName, QDBusConnectionInterface::DontQueueService, QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered) {
        m_ownsName = true;
        return Start::Serving;
    }
    m_connection.unregisterObject(kRootPath);
    m_registeredObject = false;
    if (reply.isValid()) {
        m_error = QStringLiteral("%1 is owned by another program").arg(kBusName);
        return Start::AlreadyRunning;
    }
    m_error = QStringLiteral("The bus refused the name %1: %2").arg(kBusName, reply.error().message());
    return Start::Failed;
}

QString AutomationService::caller() const
{
    return message().service();
}

QDBusObjectPath AutomationService::Create(const QString& progId)
{
    const QString client = caller();
    return answer(
        QDBusObjectPath(kRootPath),
        [&] {
            AutomationPtr object = m_factory(progId);
            if (!object)
                throw Error(ErrorNumber::CannotCreateObject);
            const bool known = m_objects.hasClient(client);
            const QString path = m_objects.add(client, std::move(object));
            if (!known)
                watchClient(client);
            return QDBusObjectPath(path);
        },
        [&](int number, const QString& description) { replyError(number, description); });
}

QDBusVariant AutomationService::Invoke(const QDBusObjectPath& object, const QString& member, const QVariantList& args)
{
    const QString client = caller();
    return answer(
        QDBusVariant(QString()),
        [&] {
            // Held here: the call may release the object's path (a client's nested call cannot, but the model may
            // run the event loop).
            const AutomationPtr target = m_objects.find(client, object.path());
            if (!target)
                throw Error(ErrorNumber::InvalidArgument, QStringLiteral("Unknown object %1").arg(object.path()));
            const QVariant result = target->invoke(member, fromWire(client, args));
            return toWire(client, result);
        },
        [&](int number, const QString& description) { replyError(number, description); });
}

void AutomationService::Release(const QDBusObjectPath& object)
{
    if (!m_objects.release(caller(), object.path()))
        replyError(ErrorNumber::InvalidArgument, QStringLiteral("Unknown object %1").arg(object.path()));
}

QVariantList AutomationService::fromWire(const QString& client, const QVariantList& args) const
{
    QVariantList plain;
    plain.reserve(args.size());
    for (const QVariant& arg : args) {
        if (isPlainValue(arg)) {
            plain.append(arg);
        } else if (arg.metaType() == QMetaType::fromType<QDBusObjectPath>()) {
            const QString path = arg.value<QDBusObjectPath>().path();
            AutomationPtr referenced = m_objects.find(client, path);
            if (!referenced)
                throw Error(ErrorNumber::InvalidArgument, QStringLiteral("Unknown object %1").arg(path));
            plain.append(toVariant(referenced));
        } else {
            // Arrays, structures, nested variants, file descriptors, unsigned and 64-bit numbers: nothing the
            // contact manager takes.
            throw Error(ErrorNumber::TypeMismatch,
                        QStringLiteral("Type mismatch: argument %1 is not text, a number or a boolean")
                            .arg(plain.size() + 1));
        }
    }
    return plain;
}

QDBusVariant AutomationService::toWire(const QString& client, const QVariant& value)
{
    if (holdsObject(value)) {
        AutomationPtr object = toObject(value);
        if (!object)
            return QDBusVariant(QString());
        return QDBusVariant(QVariant::fromValue(QDBusObjectPath(m_objects.add(client, std::move(object)))));
    }
    if (!value.isValid())
        return QDBusVariant(QString());
    // A list of texts (GetFields) travels as an array of strings.
    if (isPlainValue(value) || isSendableNumber(value) || value.typeId() == QMetaType::QStringList)
        return QDBusVariant(value);
    throw Error(ErrorNumber::AutomationError,
                QStringLiteral("The answer (%1) cannot be sent over the bus").arg(QString::fromLatin1(value.typeName())));
}

void AutomationService::replyError(int number, const QString& description)
{
    sendErrorReply(kErrorName, QString::number(number) + QLatin1Char('|') + description);
}

void AutomationService::watchClient(const QString& client)
{
    m_clientWatcher.addWatchedService(client);
    // The client may have left before the watch was in place; the bus answers this after the watch is set up, so
    // between the two nothing goes unseen.
    QDBusPendingCall check = m_connection.interface()->asyncCall(QStringLiteral("NameHasOwner"), client);
    auto* watcher = new QDBusPendingCallWatcher(check, this);
    watcher->setProperty("client", client);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &AutomationService::clientChecked);
}

void AutomationService::clientChecked(QDBusPendingCallWatcher* call)
{
    call->deleteLater();
    const QDBusPendingReply<bool> reply = *call;
    if (reply.isValid() && !reply.value())
        clientLeft(call->property("client").toString());
}

void AutomationService::clientLeft(const QString& client)
{
    m_clientWatcher.removeWatchedService(client);
    m_objects.dropClient(client);
}

void AutomationService::emitSignal(const QString& name, const QVariantList& args)
{
    QDBusMessage signal = QDBusMessage::createSignal(kRootPath, kInterface, name);
    signal.setArguments(args);
    m_connection.send(signal);
}

void AutomationService::relayActUserWantsToClose()
{
    emitSignal(QStringLiteral("OnActUserWantsToClose"));
}

void AutomationService::relayDatabaseClose()
{
    emitSignal(QStringLiteral("OnDatabaseClose"));
}

void AutomationService::relayContactChange(const QString& contactId)
{
    emitSignal(QStringLiteral("OnContactChange"), {contactId});
}

void AutomationService::relayContactLookupChange()
{
    emitSignal(QStringLiteral("OnContactLookupChange"));
}

void AutomationService::relayContactPosChange(const QString& contactId)
{
    emitSignal(QStringLiteral("OnContactPosChange"), {contactId});
}

} // namespace corvalent::host
