#include "model/ViewsObject.h"

#include "common/Error.h"
#include "model/AutomationArguments.h"
#include "model/ContactHost.h"
#include "model/ContactListObject.h"
#include "model/ContactViewObject.h"

#include <memory>

namespace corvalent::host {

using namespace automation;

QVariant ViewsObject::invoke(const QString& member, const QVariantList& args)
{
    if (isMember(member, QLatin1String("GetActive"))) {
        requireCount(args, 0, member);
        ContactHost& running = host();
        if (running.activeView() == ContactHost::View::Contact)
            return toVariant(std::make_shared<ContactViewObject>(running));
        return toVariant(std::make_shared<ContactListObject>(running));
    }
    if (isMember(member, QLatin1String("Create"))) {
        requireCount(args, 2, member);
        const qint16 type = toInt16(args, 0, member);
        toText(args, 1, member); // the view's name ("CV") is checked for its type only
        if (type == 1)
            return toVariant(std::make_shared<ContactViewObject>(host()));
        if (type == 2)
            return toVariant(std::make_shared<ContactListObject>(host()));
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("View type %1 is neither 1 (contact view) nor 2 (contact list)").arg(type));
    }
    unknownMember("views", member);
}

} // namespace corvalent::host
