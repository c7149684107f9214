#include "store/ContactStore.h"

#include "common/Error.h"
#include "store/ContactSchema.h"
#include "store/SqliteConnection.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSqlQuery>
#include <QVariant>
#include <unordered_map>

namespace corvalent::host {

namespace {

const QString kToolbar = QStringLiteral("toolbar");
const QString kToolsMenu = QStringLiteral("menu");
// Phones entered without a country code, on a contact and a database that have none either, are taken as
// North American numbers.
const QString kFallbackCountryCode = QStringLiteral("1");

[[noreturn]] void noContact(qint64 contactId)
{
    throw Error(ErrorNumber::AutomationError, QStringLiteral("No contact has the ID %1").arg(contactId));
}

void requireView(int view)
{
    if (view < 1 || view > 6)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("View number %1 is not one of the views 1 to 6").arg(view));
}

const FieldDef& writableField(int fieldId)
{
    const FieldDef* field = fieldById(fieldId);
    if (!field)
        throw Error(ErrorNumber::InvalidArgument, QStringLiteral("No field has the ID %1").arg(fieldId));
    if (field->readOnly)
        throw Error(ErrorNumber::AutomationError,
                    QStringLiteral("The field %1 (%2) is read-only").arg(fieldId).arg(field->label));
    return *field;
}

} // namespace

struct ContactStore::Impl {
    SqliteConnection connection;
    QString path;
    bool open = false;
    bool readOnly = false;
    bool indexed = false; // has the lookup's index
    qint64 myRecord = -1;
    // Reading one field of one contact is what the window and every automation call do all the time: keep one
    // prepared statement per field.
    mutable std::unordered_map<int, QSqlQuery> fieldQueries;
    // The add-on asks for the same few sets of fields on every move.
    mutable QHash<QString, QSqlQuery> fieldsQueries;

    void requireOpen() const
    {
        if (!open)
            throw Error(ErrorNumber::AutomationError, QStringLiteral("No database is open"));
    }
    void requireWritable() const
    {
        requireOpen();
        if (readOnly)
            throw Error(ErrorNumber::PermissionDenied,
                        QStringLiteral("The database \"%1\" is read-only").arg(path));
    }

    QSqlQuery& fieldQuery(int fieldId) const
    {
        auto found = fieldQueries.find(fieldId);
        if (found == fieldQueries.end()) {
            QString columns = schema::fieldColumn(fieldId);
            if (schema::phoneFieldIds().contains(fieldId))
                columns += QStringLiteral(", ") + schema::countryColumn(fieldId);
            found = fieldQueries
                        .emplace(fieldId, connection.prepare(
                                              QStringLiteral("SELECT %1 FROM contacts WHERE id = ?").arg(columns)))
                        .first;
        }
        return found->second;
    }

    // The field's value (and, for a phone, its country code) of one contact; throws for a missing contact.
    std::pair<QString, QString> readField(qint64 contactId, int fieldId) const
    {
        QSqlQuery& query = fieldQuery(fieldId);
        query.bindValue(0, contactId);
        connection.exec(query);
        if (!query.next())
            noContact(contactId);
        std::pair<QString, QString> result{query.value(0).toString(),
                                           schema::phoneFieldIds().contains(fieldId) ? query.value(1).toString()
                                                                                     : QString()};
        query.finish();
        return result;
    }

    QString countryCodeFor(qint64 contactId, int phoneFieldId) const
    {
        const QString own = readField(contactId, phoneFieldId).second;
        if (!own.isEmpty())
            return own;
        // A new number on a contact takes the country of its other phones, then the user's own.
        for (qint64 source : {contactId, myRecord}) {
            if (source < 0 || (source != contactId && !exists(source)))
                continue;
            for (int other : schema::phoneFieldIds()) {
                const QString code = readField(source, other).second;
                if (!code.isEmpty())
                    return code;
            }
        }
        return kFallbackCountryCode;
    }

    bool exists(qint64 contactId) const
    {
        QSqlQuery query = connection.prepare(QStringLiteral("SELECT 1 FROM contacts WHERE id = ?"));
        query.addBindValue(contactId);
        connection.exec(query);
        return query.next();
    }

    void update(qint64 contactId, const QStringList& columns, const QVariantList& values)
    {
        QStringList assignments;
        for (const QString& column : columns)
            assignments << column + QStringLiteral(" = ?");
        assignments << schema::fieldColumn(79) + QStringLiteral(" = ?");
        QSqlQuery query = connection.prepare(
            QStringLiteral("UPDATE contacts SET %1 WHERE id = ?").arg(assignments.join(QStringLiteral(", "))));
        for (const QVariant& value : values) {
            // Qt SQL binds a null QString as NULL, which the NOT NULL columns refuse.
            const QString text = value.toString();
            query.addBindValue(text.isNull() ? QStringLiteral("") : text);
        }
        query.addBindValue(schema::today());
        query.addBindValue(contactId);
        connection.exec(query);
        if (query.numRowsAffected() == 0)
            noContact(contactId);
    }

