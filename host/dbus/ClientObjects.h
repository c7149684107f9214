#pragma once

#include "common/Automation.h"

#include <QHash>
#include <QString>

namespace corvalent::host {

// The automation objects that clients of the bus hold, by object path. A client reaches only its own objects, so
// one add-on cannot use or release another's, and everything a client holds goes when it leaves the bus.
class ClientObjects {
public:
    // A client that creates objects and never releases them stops here rather than eating the memory of the
    // contact manager; the add-on holds a few dozen.
    static constexpr int kMaxPerClient = 65536;

    // Keeps `object` for `client` and answers its path below the object prefix of the wire format. Throws
    // Error 440 when the client holds kMaxPerClient objects already.
    QString add(const QString& client, AutomationPtr object);
    // The client's object at `path`, or nullptr.
    AutomationPtr find(const QString& client, const QString& path) const;
    // Answers whether the client held an object at `path`.
    bool release(const QString& client, const QString& path);
    // Forgets every object of the client.
    void dropClient(const QString& client);

    bool hasClient(const QString& client) const { return m_clients.contains(client); }
    int count() const;

private:
    QHash<QString, QHash<QString, AutomationPtr>> m_clients;
    quint64 m_lastNumber = 0;
};

} // namespace corvalent::host
