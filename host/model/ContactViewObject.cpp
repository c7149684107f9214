#include "model/ContactViewObject.h"

#include "model/AutomationArguments.h"
#include "model/ContactHost.h"
#include "model/CurrentContactMembers.h"

namespace corvalent::host {

using namespace automation;

QVariant ContactViewObject::invoke(const QString& member, const QVariantList& args)
{
    if (isMember(member, QLatin1String("Type"))) {
        requireCount(args, 0, member);
        return qint32(ContactHost::kContactViewType);
    }
    if (isMember(member, QLatin1String("GetField"))) {
        requireCount(args, 1, member);
        const qint32 fieldId = toInt32(args, 0, member);
        ContactHost& running = openHost();
        // An empty lookup has no current contact; its fields read empty, as the empty view shows them.
        const qint64 current = running.currentId();
        return current < 0 ? QString() : running.store().fieldText(current, fieldId);
    }
    if (isMember(member, QLatin1String("GetFields"))) {
        const QList<int> fieldIds = toInt32List(args, 0, member);
        ContactHost& running = openHost();
        const qint64 current = running.currentId();
        return current < 0 ? QStringList(fieldIds.size()) : running.store().fieldTexts(current, fieldIds);
    }
    if (isCurrentContactMember(member))
        return invokeCurrentContactMember(openHost(), member, args);
    unknownMember("contact view", member);
}

} // namespace corvalent::host
