#pragma once

#include "act/ActSession.h"
#include "act/ContactCapture.h"
#include "act/ContactForm.h"
#include "act/HostTexts.h"
#include "act/PhoneFormat.h"

#include <QObject>
#include <QString>
#include <array>

namespace corvalent {

// Puts grabbed text into the boxes, writes the boxes into the current contact or a new one, and undoes the last
// grab or update. Which of the two undo plays back is decided by the undo entry's caption alone, so the window
// binds its menu entry to undoCaption() and undoEnabled(); the update's caption names the contact manager, the
// same one every time, so the decision holds whatever its name. No widgets: the main window runs it.
class ContactUpdater : public QObject {
    Q_OBJECT
public:
    static inline const QString kUndoGrabCaption = QStringLiteral("Undo last grab");
    // The update question's title is this literal text, and stays so.
    static inline const QString kUpdateQuestionTitle = QStringLiteral("App.title");
    static constexpr int kGrabUndoSlots = 3;
    static constexpr int kCityBox = 3;
    static constexpr int kStateBox = 4;
    static constexpr int kZipBox = 5;

    // `addingContact` is held true while New Contact writes, so that the lookup change it causes is not taken
    // for the user's.
    ContactUpdater(ActSession& session, ContactForm& form, ContactCapture& capture, bool& addingContact,
                   HostTexts texts, QObject* parent = nullptr);

    // The grab-undo record: the box each slot restores (-1 unused) and the text it held before the grab.
    std::array<qint16, kGrabUndoSlots> iGrabUndoField{-1, -1, -1};
    std::array<QString, kGrabUndoSlots> sGrabUndoText;
    // Each field's value in the contact just before the last update.
    std::array<QString, ContactForm::kSlots> UpdateUndo;

    QString undoCaption() const { return m_undoCaption; }
    bool undoEnabled() const { return m_undoEnabled; }

    // A grab into box `Index` begins: slot 0 records the box, the other slots are freed.
    void beginGrab(int Index);
    // A grab ended, whatever it brought: undo now takes it back.
    void endGrab();

    void Update_Contact_Info(const QString& text, int Index);
    void Write_Info(const QString& text, int Index);
    void Store_OldValue(int slot, int Index);
    // A "city, state zip" line grabbed into the state or zip box fills city, state and zip with what it holds;
    // any other text goes into the box as it is.
    void Treat_combo(const QString& text, int Index);

    // Asks, then writes all ten boxes into the current contact and makes the update undoable. Behind the error
    // trap: fields written before a failure stay written.
    void cmdUpdateACT_Click();
    // A new contact made of the boxes whose Grab button is enabled. Not undoable.
    void cmdNewContact_Click();
    void mnuUndo_Click();

    // The contact manager's field behind box `Index`, or nullopt when the row reads none.
    std::optional<qint32> fieldIdOf(int Index) const;

signals:
    void undoChanged();

private:
    QString valueToWrite(qint32 fieldId, const QString& text);
    void setUndo(const QString& caption, bool enabled);

    ActSession& m_session;
    ContactForm& m_form;
    ContactCapture& m_capture;
    bool& m_addingContact;
    PhoneFormatter m_phones;
    HostTexts m_texts;
    QString m_undoCaption = m_texts.undoUpdateCaption();
    bool m_undoEnabled = false;
};

} // namespace corvalent
