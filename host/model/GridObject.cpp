#include "model/GridObject.h"

#include "common/Error.h"
#include "model/AutomationArguments.h"
#include "model/ContactHost.h"
#include "model/CurrentContactMembers.h"

namespace corvalent::host {

using namespace automation;

qint64 GridObject::contactAt(qint32 row)
{
    const QVector<qint64>& lookup = openHost().lookupIds();
    if (row < 0 || row >= lookup.size())
        throw Error(ErrorNumber::AutomationError,
                    QStringLiteral("Row %1 does not exist: the lookup has %2 row(s)").arg(row).arg(lookup.size()));
    return lookup.at(row);
}

QVariant GridObject::invoke(const QString& member, const QVariantList& args)
{
    if (isMember(member, QLatin1String("GetCurrentRow"))) {
        requireCount(args, 0, member);
        return qint32(openHost().currentRow());
    }
    if (isMember(member, QLatin1String("GetField"))) {
        requireCount(args, 2, member);
        const qint32 fieldId = toInt32(args, 0, member);
        return openHost().store().fieldText(contactAt(toInt32(args, 1, member)), fieldId);
    }
    if (isMember(member, QLatin1String("GetFields"))) {
        // The row comes first, as a list of fields cannot be followed by anything.
        const qint32 row = toInt32(args, 0, member);
        const QList<int> fieldIds = toInt32List(args, 1, member);
        return openHost().store().fieldTexts(contactAt(row), fieldIds);
    }
    if (isCurrentContactMember(member))
        return invokeCurrentContactMember(openHost(), member, args);
    unknownMember("grid", member);
}

} // namespace corvalent::host