    QString canonicalAuxName(const QString& name) const
    {
        QSqlQuery query = connection.prepare(QStringLiteral("SELECT name FROM aux_commands WHERE name = ?"));
        query.addBindValue(name);
        connection.exec(query);
        if (!query.next())
            throw Error(ErrorNumber::AutomationError, QStringLiteral("No auxiliary command is named \"%1\"").arg(name));
        return query.value(0).toString();
    }

    bool placed(const QString& name, const QString& place, int view) const
    {
        requireOpen();
        requireView(view);
        QSqlQuery query = connection.prepare(
            QStringLiteral("SELECT 1 FROM aux_placements WHERE name = ? AND place = ? AND view = ?"));
        query.addBindValue(name);
        query.addBindValue(place);
        query.addBindValue(view);
        connection.exec(query);
        return query.next();
    }

    void place(const QString& name, const QString& place, int view, bool placed)
    {
        requireWritable();
        requireView(view);
        const QString canonical = canonicalAuxName(name);
        QSqlQuery query = connection.prepare(
            placed ? QStringLiteral("INSERT OR IGNORE INTO aux_placements (name, place, view) VALUES (?, ?, ?)")
                   : QStringLiteral("DELETE FROM aux_placements WHERE name = ? AND place = ? AND view = ?"));
        query.addBindValue(canonical);
        query.addBindValue(place);
        query.addBindValue(view);
        connection.exec(query);
    }

    QStringList placedNames(const QString& place, int view) const
    {
        requireOpen();
        requireView(view);
        QSqlQuery query = connection.prepare(
            QStringLiteral("SELECT name FROM aux_placements WHERE place = ? AND view = ? ORDER BY rowid"));
        query.addBindValue(place);
        query.addBindValue(view);
        connection.exec(query);
        QStringList names;
        while (query.next())
            names << query.value(0).toString();
        return names;
    }
};

ContactStore::ContactStore() : d(std::make_unique<Impl>()) {}

ContactStore::~ContactStore()
{
    close();
}

void ContactStore::open(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        throw Error(ErrorNumber::FileNotFound, QStringLiteral("File not found: \"%1\"").arg(path));
    if (info.isDir())
        throw Error(ErrorNumber::AutomationError,
                    QStringLiteral("\"%1\" is a folder, not a contact database").arg(path));
    // Look before SQLite touches the file: an empty or foreign file would otherwise be taken for a new
    // database. The checks run on a read-only connection of their own, so that nothing is ever written to a
    // file that turns out not to be ours and the database open now stays open when the new one is refused.
    schema::requireSqliteHeader(path);
    qint64 myRecord = -1;
    {
        SqliteConnection probe;
        probe.open(path, true);
        myRecord = schema::verify(probe, path);
    }
    close();
    d->readOnly = !info.isWritable();
    d->connection.open(path, d->readOnly);
    d->indexed = schema::hasLookupIndex(d->connection);
    if (!d->indexed && !d->readOnly) {
        // Once per database written before lookups had an index: a few seconds for a million contacts.
        d->connection.transaction();
        schema::addLookupIndex(d->connection);
        d->connection.commit();
        d->indexed = true;
    }
    d->myRecord = myRecord;
    d->path = info.absoluteFilePath();
    d->open = true;
}

void ContactStore::create(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists())
        throw Error(58, QStringLiteral("File already exists: \"%1\"").arg(path));
    if (!info.absoluteDir().exists())
        throw Error(ErrorNumber::PathNotFound, QStringLiteral("Path not found: \"%1\"").arg(info.absolutePath()));
    close();
    try {
        d->connection.open(path, false);
        d->connection.transaction();
        schema::create(d->connection);
        schema::addLookupIndex(d->connection);
        QSqlQuery add = d->connection.prepare(QStringLiteral("INSERT INTO contacts (f78, f79) VALUES (?, ?)"));
        add.addBindValue(schema::today());
        add.addBindValue(schema::today());
        d->connection.exec(add);
        d->myRecord = add.lastInsertId().toLongLong();
        add.finish();
        schema::setMyRecord(d->connection, d->myRecord);
        d->connection.commit();
    } catch (...) {
        d->connection.close();
        QFile::remove(path);
        throw;
    }
    d->path = QFileInfo(path).absoluteFilePath();
    d->readOnly = false;
    d->indexed = true;
    d->open = true;
}

void ContactStore::close()
{
    d->fieldQueries.clear();
    d->fieldsQueries.clear();
    d->connection.close();
    d->open = false;
    d->readOnly = false;
    d->indexed = false;
    d->path.clear();
    d->myRecord = -1;
}

