#include "dbus/ClientObjects.h"

#include "common/DBusWire.h"
#include "common/Error.h"

namespace corvalent::host {

QString ClientObjects::add(const QString& client, AutomationPtr object)
{
    auto& objects = m_clients[client];
    if (objects.size() >= kMaxPerClient)
        throw Error(ErrorNumber::AutomationError, QStringLiteral("Too many objects are open; release some first"));
    // Numbers are never reused, so a stale path held by a client can never reach a newer object.
    const QString path = dbuswire::kObjectPrefix + QString::number(++m_lastNumber);
    objects.insert(path, std::move(object));
    return path;
}

AutomationPtr ClientObjects::find(const QString& client, const QString& path) const
{
    const auto it = m_clients.constFind(client);
    return it == m_clients.cend() ? nullptr : it->value(path);
}

bool ClientObjects::release(const QString& client, const QString& path)
{
    const auto it = m_clients.find(client);
    if (it == m_clients.end())
        return false;
    // Taken out before it is destroyed: a model object's destructor may run code that looks at this table.
    const AutomationPtr gone = it->take(path);
    return gone != nullptr;
}

void ClientObjects::dropClient(const QString& client)
{
    const auto gone = m_clients.take(client);
    Q_UNUSED(gone);
}

int ClientObjects::count() const
{
    int n = 0;
    for (const auto& objects : m_clients)
        n += int(objects.size());
    return n;
}

} // namespace corvalent::host
