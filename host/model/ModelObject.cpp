#include "model/ModelObject.h"

#include "common/Error.h"
#include "model/ContactHost.h"

#include <QFileInfo>

namespace corvalent::host {

ModelObject::ModelObject(ContactHost& host) : m_host(&host) {}

ContactHost& ModelObject::host() const
{
    if (!m_host)
        throw Error(ErrorNumber::AutomationError, QStringLiteral("The contact manager has closed"));
    return *m_host;
}

ContactHost& ModelObject::openHost() const
{
    ContactHost& running = host();
    if (!running.isDatabaseOpen())
        throw Error(ErrorNumber::AutomationError, QStringLiteral("No database is open"));
    return running;
}

void ModelObject::openNamedDatabase(const QString& path) const
{
    ContactHost& running = host();
    if (path.isEmpty()) {
        openHost();
        return;
    }
    // Opening the database that is open already must not close it (which would tell every client to quit).
    if (running.isDatabaseOpen() &&
        QFileInfo(path).canonicalFilePath() == QFileInfo(running.store().path()).canonicalFilePath())
        return;
    running.openDatabase(path);
}

} // namespace corvalent::host
