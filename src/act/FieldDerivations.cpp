#include "act/FieldDerivations.h"

#include "common/ErrorTrap.h"
#include "common/VbRuntime.h"
#include "prefs/Preferences.h"
#include "services/IniLib.h"
#include "services/ServiceDefinition.h"

#include <limits>

namespace corvalent {

namespace {

// The field numbers are 16-bit integers, and their sum overflows as one.
qint16 add16(qint16 a, qint16 b, std::source_location at = std::source_location::current())
{
    const int sum = int(a) + int(b);
    if (sum < std::numeric_limits<qint16>::min() || sum > std::numeric_limits<qint16>::max())
        throw Error(ErrorNumber::Overflow, at);
    return qint16(sum);
}

QString readAddressSlot(ActSession& session, qint32 fieldId, bool gridRow, std::source_location at)
{
    if (!gridRow)
        return session.getField(fieldId, at);
    const auto row = session.gridRow();
    if (!row)
        throw Error(ActSession::kObjectNotSet, QStringLiteral("Object variable or With block variable not set"), at);
    return session.getField(fieldId, *row, at);
}

} // namespace

qint32 GetAddressField(const ContactForm& form, const QString& serviceFile)
{
    return trapped(QStringLiteral("frmMain: Function GetAddressField"), qint32(0), [&] {
        qint32 result = 0;
        if (form.addressOption() == ContactForm::Business)
            result = ContactFieldId::BusinessAddress1;
        if (form.addressOption() == ContactForm::Home)
            result = ContactFieldId::HomeAddress1;
        if (form.addressOption() == ContactForm::Custom) {
            const QString f2 = ServiceSetting(serviceFile, QStringLiteral("F2"), QStringLiteral("27"));
            if (IsNumeric(f2))
                result = CLng(f2);
        }
        return result;
    });
}

qint32 GetPhoneNumber(const ContactForm& form)
{
    return trapped(QStringLiteral("frmMain: Function GetPhoneNumber"), qint32(0), [&] {
        qint32 result = 0;
        if (form.addressOption() == ContactForm::Business)
            result = ContactFieldId::BusinessPhone;
        if (form.addressOption() == ContactForm::Home)
            result = ContactFieldId::HomePhone;
        if (form.addressOption() == ContactForm::Custom) {
            if (!form.phones().isEmpty()) {
                // A list with entries but none chosen has no item to answer for.
                if (form.currentPhone() < 0)
                    throw Error(ErrorNumber::InvalidArgument);
                result = form.phones().at(form.currentPhone()).fieldId;
            } else {
                result = CLng(GetSetting(QStringLiteral("ComboPhone"),
                                         QString::number(ContactFieldId::MobilePhone)));
            }
        }
        return result;
    });
}

QString GetBusiness(ActSession& session, qint16 Slot, bool GridRow)
{
    return trapped(QStringLiteral("frmMain: Function GetBusiness"), QString(), [&] {
        const qint16 field = Slot == 2 ? qint16(ContactFieldId::BusinessAddress1) : add16(Slot, 27);
        return readAddressSlot(session, field, GridRow, std::source_location::current());
    });
}

QString GetHome(ActSession& session, qint16 Slot, bool GridRow)
{
    return trapped(QStringLiteral("frmMain: Function GetHome"), QString(), [&] {
        const qint16 field = Slot == 2 ? qint16(ContactFieldId::HomeAddress1) : add16(Slot, 64);
        return readAddressSlot(session, field, GridRow, std::source_location::current());
    });
}

} // namespace corvalent
