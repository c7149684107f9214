#include "act/ContactCapture.h"

#include "act/FieldDerivations.h"
#include "act/FieldListCache.h"
#include "act/PhoneFormat.h"
#include "act/PhoneList.h"
#include "common/ErrorTrap.h"
#include "common/VbRuntime.h"
#include "request/TextTransforms.h"
#include "services/ServiceDefinition.h"

namespace corvalent {

ContactCapture::ContactCapture(ActSession& session, ContactForm& form)
    : m_session(session), m_form(form)
{
}

bool ContactCapture::Get_Contact(bool NoDisplay)
{
    const bool completed = trappedSub(QStringLiteral("frmMain: Sub Get_Contact"), [&] {
        std::array<QString, kFieldRows> previousCodes;
        std::array<QString, kFieldRows> currentTexts;
        if (ResetFields) {
            ResetFields = false;
        } else {
            for (int i = 0; i < kFieldRows; ++i) {
                previousCodes[size_t(i)] = FieldCodes[size_t(i)];
                currentTexts[size_t(i)] = m_form.text(i);
            }
        }

        const int base = CInt(ServiceSetting(m_serviceFile, QStringLiteral("Base"), QStringLiteral("0")));

        const bool contactView = m_session.activeViewType() == ActSession::kActiveContactView;
        if (contactView) {
            m_session.useContactView(m_session.createView(ActSession::kCreateContactView));
        } else {
            AutomationPtr listView = m_session.createView(ActSession::kCreateListView);
            AutomationPtr grid = m_session.getGrid(listView);
            const qint32 row = m_session.currentRow(grid);
            m_session.useGrid(std::move(listView), std::move(grid), row);
        }

        std::array<QString, kFieldRows> codes;
        for (int i = 0; i < kFieldRows; ++i)
            codes[size_t(i)] = ServiceSetting(m_serviceFile, QStringLiteral("F%1").arg(i));
        m_session.readAhead(fieldsToRead(codes, base));

        for (int i = 0; i < kFieldRows; ++i) {
            const size_t s = size_t(i);
            const QString& code = codes[s];
            const QString barred = QLatin1Char('|') + code + QLatin1Char('|');
            m_form.setGrabEnabled(i, !contactView || !kNoGrabInContactView.contains(barred));

            // A slot without a usable code is emptied but keeps the code it had: a service that comes back to the
            // same code keeps what the box shows.
            if (!IsNumeric(code)) {
                FieldValues[s].clear();
                continue;
            }
            FieldCodes[s] = code;

            const bool keep = previousCodes[s] == code && !previousCodes[s].isEmpty() && (!contactView || !LoadAll);
            FieldValues[s] = keep ? currentTexts[s] : fill(i, code, base, contactView);
        }

        // Only a capture that ran to its end reaches the boxes: after a failure they keep what the user saw, typed
        // text included, while the record holds what was read before the failure.
        if (!NoDisplay) {
            for (int i = 0; i < kFieldRows; ++i)
                m_form.setText(i, FieldValues[size_t(i)]);
        }
    });
    return completed;
}

void ContactCapture::forgetChoiceRows()
{
    static const QString steered = QStringLiteral("|777|778|779|888|");
    const bool addressBased = Val(ServiceSetting(m_serviceFile, QStringLiteral("Base"), QStringLiteral("0"))) == 0;
    for (int i = 0; i < kFieldRows; ++i) {
        const QString code = ServiceSetting(m_serviceFile, QStringLiteral("F%1").arg(i));
        if (steered.contains(QLatin1Char('|') + code + QLatin1Char('|')) || (addressBased && i >= 2 && i <= 6))
            FieldCodes[size_t(i)].clear();
    }
}

QList<qint32> ContactCapture::fieldsToRead(const std::array<QString, ContactForm::kSlots>& codes, int base)
{
    // The phone list is filled after every capture, with the numbers of the same contact; the phone row (888)
    // reads one of those numbers too.
    QList<qint32> fields;
    for (qint32 position : PhonePositions(m_session))
        fields << m_session.fields().idAt(position);
    for (int slot = 0; slot < kFieldRows; ++slot) {
        const QString& code = codes[size_t(slot)];
        if (!IsNumeric(code) || code == QLatin1String("888"))
            continue;
        if (code == QLatin1String("777") || code == QLatin1String("778")) {
            fields << GetAddressField(m_form, m_serviceFile);
        } else if (code == QLatin1String("779")) {
            const qint32 addressField = GetAddressField(m_form, m_serviceFile);
            if (addressField == ContactFieldId::BusinessAddress1)
                fields << ContactFieldId::BusinessCity << ContactFieldId::BusinessState;
            if (addressField == ContactFieldId::HomeAddress1)
                fields << ContactFieldId::HomeCity << ContactFieldId::HomeState;
        } else if (base > 0 || slot < 2 || slot > 6 || m_form.addressOption() == ContactForm::Custom) {
            fields << CLng(code);
        } else if (m_form.addressOption() == ContactForm::Business) {
            fields << (slot == 2 ? ContactFieldId::BusinessAddress1 : slot + 27);
        } else {
            fields << (slot == 2 ? ContactFieldId::HomeAddress1 : slot + 64);
        }
    }
    return fields;
}

QString ContactCapture::fill(int slot, const QString& code, int base, bool contactView)
{
    const size_t s = size_t(slot);
    if (code == QLatin1String("777")) {
        m_form.setGrabEnabled(slot, false);
        return Get_Home_Number(m_session.readField(GetAddressField(m_form, m_serviceFile)));
    }
    if (code == QLatin1String("778")) {
        m_form.setGrabEnabled(slot, false);
        return Remove_Home_Number(m_session.readField(GetAddressField(m_form, m_serviceFile)), m_serviceFile);
    }
    if (code == QLatin1String("779")) {
        m_form.setGrabEnabled(slot, false);
        const qint32 addressField = GetAddressField(m_form, m_serviceFile);
        if (addressField == ContactFieldId::BusinessAddress1)
            return m_session.readField(ContactFieldId::BusinessCity) + QStringLiteral(", ")
                + m_session.readField(ContactFieldId::BusinessState);
        if (addressField == ContactFieldId::HomeAddress1)
            return m_session.readField(ContactFieldId::HomeCity) + QStringLiteral(", ")
                + m_session.readField(ContactFieldId::HomeState);
        // A custom address has no city and state of its own to pair: the slot keeps what it had.
        return FieldValues[s];
    }
    if (code == QLatin1String("888")) {
        m_form.setGrabEnabled(slot, false);
        return Custom_Phone(m_session.readField(GetPhoneNumber(m_form)), slot, m_serviceFile);
    }

    const qint32 fieldId = CLng(code);
    if (base > 0)
        return valueOfField(code, m_session.readField(fieldId));
    if (slot >= 2 && slot <= 6) {
        if (m_form.addressOption() == ContactForm::Custom)
            return m_session.readField(fieldId);
        if (m_form.addressOption() == ContactForm::Business)
            return GetBusiness(m_session, qint16(slot), !contactView);
        return GetHome(m_session, qint16(slot), !contactView);
    }
    return valueOfField(code, m_session.readField(fieldId));
}

// A phone field's text may carry its type in front ("[Business] 555-0199"); the record wants the number.
QString ContactCapture::valueOfField(const QString& code, const QString& text)
{
    if (text.isEmpty())
        return text;
    return isPhone(m_session, QString::number(CLng(code))) ? GetVal(text) : text;
}

} // namespace corvalent
