#pragma once

#include "act/FieldListCache.h"

#include <QList>
#include <QString>

namespace corvalent {

// The field types a service row may be given: text, number, date and the like, the phone type 14 among them.
inline const QString kServiceFieldTypes = QStringLiteral("|1|2|3|4|5|6|14|15|");
inline constexpr qint32 kPhoneFieldType = 14;

// A drop-down list of fields as the editor shows it: each entry's text and the field code it stands for.
struct FieldChoices {
    struct Entry {
        QString text;
        qint32 itemData = 0;
    };
    QList<Entry> entries;
    int current = -1; // -1: nothing chosen

    // The first entry whose code is `itemData`; -1 when there is none.
    int indexOf(qint32 itemData) const;
};

// Fills `list` with "_None", the pseudo-fields of `serviceType` (0: street number, address without it, city and
// state; 1: phone numbers) and the fields of `fields` whose type is in `typeList` (types between bars) and that
// pass `popupFilter` (0 all, 1 only those with a pop-up list, 2 only those without); a phone service lists no
// phone field of its own. `fields` may be null when no database can be asked: the list then holds "_None" and
// the pseudo-fields. `selectValue` "" keeps the choice, "vbTopItem" chooses "_None", a number chooses the first
// entry of that code. Behind the error trap: after an error the list keeps what was added so far.
void Populate_cboFields(FieldChoices& list, FieldListCache* fields, const QString& typeList, qint16 popupFilter,
                        const QString& selectValue, qint16 serviceType);

// Whether the field `fieldId` (its ID as text) passes the type list and the pop-up filter.
bool Include_Field(FieldListCache& fields, const QString& fieldId, const QString& typeList, qint16 popupFilter);

} // namespace corvalent
