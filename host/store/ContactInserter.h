#pragma once

#include <QList>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>
#include <vector>

namespace corvalent::host {

class SqliteConnection;

// Writes whole contacts into a database being filled (the sample and generated databases) through one
// prepared statement: set the fields of a contact, insert, set the next one's.
class ContactInserter {
public:
    explicit ContactInserter(const SqliteConnection& connection);

    // A phone is given in its stored form, "+1 (514) 555-0199"; read-only fields (the dates) can be set here.
    void set(int fieldId, const QString& text);
    void setPhone(int fieldId, const QString& countryCode, const QString& number);
    // Inserts the contact set so far (unset fields empty, dates today unless set) and starts an empty one.
    qint64 insert();

private:
    void setValue(int index, const QString& text);

    const SqliteConnection& m_connection;
    QSqlQuery m_query;
    // Where each field ID's value (and a phone's country code) goes among the statement's values; -1 for none.
    QList<int> m_valueIndex, m_countryIndex;
    QVariantList m_defaults, m_values;
    // Binding a value costs far more than inserting it: only values that differ from the previous contact's
    // are bound again (the statement keeps the others).
    std::vector<char> m_set, m_boundOther;
};

} // namespace corvalent::host
