#pragma once

#include "act/ActSession.h"
#include "act/ContactForm.h"

#include <QString>

namespace corvalent {

// The contact manager's field IDs that the address option and the phone choice stand for.
namespace ContactFieldId {
constexpr qint32 BusinessAddress1 = 27;
constexpr qint32 BusinessCity = 30;
constexpr qint32 BusinessState = 31;
constexpr qint32 BusinessPhone = 35;
constexpr qint32 HomePhone = 37;
constexpr qint32 MobilePhone = 38;
constexpr qint32 HomeAddress1 = 65;
constexpr qint32 HomeCity = 67;
constexpr qint32 HomeState = 68;
} // namespace ContactFieldId

// Each of these runs behind the error trap: an error shows the error box and the function answers 0 or "".

// The field of the first address line: 27 for Business, 65 for Home, the service's F2 (default 27) for Custom,
// 0 when that F2 is not a number.
qint32 GetAddressField(const ContactForm& form, const QString& serviceFile);

// The phone field to use: 35 for Business, 37 for Home; for Custom the chosen entry of the phone list, or the
// stored "ComboPhone" (default 38) when the list is empty.
qint32 GetPhoneNumber(const ContactForm& form);

// The text of the business or home field that belongs to an address slot: slot 2 is the first address line
// (27 or 65), slots 3 to 6 are slot + 27 or slot + 64 (city, state, zip, country). GridRow reads the grid at the
// row of the latest capture, otherwise the contact view.
QString GetBusiness(ActSession& session, qint16 Slot, bool GridRow);
QString GetHome(ActSession& session, qint16 Slot, bool GridRow);

} // namespace corvalent
