#pragma once

#include "act/ActSession.h"
#include "act/ContactForm.h"

#include <QList>

namespace corvalent {

// The positions of the phone fields (type 14) in the field list, in field-list order. Raises the field list's
// errors.
QList<qint32> PhonePositions(ActSession& session);

// Fills the form's phone list with the phone fields (type 14) of the field list, in field-list order, each shown
// as "[label] number" with the number of the contact the latest capture read ("[Phone] (514) 555-0199"; just
// "[Fax]" when the field is empty), so that GetVal of an entry gives its number. The entry chosen before stays
// chosen when its field is still listed; with none chosen, the stored "ComboPhone" (default 37) is chosen when it
// is listed. Behind the error trap ("frmMain: Sub LoadPhoneList"): after an error the list is as it was.
void LoadPhoneList(ActSession& session, ContactForm& form);

} // namespace corvalent