bool ContactStore::isOpen() const
{
    return d->open;
}

QString ContactStore::path() const
{
    return d->path;
}

QVector<qint64> ContactStore::allContactIds() const
{
    d->requireOpen();
    return d->connection.integers(QStringLiteral("SELECT id FROM contacts ORDER BY id"));
}

QVector<qint64> ContactStore::lookup(const QString& text) const
{
    d->requireOpen();
    // The index holds trigrams: a text of three characters or more is found through it, as a phrase (quotes
    // doubled), which a trigram index matches anywhere inside a field, with case folded beyond ASCII too, as the
    // comparison below folds it.
    if (d->indexed && text.toUcs4().size() >= 3) {
        QString phrase = text;
        phrase.replace(QLatin1Char('"'), QLatin1String("\"\""));
        return d->connection.integers(
            QStringLiteral("SELECT rowid FROM %1 WHERE %1 MATCH ? ORDER BY rowid").arg(schema::kLookupIndex),
            {QLatin1Char('"') + phrase + QLatin1Char('"')});
    }
    static const QString kColumns = QStringLiteral("f26, f25, f30, f40");
    bool ascii = true;
    for (QChar c : text)
        ascii = ascii && c.unicode() < 0x80;
    if (ascii) {
        // SQLite's LIKE ignores case for ASCII letters only, which is all such a text can hold.
        QString pattern = text;
        pattern.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
            .replace(QLatin1Char('%'), QLatin1String("\\%"))
            .replace(QLatin1Char('_'), QLatin1String("\\_"));
        pattern = QLatin1Char('%') + pattern + QLatin1Char('%');
        QStringList tests;
        for (const QString& column : kColumns.split(QStringLiteral(", ")))
            tests << column + QStringLiteral(" LIKE ? ESCAPE '\\'");
        return d->connection.integers(
            QStringLiteral("SELECT id FROM contacts WHERE %1 ORDER BY id").arg(tests.join(QStringLiteral(" OR "))),
            QStringList(tests.size(), pattern));
    }
    // Accented letters have to be compared the way Qt folds case, so that "MONTRÉAL" finds "Montréal".
    QSqlQuery query = d->connection.prepare(QStringLiteral("SELECT id, %1 FROM contacts ORDER BY id").arg(kColumns));
    d->connection.exec(query);
    QVector<qint64> result;
    while (query.next()) {
        for (int column = 1; column <= 4; ++column) {
            if (query.value(column).toString().contains(text, Qt::CaseInsensitive)) {
                result.append(query.value(0).toLongLong());
                break;
            }
        }
    }
    return result;
}

int ContactStore::contactCount() const
{
    d->requireOpen();
    QSqlQuery query = d->connection.prepare(QStringLiteral("SELECT COUNT(*) FROM contacts"));
    d->connection.exec(query);
    return query.next() ? query.value(0).toInt() : 0;
}

QString ContactStore::fieldText(qint64 contactId, int fieldId) const
{
    d->requireOpen();
    if (!fieldById(fieldId)) {
        if (!d->exists(contactId))
            noContact(contactId);
        return QString();
    }
    return d->readField(contactId, fieldId).first;
}

QStringList ContactStore::fieldTexts(qint64 contactId, const QList<int>& fieldIds) const
{
    d->requireOpen();
    QStringList columns;
    for (int fieldId : fieldIds) {
        if (fieldById(fieldId))
            columns << schema::fieldColumn(fieldId);
    }
    QStringList texts;
    texts.reserve(fieldIds.size());
    if (columns.isEmpty()) {
        if (!d->exists(contactId))
            noContact(contactId);
        texts.resize(fieldIds.size());
        return texts;
    }
    const QString selected = columns.join(QStringLiteral(", "));
    auto found = d->fieldsQueries.find(selected);
    if (found == d->fieldsQueries.end())
        found = d->fieldsQueries.insert(
            selected, d->connection.prepare(QStringLiteral("SELECT %1 FROM contacts WHERE id = ?").arg(selected)));
    QSqlQuery& query = *found;
    query.bindValue(0, contactId);
    d->connection.exec(query);
    if (!query.next())
        noContact(contactId);
    int column = 0;
    for (int fieldId : fieldIds)
        texts << (fieldById(fieldId) ? query.value(column++).toString() : QString());
    query.finish();
    return texts;
}

QString ContactStore::fieldData(qint64 contactId, int fieldId) const
{
    d->requireOpen();
    const FieldDef* field = fieldById(fieldId);
    if (!field || field->type != FieldType::Phone)
        return fieldText(contactId, fieldId);
    const auto [number, countryCode] = d->readField(contactId, fieldId);
    if (number.isEmpty() || countryCode.isEmpty())
        return number;
    return QLatin1Char('+') + countryCode + QLatin1Char(' ') + number;
}

