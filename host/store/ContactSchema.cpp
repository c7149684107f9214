#include "store/ContactSchema.h"

#include "common/Error.h"
#include "store/FieldCatalog.h"
#include "store/SqliteConnection.h"

#include <QDate>
#include <QFile>
#include <QSet>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>

namespace corvalent::host::schema {

namespace {

QList<int> idsWhere(bool phonesOnly)
{
    QList<int> ids;
    for (const FieldDef& field : fieldPositions()) {
        if (field.id >= 0 && (!phonesOnly || field.type == FieldType::Phone))
            ids.append(field.id);
    }
    return ids;
}

[[noreturn]] void notContactDatabase(const QString& path, const QString& why)
{
    throw Error(ErrorNumber::AutomationError,
                QStringLiteral("\"%1\" is not a contact database: %2").arg(path, why));
}

} // namespace

QString fieldColumn(int fieldId)
{
    return QStringLiteral("f%1").arg(fieldId);
}

QString countryColumn(int phoneFieldId)
{
    return QStringLiteral("cc%1").arg(phoneFieldId);
}

const QList<int>& storedFieldIds()
{
    static const QList<int> ids = idsWhere(false);
    return ids;
}

const QList<int>& phoneFieldIds()
{
    static const QList<int> ids = idsWhere(true);
    return ids;
}

void create(const SqliteConnection& connection)
{
    QStringList columns{QStringLiteral("id INTEGER PRIMARY KEY")};
    for (int id : storedFieldIds())
        columns << fieldColumn(id) + QStringLiteral(" TEXT NOT NULL DEFAULT ''");
    for (int id : phoneFieldIds())
        columns << countryColumn(id) + QStringLiteral(" TEXT NOT NULL DEFAULT ''");

    connection.exec(QStringLiteral("CREATE TABLE meta (key TEXT PRIMARY KEY, value TEXT NOT NULL)"));
    connection.exec(QStringLiteral("CREATE TABLE contacts (%1)").arg(columns.join(QStringLiteral(", "))));
    connection.exec(QStringLiteral(
        "CREATE TABLE aux_commands (name TEXT PRIMARY KEY COLLATE NOCASE, program TEXT NOT NULL, "
        "folder TEXT NOT NULL, title TEXT NOT NULL, hint TEXT NOT NULL, small_icon TEXT NOT NULL, "
        "large_icon TEXT NOT NULL, flags INTEGER NOT NULL)"));
    // Placements keep the order they were made in (their rowid): that is the order of the toolbar's buttons.
    connection.exec(QStringLiteral(
        "CREATE TABLE aux_placements (name TEXT NOT NULL COLLATE NOCASE, place TEXT NOT NULL, "
        "view INTEGER NOT NULL, UNIQUE (name, place, view))"));

    QSqlQuery stamp = connection.prepare(QStringLiteral("INSERT INTO meta (key, value) VALUES (?, ?)"));
    stamp.addBindValue(QStringLiteral("format"));
    stamp.addBindValue(kFormatName);
    connection.exec(stamp);
    stamp.addBindValue(QStringLiteral("version"));
    stamp.addBindValue(QString::number(kFormatVersion));
    connection.exec(stamp);
}

const QList<int>& lookupFieldIds()
{
    static const QList<int> ids{26, 25, 30, 40};
    return ids;
}

bool hasLookupIndex(const SqliteConnection& connection)
{
    QSqlQuery query = connection.prepare(QStringLiteral("SELECT 1 FROM sqlite_master WHERE name = ?"));
    query.addBindValue(kLookupIndex);
    connection.exec(query);
    return query.next();
}

void addLookupIndex(const SqliteConnection& connection)
{
    QStringList columns, newValues, oldValues;
    for (int id : lookupFieldIds()) {
        columns << fieldColumn(id);
        newValues << QStringLiteral("new.") + fieldColumn(id);
        oldValues << QStringLiteral("old.") + fieldColumn(id);
    }
    const QString list = columns.join(QStringLiteral(", "));
    // The index keeps no copy of the texts: they stay in `contacts`, whose id is the index's rowid.
    connection.exec(QStringLiteral("CREATE VIRTUAL TABLE %1 USING fts5(%2, content='contacts', content_rowid='id', "
                                   "tokenize='trigram')")
                        .arg(kLookupIndex, list));
    const QString add = QStringLiteral("INSERT INTO %1 (rowid, %2) VALUES (new.id, %3);")
                            .arg(kLookupIndex, list, newValues.join(QStringLiteral(", ")));
    const QString remove = QStringLiteral("INSERT INTO %1 (%1, rowid, %2) VALUES ('delete', old.id, %3);")
                               .arg(kLookupIndex, list, oldValues.join(QStringLiteral(", ")));
    connection.exec(QStringLiteral("CREATE TRIGGER %1_add AFTER INSERT ON contacts BEGIN %2 END").arg(kLookupIndex, add));
    connection.exec(
        QStringLiteral("CREATE TRIGGER %1_remove AFTER DELETE ON contacts BEGIN %2 END").arg(kLookupIndex, remove));
    connection.exec(QStringLiteral("CREATE TRIGGER %1_change AFTER UPDATE OF %2 ON contacts BEGIN %3 %4 END")
                        .arg(kLookupIndex, list, remove, add));
    connection.exec(QStringLiteral("INSERT INTO %1 (%1) VALUES ('rebuild')").arg(kLookupIndex));
}

void setMyRecord(const SqliteConnection& connection, qint64 contactId)
{
    QSqlQuery query =
        connection.prepare(QStringLiteral("INSERT OR REPLACE INTO meta (key, value) VALUES ('my_record', ?)"));
    query.addBindValue(QString::number(contactId));
    connection.exec(query);
}

void requireSqliteHeader(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(ErrorNumber::PermissionDenied, QStringLiteral("Cannot read \"%1\": %2").arg(path, file.errorString()));
    static const QByteArray kHeader("SQLite format 3\0", 16);
    if (file.read(kHeader.size()) != kHeader)
        notContactDatabase(path, QStringLiteral("it is not a SQLite file"));
}

qint64 verify(const SqliteConnection& connection, const QString& path)
{
    // Any failing query here means the same thing: this is some other SQLite file, or a damaged one.
    QSqlQuery meta(connection.database());
    if (!meta.exec(QStringLiteral("SELECT key, value FROM meta")))
        notContactDatabase(path, QStringLiteral("it has no format stamp"));
    QString format, version, myRecord;
    while (meta.next()) {
        const QString key = meta.value(0).toString();
        if (key == QLatin1String("format"))
            format = meta.value(1).toString();
        else if (key == QLatin1String("version"))
            version = meta.value(1).toString();
        else if (key == QLatin1String("my_record"))
            myRecord = meta.value(1).toString();
    }
    if (format != kFormatName)
        notContactDatabase(path, QStringLiteral("it has no format stamp"));
    bool versionOk = false;
    const int versionNumber = version.toInt(&versionOk);
    if (!versionOk || versionNumber < 1)
        notContactDatabase(path, QStringLiteral("its format version \"%1\" is not valid").arg(version));
    if (versionNumber > kFormatVersion)
        throw Error(ErrorNumber::AutomationError,
                    QStringLiteral("\"%1\" was written by a newer version of corvalent-contacts (format %2)")
                        .arg(path)
                        .arg(versionNumber));

    const QSqlRecord contacts = connection.database().record(QStringLiteral("contacts"));
    QStringList missing;
    for (int id : storedFieldIds()) {
        if (contacts.indexOf(fieldColumn(id)) < 0)
            missing << fieldColumn(id);
    }
    for (int id : phoneFieldIds()) {
        if (contacts.indexOf(countryColumn(id)) < 0)
            missing << countryColumn(id);
    }
    for (const QString& table : {QStringLiteral("aux_commands"), QStringLiteral("aux_placements")}) {
        if (connection.database().record(table).isEmpty())
            missing << table;
    }
    if (contacts.isEmpty() || !missing.isEmpty())
        notContactDatabase(path, QStringLiteral("it lacks %1").arg(contacts.isEmpty() ? QStringLiteral("contacts")
                                                                                      : missing.join(QStringLiteral(", "))));

    bool idOk = false;
    const qint64 myRecordId = myRecord.toLongLong(&idOk);
    return idOk ? myRecordId : -1;
}

QString today()
{
    return QDate::currentDate().toString(Qt::ISODate);
}

bool isCountryCode(const QString& code)
{
    if (code.isEmpty() || code.size() > 4)
        return false;
    for (QChar c : code) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return false;
    }
    return true;
}

PhoneParts splitPhoneData(const QString& text)
{
    if (text.startsWith(QLatin1Char('+'))) {
        const qsizetype space = text.indexOf(QLatin1Char(' '));
        const QString code = text.mid(1, space - 1);
        if (space > 1 && isCountryCode(code))
            return {code, text.mid(space + 1).trimmed()};
    }
    return {QString(), text};
}

} // namespace corvalent::host::schema
