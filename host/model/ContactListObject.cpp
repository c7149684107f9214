#include "model/ContactListObject.h"

#include "model/AutomationArguments.h"
#include "model/ContactHost.h"
#include "model/GridObject.h"

#include <memory>

namespace corvalent::host {

using namespace automation;

QVariant ContactListObject::invoke(const QString& member, const QVariantList& args)
{
    if (isMember(member, QLatin1String("Type"))) {
        requireCount(args, 0, member);
        return qint32(ContactHost::kContactListViewType);
    }
    if (isMember(member, QLatin1String("GetGrid"))) {
        requireCount(args, 0, member);
        return toVariant(std::make_shared<GridObject>(host()));
    }
    unknownMember("contact list", member);
}

} // namespace corvalent::host
