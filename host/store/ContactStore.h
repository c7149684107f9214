#pragma once

#include "store/FieldCatalog.h"

#include <QString>
#include <QStringList>
#include <QVector>
#include <memory>
#include <optional>

namespace corvalent::host {

// One contact database: a SQLite file. Contact IDs are text (the row ID as decimal digits). Every failing
// operation throws corvalent::Error (53 file not found, 70 permission denied, 440 for a database error).
class ContactStore {
public:
    ContactStore();
    ~ContactStore();
    ContactStore(const ContactStore&) = delete;
    ContactStore& operator=(const ContactStore&) = delete;

    // Opens an existing database, or creates an empty one (no contacts but My Record). A file that is not a
    // contact database is refused (440) without a byte written to it, and the database open before stays open.
    // create() never replaces a file: an existing path is Error 58.
    void open(const QString& path);
    void create(const QString& path);
    void close();
    bool isOpen() const;
    QString path() const;

    // All contacts in their stored order (the "all contacts" lookup).
    QVector<qint64> allContactIds() const;
    // Contacts whose contact name, company, city or e-mail contains `text` (case-insensitive).
    QVector<qint64> lookup(const QString& text) const;
    int contactCount() const;

    // The text of a field as the contact view shows it; "" for an empty field or an unknown ID.
    QString fieldText(qint64 contactId, int fieldId) const;
    // The texts of several fields of one contact, in the order asked, read in one statement; as fieldText for
    // each of them.
    QStringList fieldTexts(qint64 contactId, const QList<int>& fieldIds) const;
    // The stored data of a field: for a phone field a one-character prefix "+", the country code, a space and
    // the number as shown ("+1 (514) 555-0199"); the text for any other field.
    QString fieldData(qint64 contactId, int fieldId) const;
    // Writes a field; a phone keeps its country code. Throws for a read-only or unknown field.
    void setFieldText(qint64 contactId, int fieldId, const QString& text);
    void setPhone(qint64 contactId, int fieldId, const QString& countryCode, const QString& number);

    qint64 addContact(); // a new empty contact; its creation and edit dates are set
    bool contactExists(qint64 contactId) const;
    qint64 myRecordId() const; // the user's own record

    // Auxiliary commands (programs the user launches from the toolbar or the Tools menu), per view number 1-6.
    struct AuxCommand {
        QString name, program, folder, title, hint, smallIcon, largeIcon;
        int flags = 0;
    };
    bool auxCommandExists(const QString& name) const;
    void addAuxCommand(const AuxCommand& command);
    std::optional<AuxCommand> auxCommand(const QString& name) const;
    bool auxCommandInToolbar(const QString& name, int view) const;
    bool auxCommandInToolsMenu(const QString& name, int view) const;
    void setAuxCommandInToolbar(const QString& name, int view, bool placed);
    void setAuxCommandInToolsMenu(const QString& name, int view, bool placed);
    QStringList toolbarCommands(int view) const;
    QStringList toolsMenuCommands(int view) const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

// Writes the sample database (51 made-up contacts in several countries: My Record and fifty others) to `path`.
// Both writers build the file beside `path` and rename it into place when it is complete, so a failure leaves
// `path` as it was.
void writeSampleDatabase(const QString& path);
// Where the program keeps its sample database ($XDG_DATA_HOME/corvalent-contacts), made or not.
QString sampleDatabaseFolder();
// Writes `count` generated contacts to `path`, the first of them My Record; `count` < 1 is Error 5. For
// benchmarks: a million takes well under a minute.
void writeGeneratedDatabase(const QString& path, qint64 count);

} // namespace corvalent::host
