#pragma once

#include "common/Automation.h"

#include <QPointer>

namespace corvalent::host {

class ContactHost;

// What every automation object of the contact manager shares: the running contact manager it works on. A client
// may keep an object after the contact manager has gone; calling it then is an error, never a dangling pointer.
class ModelObject : public AutomationObject {
public:
    explicit ModelObject(ContactHost& host);

protected:
    // Error 440 when the contact manager has gone.
    ContactHost& host() const;
    // The same, and Error 440 "No database is open" unless a database is open.
    ContactHost& openHost() const;
    // OpenFile and OpenEx: "" names the database already open; any other path is opened unless it is that one.
    void openNamedDatabase(const QString& path) const;

private:
    QPointer<ContactHost> m_host;
};

} // namespace corvalent::host
