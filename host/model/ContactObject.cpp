#include "model/ContactObject.h"

#include "common/Error.h"
#include "model/AutomationArguments.h"
#include "model/ContactHost.h"
#include "model/FieldListObject.h"

#include <memory>

namespace corvalent::host {

using namespace automation;

QVariant ContactObject::invoke(const QString& member, const QVariantList& args)
{
    if (isMember(member, QLatin1String("Fields"))) {
        requireCount(args, 0, member);
        return toVariant(std::make_shared<FieldListObject>(host()));
    }
    if (isMember(member, QLatin1String("GoTo"))) {
        requireCount(args, 1, member);
        const QString id = toText(args, 0, member);
        ContactHost& running = openHost();
        bool ok = false;
        const qint64 contactId = id.trimmed().toLongLong(&ok);
        if (!ok || contactId < 0)
            throw Error(ErrorNumber::AutomationError,
                        QStringLiteral("No contact has the ID \"%1\"").arg(id.left(40)));
        running.moveTo(contactId);
        return QVariant();
    }
    if (isMember(member, QLatin1String("Data"))) {
        requireCount(args, 1, member);
        const qint16 fieldId = toInt16(args, 0, member);
        ContactHost& running = openHost();
        const qint64 current = running.currentId();
        return current < 0 ? QString() : running.store().fieldData(current, fieldId);
    }
    unknownMember("contact", member);
}

} // namespace corvalent::host
