#include "model/EventControlObject.h"

#include "model/AutomationArguments.h"
#include "model/ContactHost.h"

namespace corvalent::host {

using namespace automation;

QVariant EventControlObject::invoke(const QString& member, const QVariantList& args)
{
    if (isMember(member, QLatin1String("IsDatabaseOpen"))) {
        requireCount(args, 1, member);
        toInt32(args, 0, member); // always 0 from clients; checked for its type only
        return qint32(host().isDatabaseOpen() ? 1 : 0);
    }
    if (isMember(member, QLatin1String("Detach"))) {
        requireCount(args, 0, member);
        m_detached = true;
        return QVariant();
    }
    if (isMember(member, QLatin1String("IsRunning"))) {
        requireCount(args, 0, member);
        host();
        return true;
    }
    unknownMember("event control", member);
}

} // namespace corvalent::host
