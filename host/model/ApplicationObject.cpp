#include "model/ApplicationObject.h"

#include "model/AutomationArguments.h"
#include "model/ContactHost.h"
#include "model/ViewsObject.h"

#include <memory>

namespace corvalent::host {

using namespace automation;

QVariant ApplicationObject::invoke(const QString& member, const QVariantList& args)
{
    if (isMember(member, QLatin1String("OpenFile"))) {
        requireCount(args, 1, member);
        openNamedDatabase(toText(args, 0, member));
        return QVariant();
    }
    if (isMember(member, QLatin1String("Views"))) {
        requireCount(args, 0, member);
        return toVariant(std::make_shared<ViewsObject>(host()));
    }
    if (isMember(member, QLatin1String("GetOpenDBName"))) {
        requireCount(args, 0, member);
        ContactHost& running = host();
        return running.isDatabaseOpen() ? running.store().path() : QString();
    }
    if (isMember(member, QLatin1String("Command"))) {
        requireCount(args, 1, member);
        host().command(toInt16(args, 0, member));
        return QVariant();
    }
    if (isMember(member, QLatin1String("LockWindowUpdate")) || isMember(member, QLatin1String("UnlockWindowUpdate"))) {
        requireCount(args, 0, member);
        host().lockWindowUpdate(isMember(member, QLatin1String("LockWindowUpdate")));
        return QVariant();
    }
    if (isMember(member, QLatin1String("GetUserID"))) {
        requireCount(args, 0, member);
        return QString::number(openHost().store().myRecordId());
    }
    unknownMember("application", member);
}

} // namespace corvalent::host
