#include "store/ContactInserter.h"

#include "common/Error.h"
#include "store/ContactSchema.h"
#include "store/SqliteConnection.h"

#include <QStringList>

namespace corvalent::host {

ContactInserter::ContactInserter(const SqliteConnection& connection) : m_connection(connection)
{
    // Qt SQL binds a null QString as NULL, which the NOT NULL columns refuse.
    const QString empty = QStringLiteral("");
    const QString today = schema::today();
    QStringList columns;
    auto place = [&](QList<int>& index, int fieldId, const QString& column) {
        if (index.size() <= fieldId)
            index.resize(fieldId + 1, -1);
        index[fieldId] = int(columns.size());
        columns << column;
        m_defaults << (fieldId == 78 || fieldId == 79 ? today : empty);
    };
    for (int id : schema::storedFieldIds())
        place(m_valueIndex, id, schema::fieldColumn(id));
    for (int id : schema::phoneFieldIds())
        place(m_countryIndex, id, schema::countryColumn(id));

    QStringList places;
    for (qsizetype i = 0; i < columns.size(); ++i)
        places << QStringLiteral("?");
    m_query = connection.prepare(QStringLiteral("INSERT INTO contacts (%1) VALUES (%2)")
                                     .arg(columns.join(QStringLiteral(", ")), places.join(QStringLiteral(", "))));
    m_values = m_defaults;
    for (qsizetype i = 0; i < m_defaults.size(); ++i)
        m_query.bindValue(int(i), m_defaults.at(i));
    m_set.assign(m_defaults.size(), 0);
    m_boundOther.assign(m_defaults.size(), 0);
}

void ContactInserter::setValue(int index, const QString& text)
{
    m_values[index] = text.isNull() ? m_defaults.at(index) : text;
    m_set[index] = 1;
}

void ContactInserter::set(int fieldId, const QString& text)
{
    const int index = fieldId >= 0 && fieldId < m_valueIndex.size() ? m_valueIndex.at(fieldId) : -1;
    if (index < 0)
        throw Error(ErrorNumber::InvalidArgument, QStringLiteral("No field has the ID %1").arg(fieldId));
    if (fieldId < m_countryIndex.size() && m_countryIndex.at(fieldId) >= 0) {
        const schema::PhoneParts parts = schema::splitPhoneData(text);
        setPhone(fieldId, parts.countryCode, parts.number);
        return;
    }
    setValue(index, text);
}

void ContactInserter::setPhone(int fieldId, const QString& countryCode, const QString& number)
{
    const int country = fieldId >= 0 && fieldId < m_countryIndex.size() ? m_countryIndex.at(fieldId) : -1;
    if (country < 0)
        throw Error(ErrorNumber::InvalidArgument, QStringLiteral("The field %1 is not a phone").arg(fieldId));
    setValue(m_valueIndex.at(fieldId), number);
    setValue(country, countryCode);
}

qint64 ContactInserter::insert()
{
    for (size_t i = 0; i < m_set.size(); ++i) {
        if (m_set[i]) {
            m_query.bindValue(int(i), m_values.at(qsizetype(i)));
            m_boundOther[i] = 1;
        } else if (m_boundOther[i]) {
            m_query.bindValue(int(i), m_defaults.at(qsizetype(i)));
            m_boundOther[i] = 0;
        }
        m_set[i] = 0;
    }
    m_connection.exec(m_query);
    return m_query.lastInsertId().toLongLong();
}

} // namespace corvalent::host
