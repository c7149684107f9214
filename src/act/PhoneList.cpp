#include "act/PhoneList.h"

#include "act/FieldDerivations.h"
#include "act/FieldListCache.h"
#include "common/ErrorTrap.h"
#include "prefs/Preferences.h"

namespace corvalent {

namespace {

constexpr qint32 kPhoneType = 14;
constexpr qint32 kDeletedPosition = -1;

} // namespace

QList<qint32> PhonePositions(ActSession& session)
{
    FieldListCache& fields = session.fields();
    QList<qint32> positions;
    // Deleted fields leave gaps in the positions, so the walk goes on until it has seen Count real fields.
    const qint32 count = fields.count();
    for (qint32 position = 0, seen = 0; seen < count; ++position) {
        if (fields.idAt(position) == kDeletedPosition)
            continue;
        ++seen;
        if (fields.typeAt(position) == kPhoneType)
            positions << position;
    }
    return positions;
}

void LoadPhoneList(ActSession& session, ContactForm& form)
{
    trappedSub(QStringLiteral("frmMain: Sub LoadPhoneList"), [&] {
        QList<ContactForm::PhoneEntry> entries;
        for (qint32 position : PhonePositions(session)) {
            const qint32 fieldId = session.fields().idAt(position);
            const QString number = session.readField(fieldId);
            QString text = QLatin1Char('[') + session.fields().labelAt(position) + QLatin1Char(']');
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
