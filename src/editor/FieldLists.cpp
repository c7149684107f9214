#include "editor/FieldLists.h"

#include "common/ErrorTrap.h"
#include "common/VbRuntime.h"
#include "services/ServiceDefinition.h"

namespace corvalent {

namespace {

constexpr qint32 kDeletedPosition = -1;
// A field list that never reaches its count (a contact manager answering every position) ends here.
constexpr qint32 kLastPosition = 65535;

// Field IDs that the "without a pop-up list" filter leaves out besides; none are, but the hook stays usable.
const QString kExcludedFieldIds;

bool listed(const QString& barList, const QString& code)
{
    return barList.contains(QLatin1Char('|') + code + QLatin1Char('|'));
}

} // namespace

int FieldChoices::indexOf(qint32 itemData) const
{
    for (int i = 0; i < entries.size(); ++i) {
        if (entries.at(i).itemData == itemData)
            return i;
    }
    return -1;
}

void Populate_cboFields(FieldChoices& list, FieldListCache* fields, const QString& typeList, qint16 popupFilter,
                        const QString& selectValue, qint16 serviceType)
{
    trappedSub(QStringLiteral("modPopulateACTLists: Sub Populate_cboFields"), [&] {
        list.entries.clear();
        list.current = -1;
        list.entries.append({QStringLiteral("_None"), FieldCode::None});
        if (serviceType == ServiceBase::Address) {
            list.entries.append({QStringLiteral("->Street number"), FieldCode::StreetNumber});
            list.entries.append({QStringLiteral("->Address w/o Street number"), FieldCode::AddressWithoutNumber});
            list.entries.append({QStringLiteral("->City, State"), FieldCode::CityState});
        } else if (serviceType == ServiceBase::Phone) {
            list.entries.append({QStringLiteral("->Phone Numbers"), FieldCode::PhoneNumbers});
        }

        if (fields) {
            // Deleted fields leave gaps in the positions: the walk goes on until it has seen Count real fields,
            // and reads at least the first position.
            const qint32 count = fields->count();
            qint32 valid = 0;
            qint32 position = 0;
            do {
                const qint32 id = fields->idAt(position);
                if (id != kDeletedPosition) {
                    if (Include_Field(*fields, QString::number(id), typeList, popupFilter)
                        && !(fields->typeAt(position) == kPhoneFieldType && serviceType == ServiceBase::Phone))
                        list.entries.append({fields->labelAt(position), id});
                    ++valid;
                }
                if (++position > kLastPosition)
                    throw Error(ErrorNumber::InvalidArgument,
                                QStringLiteral("The field list does not end after %1 fields").arg(count));
            } while (valid != count);
        }

        if (selectValue.isEmpty())
            return;
        if (selectValue == QLatin1String("vbTopItem")) {
            list.current = 0;
            return;
        }
        const int found = list.indexOf(CLng(selectValue));
        if (found >= 0)
            list.current = found;
    });
}

bool Include_Field(FieldListCache& fields, const QString& fieldId, const QString& typeList, qint16 popupFilter)
{
    return trapped(QStringLiteral("modPopulateACTLists: Function Include_Field"), false, [&] {
        if (!listed(typeList, QString::number(fields.type(fieldId))))
            return false;
        bool include = true;
        if (popupFilter == 1) {
            if (!fields.hasPopupList(fieldId))
                return false;
        } else if (popupFilter == 2) {
            if (fields.hasPopupList(fieldId))
                include = false;
            if (listed(kExcludedFieldIds, fieldId))
                include = false;
        }
        return include;
    });
}

} // namespace corvalent
