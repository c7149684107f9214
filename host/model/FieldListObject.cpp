#include "model/FieldListObject.h"

#include "common/Error.h"
#include "model/AutomationArguments.h"
#include "store/FieldCatalog.h"

#include <algorithm>
#include <utility>

namespace corvalent::host {

using namespace automation;

namespace {

const FieldDef kDeletedPosition; // answers ID -1, no label, no type, no pop-up list

// The field an argument names: text is a field ID, a number is a position.
const FieldDef& addressedField(const QVariantList& args, const QString& member)
{
    requireCount(args, 1, member);
    if (isText(args.at(0))) {
        const qint32 id = toInt32(args, 0, member);
        if (const FieldDef* field = fieldById(id))
            return *field;
        throw Error(ErrorNumber::InvalidArgument, QStringLiteral("No field has the ID %1").arg(id));
    }
    const qint32 position = toInt32(args, 0, member);
    const QList<FieldDef>& positions = fieldPositions();
    if (position < 0 || position >= positions.size())
        throw Error(ErrorNumber::InvalidArgument, QStringLiteral("There is no field at position %1 (0 to %2)")
                                                      .arg(position)
                                                      .arg(positions.size() - 1));
    const FieldDef& field = positions.at(position);
    return field.id < 0 ? kDeletedPosition : field;
}


} // namespace

QVariant FieldListObject::invoke(const QString& member, const QVariantList& args)
{
    // The field list belongs to a database: without one there is none to describe.
    if (isMember(member, QLatin1String("Count"))) {
        requireCount(args, 0, member);
        openHost();
        const QList<FieldDef>& positions = fieldPositions();
        return qint32(std::count_if(positions.begin(), positions.end(), [](const FieldDef& f) { return f.id >= 0; }));
    }
    enum class Answer { Id, Type, Label, PopupList };
    static const std::pair<const char*, Answer> kByField[] = {
        {"ID", Answer::Id}, {"Type", Answer::Type}, {"Label", Answer::Label}, {"HasPopupList", Answer::PopupList}};
    for (const auto& [name, answer] : kByField) {
        if (!isMember(member, QLatin1String(name)))
            continue;
        const FieldDef& field = addressedField(args, member);
        openHost();
        switch (answer) {
        case Answer::Id: return qint32(field.id);
        case Answer::Type: return qint32(field.id < 0 ? 0 : field.type);
        case Answer::Label: return field.label;
        case Answer::PopupList: return !field.popupList.isEmpty();
        }
    }
    unknownMember("field list", member);
}

} // namespace corvalent::host
