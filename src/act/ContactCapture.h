#pragma once

#include "act/ActSession.h"
#include "act/ContactForm.h"

#include <QString>
#include <array>

namespace corvalent {

// Reads the contact the user is looking at into the contact record, by the rows of the selected service: the one
// place where contact data enters the program.
class ContactCapture {
public:
    // "|code|" in this list disables Grab in the contact view before the code is looked at; in the lookup grid
    // Grab starts enabled for every code, so 78 and 79 keep it there. That difference is wanted.
    static inline const QString kNoGrabInContactView = QStringLiteral("|777|778|888|78|79|");

    ContactCapture(ActSession& session, ContactForm& form);

    // The service file whose F0 to F9 and Base steer the capture.
    void setServiceFile(const QString& path) { m_serviceFile = path; }
    const QString& serviceFile() const { return m_serviceFile; }

    // The contact record: the code that filled each slot at the last capture, and the captured text.
    std::array<QString, 10> FieldCodes;
    std::array<QString, 10> FieldValues;

    // Set by the contact events: every slot is read anew, typed text or not. Get_Contact clears it.
    bool ResetFields = false;
    // Set while "Load all fields" captures: in the contact view, typed text is not kept.
    bool LoadAll = false;

    // Captures into FieldCodes and FieldValues and, unless NoDisplay, shows them in the form's ten texts; sets
    // the ten Grab flags either way. A slot whose code is the same as at the last capture keeps the text the form
    // shows, so typing survives a change of service. Behind the error trap ("frmMain: Sub Get_Contact"): after an
    // error the record keeps what was read so far and the form keeps what it showed. Answers whether the capture
    // ran to its end.
    bool Get_Contact(bool NoDisplay);

    // Makes the next capture read anew the rows that the address option and the phone choice steer (an address
    // row of an address-based service, a house number, street, city-and-state or phone row), whatever they show:
    // choosing Home must show the home address. Typed text in the other rows is kept as usual.
    void forgetChoiceRows();

private:
    // The fields the capture of these codes reads, so that they come in one round trip.
    QList<qint32> fieldsToRead(const std::array<QString, ContactForm::kSlots>& codes, int base);
    QString fill(int slot, const QString& code, int base, bool contactView);
    QString valueOfField(const QString& code, const QString& text);

    ActSession& m_session;
    ContactForm& m_form;
    QString m_serviceFile;
};

} // namespace corvalent
