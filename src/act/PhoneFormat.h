#pragma once

#include "act/ActSession.h"

#include <QString>
#include <optional>

namespace corvalent {

// True when the contact manager reports the field's Type as 14 (a phone field). Behind the error trap: an error
// shows the error box and answers false.
bool isPhone(ActSession& session, const QString& FieldId);

// A phone number written with a mask as number formatting writes it: every "#" takes one digit, filled from the
// right; every other character of the mask stays where it stands. Places left of the last digit stay empty,
// digits beyond the mask's places go in front of its first place, and leading zeros are dropped, as they are
// for a number. Only the digits of `phone` count.
QString FormatWithPhoneMask(const QString& phone, const QString& mask);

// Phone masks by country, from the contact manager's Phone.fmt (a country code, a tab and the mask on each line).
// Keeps, for its own life, the contact manager's folder and the mask of the logged-in user, each found once.
class PhoneFormatter {
public:
    static inline const QString kDefaultMask = QStringLiteral("###-###-####");

    explicit PhoneFormatter(ActSession& session);

    // The mask for the country of a contact's phone (field 35): that contact becomes the current contact, the
    // country code is read from the phone's stored data ("+1 (514) 555-0199" has 1), and the first line of
    // Phone.fmt for that country gives the mask, cut after its last "#". "" when the contact has no phone;
    // "###-###-####" when Phone.fmt is missing or has no line for the country. Behind the error trap; answers ""
    // after an error.
    QString GetPhoneFormat(const QString& ContactId);

    // A phone number formatted with the mask of the current contact's country, or, when that mask is empty, with
    // the mask of the logged-in user's own record ("###-###-####" when that is empty too). A text without digits
    // formats to "". Behind the error trap; answers "" after an error.
    QString PhoneFormat(const QString& Phone);

    // The folder Phone.fmt is read from ("" when none was found); found at the first need.
    QString hostFolder();

private:
    ActSession& m_session;
    std::optional<QString> m_hostFolder;
    std::optional<QString> m_userMask;
};

} // namespace corvalent