void ContactStore::setFieldText(qint64 contactId, int fieldId, const QString& text)
{
    d->requireWritable();
    const FieldDef& field = writableField(fieldId);
    if (field.type != FieldType::Phone) {
        d->update(contactId, {schema::fieldColumn(fieldId)}, {text});
        return;
    }
    // A phone typed in its stored form ("+44 20 7946 0000") brings its own country code; a plain number
    // keeps the one the phone had.
    const schema::PhoneParts parts = schema::splitPhoneData(text);
    const QString countryCode =
        parts.countryCode.isEmpty() ? d->countryCodeFor(contactId, fieldId) : parts.countryCode;
    setPhone(contactId, fieldId, countryCode, parts.number);
}

void ContactStore::setPhone(qint64 contactId, int fieldId, const QString& countryCode, const QString& number)
{
    d->requireWritable();
    const FieldDef& field = writableField(fieldId);
    if (field.type != FieldType::Phone)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The field %1 (%2) is not a phone").arg(fieldId).arg(field.label));
    if (!schema::isCountryCode(countryCode))
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("\"%1\" is not a country code (one to four digits)").arg(countryCode));
    d->update(contactId, {schema::fieldColumn(fieldId), schema::countryColumn(fieldId)}, {number, countryCode});
}

qint64 ContactStore::addContact()
{
    d->requireWritable();
    QSqlQuery query = d->connection.prepare(QStringLiteral("INSERT INTO contacts (f78, f79) VALUES (?, ?)"));
    query.addBindValue(schema::today());
    query.addBindValue(schema::today());
    d->connection.exec(query);
    return query.lastInsertId().toLongLong();
}

bool ContactStore::contactExists(qint64 contactId) const
{
    d->requireOpen();
    return d->exists(contactId);
}

qint64 ContactStore::myRecordId() const
{
    d->requireOpen();
    return d->myRecord;
}

bool ContactStore::auxCommandExists(const QString& name) const
{
    return auxCommand(name).has_value();
}

void ContactStore::addAuxCommand(const AuxCommand& command)
{
    d->requireWritable();
    if (command.name.trimmed().isEmpty())
        throw Error(ErrorNumber::InvalidArgument, QStringLiteral("An auxiliary command needs a name"));
    // Adding a command that is already there updates it and keeps where it is placed.
    QSqlQuery query = d->connection.prepare(QStringLiteral(
        "INSERT INTO aux_commands (name, program, folder, title, hint, small_icon, large_icon, flags) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT (name) DO UPDATE SET program = excluded.program, "
        "folder = excluded.folder, title = excluded.title, hint = excluded.hint, "
        "small_icon = excluded.small_icon, large_icon = excluded.large_icon, flags = excluded.flags"));
    for (const QString* text : {&command.name, &command.program, &command.folder, &command.title, &command.hint,
                                &command.smallIcon, &command.largeIcon})
        query.addBindValue(text->isNull() ? QStringLiteral("") : *text);
    query.addBindValue(command.flags);
    d->connection.exec(query);
}

std::optional<ContactStore::AuxCommand> ContactStore::auxCommand(const QString& name) const
{
    d->requireOpen();
    QSqlQuery query = d->connection.prepare(QStringLiteral(
        "SELECT name, program, folder, title, hint, small_icon, large_icon, flags FROM aux_commands WHERE name = ?"));
    query.addBindValue(name);
    d->connection.exec(query);
    if (!query.next())
        return std::nullopt;
    AuxCommand command;
    command.name = query.value(0).toString();
    command.program = query.value(1).toString();
    command.folder = query.value(2).toString();
    command.title = query.value(3).toString();
    command.hint = query.value(4).toString();
    command.smallIcon = query.value(5).toString();
    command.largeIcon = query.value(6).toString();
    command.flags = query.value(7).toInt();
    return command;
}

bool ContactStore::auxCommandInToolbar(const QString& name, int view) const
{
    return d->placed(name, kToolbar, view);
}

bool ContactStore::auxCommandInToolsMenu(const QString& name, int view) const
{
    return d->placed(name, kToolsMenu, view);
}

void ContactStore::setAuxCommandInToolbar(const QString& name, int view, bool placed)
{
    d->place(name, kToolbar, view, placed);
}

void ContactStore::setAuxCommandInToolsMenu(const QString& name, int view, bool placed)
{
    d->place(name, kToolsMenu, view, placed);
}

QStringList ContactStore::toolbarCommands(int view) const
{
    return d->placedNames(kToolbar, view);
}

QStringList ContactStore::toolsMenuCommands(int view) const
{
    return d->placedNames(kToolsMenu, view);
}

} // namespace corvalent::host
