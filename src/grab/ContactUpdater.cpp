#include "grab/ContactUpdater.h"

#include "common/ErrorTrap.h"
#include "common/Prompter.h"
#include "common/VbRuntime.h"
#include "grab/AddressRecognition.h"
#include "prefs/Preferences.h"
#include "request/TextTransforms.h"
#include "services/ServiceDefinition.h"

namespace corvalent {

namespace {

// House number, street, city and state, and the chosen phone: read from other fields, written to none.
const QString kDerivedCodes = QStringLiteral("|777|778|779|888|");

constexpr int kUpdateQuestionStyle = Prompter::YesNo | Prompter::Question | Prompter::DefaultButton2; // 292

} // namespace

ContactUpdater::ContactUpdater(ActSession& session, ContactForm& form, ContactCapture& capture, bool& addingContact,
                               HostTexts texts, QObject* parent)
    : QObject(parent), m_session(session), m_form(form), m_capture(capture), m_addingContact(addingContact),
      m_phones(session), m_texts(std::move(texts))
{
}

std::optional<qint32> ContactUpdater::fieldIdOf(int Index) const
{
    // A row whose code is not a number reads no field at all, so there is nothing to write it to; its code in the
    // record may still be the one an earlier service left there.
    if (!IsNumeric(ServiceSetting(m_capture.serviceFile(), QStringLiteral("F%1").arg(Index))))
        return std::nullopt;
    const QString& code = m_capture.FieldCodes[size_t(Index)];
    if (!IsNumeric(code))
        return std::nullopt;
    // "_None" and the values derived from other fields are no field of the contact.
    const qint32 fieldId = CLng(code);
    if (fieldId == 0 || kDerivedCodes.contains(u'|' + QString::number(fieldId) + u'|'))
        return std::nullopt;
    return fieldId;
}

void ContactUpdater::setUndo(const QString& caption, bool enabled)
{
    m_undoCaption = caption;
    m_undoEnabled = enabled;
    emit undoChanged();
}

void ContactUpdater::beginGrab(int Index)
{
    Store_OldValue(0, Index);
    for (int slot = 1; slot < kGrabUndoSlots; ++slot)
        iGrabUndoField[size_t(slot)] = -1;
}

void ContactUpdater::endGrab()
{
    setUndo(kUndoGrabCaption, true);
}

void ContactUpdater::Store_OldValue(int slot, int Index)
{
    iGrabUndoField[size_t(slot)] = qint16(Index);
    sGrabUndoText[size_t(slot)] = m_form.text(Index);
}

void ContactUpdater::Update_Contact_Info(const QString& text, int Index)
{
    trappedSub(QStringLiteral("frmMain: Sub Update_Contact_Info"), [&] {
        const bool usAuto = Val(GetSetting(QStringLiteral("USAuto"), QStringLiteral("1"))) != 0;
        if ((Index == kStateBox || Index == kZipBox) && usAuto) {
            Treat_combo(text, Index);
            return;
        }
        Write_Info(text, Index);
    });
}

void ContactUpdater::Write_Info(const QString& text, int Index)
{
    trappedSub(QStringLiteral("frmMain: Sub Write_Info"), [&] {
        const std::optional<qint32> fieldId = fieldIdOf(Index);
        if (fieldId && isPhone(m_session, QString::number(*fieldId)))
            m_form.setText(Index, m_phones.PhoneFormat(text));
        else
            m_form.setText(Index, text);
    });
}

void ContactUpdater::Treat_combo(const QString& text, int Index)
{
    trappedSub(QStringLiteral("frmMain: Sub Treat_combo"), [&] {
        const CityStateZip parts = RecogniseCityStateZip(text);
        if (!parts.recognised()) {
            Write_Info(text, Index);
            return;
        }
        // Slot 0 already holds the box grabbed into; the other two hold the other boxes this line may change, so
        // that one undo puts all three back.
        Store_OldValue(1, Index == kStateBox ? kZipBox : kStateBox);
        Store_OldValue(2, kCityBox);
        if (parts.city)
            Write_Info(*parts.city, kCityBox);
        if (parts.state)
            Write_Info(*parts.state, kStateBox);
        if (parts.zip)
            Write_Info(*parts.zip, kZipBox);
    });
}

QString ContactUpdater::valueToWrite(qint32 fieldId, const QString& text)
{
    return isPhone(m_session, QString::number(fieldId)) ? m_phones.PhoneFormat(text) : text;
}

void ContactUpdater::cmdUpdateACT_Click()
{
    trappedSub(QStringLiteral("frmMain: Sub cmdUpdateACT_Click"), [&] {
        if (Prompter::instance().message(m_texts.updateQuestion(), kUpdateQuestionStyle, kUpdateQuestionTitle) !=
            Prompter::Yes)
            return;
        for (int i = 0; i < ContactForm::kSlots; ++i) {
            const std::optional<qint32> fieldId = fieldIdOf(i);
            if (!fieldId) {
                UpdateUndo[size_t(i)].clear();
                continue;
            }
            UpdateUndo[size_t(i)] = m_session.readField(*fieldId);
            m_session.setField(*fieldId, valueToWrite(*fieldId, m_form.text(i)));
        }
        m_session.command(ActSession::kCommandRefresh);
        setUndo(m_texts.undoUpdateCaption(), true);
    });
}

void ContactUpdater::cmdNewContact_Click()
{
    bool locked = false;
    const bool done = trappedSub(QStringLiteral("frmMain: Sub cmdNewContact_Click"), [&] {
        m_addingContact = true;
        m_session.addNewContact();
        m_session.lockWindowUpdate(true);
        locked = true;
        for (int i = 0; i < ContactForm::kSlots; ++i) {
            if (!m_form.grabEnabled(i))
                continue;
            if (const std::optional<qint32> fieldId = fieldIdOf(i))
                m_session.setField(*fieldId, valueToWrite(*fieldId, m_form.text(i)));
        }
        m_session.command(ActSession::kCommandRefresh);
        m_session.lockWindowUpdate(false);
        locked = false;
    });
    if (!done && locked) {
        // The fields written stay written, but the contact manager's window must not stay frozen.
        try {
            m_session.lockWindowUpdate(false);
        } catch (const Error&) {
            // Gone or not answering: its window is not ours to repaint then.
        }
    }
    // The contact manager's events come through the event loop, the lookup change of the addition already on its
    // way: the flag goes only after it, so that it is taken for what it is.
    QMetaObject::invokeMethod(this, [this] { m_addingContact = false; }, Qt::QueuedConnection);
}

void ContactUpdater::mnuUndo_Click()
{
    trappedSub(QStringLiteral("frmMain: Sub mnuUndo_Click"), [&] {
        if (m_undoCaption == m_texts.undoUpdateCaption()) {
            for (int i = 0; i < ContactForm::kSlots; ++i) {
                const std::optional<qint32> fieldId = fieldIdOf(i);
                if (!fieldId)
                    continue;
                const QString& old = UpdateUndo[size_t(i)];
                m_session.setField(*fieldId, isPhone(m_session, QString::number(*fieldId)) ? GetVal(old) : old);
            }
        } else {
            for (int slot = 0; slot < kGrabUndoSlots; ++slot) {
                if (iGrabUndoField[size_t(slot)] == -1)
                    continue;
                m_form.setText(iGrabUndoField[size_t(slot)], sGrabUndoText[size_t(slot)]);
                iGrabUndoField[size_t(slot)] = -1;
            }
        }
        setUndo(m_undoCaption, false);
    });
}

} // namespace corvalent
