#pragma once

#include <QList>
#include <QString>

namespace corvalent::host {

class SqliteConnection;

// How a contact database is laid out in its SQLite file: one wide `contacts` table with a column per field ID
// ("f26") and a country-code column per phone field ("cc35"), the auxiliary commands and where they are placed,
// and a `meta` table naming the format, its version and My Record. The store and the database writers share it.
namespace schema {

inline const QString kFormatName = QStringLiteral("corvalent-contacts");
constexpr int kFormatVersion = 1;

QString fieldColumn(int fieldId);
QString countryColumn(int phoneFieldId);
// Every field that has a column, in field-list order, and the phone fields among them.
const QList<int>& storedFieldIds();
const QList<int>& phoneFieldIds();

// The tables of an empty database and its format stamp.
void create(const SqliteConnection& connection);

// The lookup's index: trigrams of the looked-up fields (contact, company, city, e-mail), case folded, kept in step
// with `contacts` by triggers, so that a lookup reads the index instead of every contact. addLookupIndex fills it
// from the contacts there are: a new database gets it after its contacts are written (a million at once is five
// times quicker than through the triggers), a database written before there was an index when it is opened.
const QList<int>& lookupFieldIds();
inline const QString kLookupIndex = QStringLiteral("lookup_index");
bool hasLookupIndex(const SqliteConnection& connection);
void addLookupIndex(const SqliteConnection& connection);
void setMyRecord(const SqliteConnection& connection, qint64 contactId);

// Throws Error 440 unless `path` starts like a SQLite file; reads the header only, writes nothing.
void requireSqliteHeader(const QString& path);
// Throws Error 440 unless the open connection holds a contact database this version can read. Answers the ID
// of My Record.
qint64 verify(const SqliteConnection& connection, const QString& path);

// Today as the dates are stored and shown (ISO "2024-05-31").
QString today();

// A phone as given in its stored form, "+1 (514) 555-0199": the country code and the number as shown. A text
// without the "+code " prefix is all number and has no country code.
struct PhoneParts {
    QString countryCode;
    QString number;
};
PhoneParts splitPhoneData(const QString& text);
bool isCountryCode(const QString& code);

} // namespace schema
} // namespace corvalent::host
