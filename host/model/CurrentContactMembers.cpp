#include "model/CurrentContactMembers.h"

#include "model/AutomationArguments.h"
#include "model/ContactHost.h"

namespace corvalent::host {

using namespace automation;

bool isCurrentContactMember(const QString& member)
{
    return isMember(member, QLatin1String("SetField")) || isMember(member, QLatin1String("AddNewContact")) ||
           isMember(member, QLatin1String("GetCurrentID"));
}

QVariant invokeCurrentContactMember(ContactHost& host, const QString& member, const QVariantList& args)
{
    if (isMember(member, QLatin1String("SetField"))) {
        requireCount(args, 2, member);
        const qint32 fieldId = toInt32(args, 0, member);
        host.setField(fieldId, toText(args, 1, member));
        return QVariant();
    }
    if (isMember(member, QLatin1String("AddNewContact"))) {
        requireCount(args, 0, member);
        host.addNewContact();
        return QVariant();
    }
    requireCount(args, 0, member); // GetCurrentID
    const qint64 id = host.currentId();
    return id < 0 ? QString() : QString::number(id);
}

} // namespace corvalent::host
