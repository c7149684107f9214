#include "act/PhoneList.h"

#include "act/FieldDerivations.h"
#include "common/ErrorTrap.h"
#include "prefs/Preferences.h"

namespace corvalent {

namespace {

constexpr qint32 kPhoneType = 14;
constexpr qint32 kDeletedPosition = -1;

} // namespace

void LoadPhoneList(ActSession& session, ContactForm& form)
{
    trappedSub(QStringLiteral("frmMain: Sub LoadPhoneList"), [&] {
        QList<ContactForm::PhoneEntry> entries;
        // Deleted fields leave gaps in the positions, so the walk goes on until it has seen Count real fields.
        const qint32 count = session.fieldCount();
        for (qint32 position = 0, seen = 0; seen < count; ++position) {
            const qint32 fieldId = session.fieldIdAt(position);
            if (fieldId == kDeletedPosition)
                continue;
            ++seen;
            if (session.typeAt(position) != kPhoneType)
                continue;
            const QString number = session.readField(fieldId);
            QString text = QLatin1Char('[') + session.labelAt(position) + QLatin1Char(']');
            if (!number.isEmpty())
                text += QLatin1Char(' ') + number;
            entries.append({text, fieldId});
        }

        qint32 wanted = 0;
        if (form.currentPhone() >= 0)
            wanted = form.phones().at(form.currentPhone()).fieldId;
        else // a stored choice that is not a field ID chooses nothing
            wanted = GetSetting(QStringLiteral("ComboPhone"), QString::number(ContactFieldId::HomePhone)).toInt();
        int current = -1;
        for (int i = 0; i < entries.size() && current < 0; ++i) {
            if (entries.at(i).fieldId == wanted)
                current = i;
        }
        form.setPhones(entries, current);
    });
}

} // namespace corvalent
