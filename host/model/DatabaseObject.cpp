#include "model/DatabaseObject.h"

#include "model/AutomationArguments.h"
#include "model/ContactObject.h"

#include <memory>

namespace corvalent::host {

using namespace automation;

QVariant DatabaseObject::invoke(const QString& member, const QVariantList& args)
{
    if (isMember(member, QLatin1String("OpenEx"))) {
        requireCount(args, 1, member);
        openNamedDatabase(toText(args, 0, member));
        return QVariant();
    }
    if (isMember(member, QLatin1String("Contact"))) {
        requireCount(args, 0, member);
        return toVariant(std::make_shared<ContactObject>(host()));
    }
    unknownMember("database", member);
}

} // namespace corvalent::host
