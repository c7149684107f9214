#include "act/FieldListCache.h"

namespace corvalent {

namespace {

template <typename Key, typename Value, typename Ask>
Value remembered(QHash<Key, Value>& answers, const Key& key, Ask&& ask)
{
    const auto found = answers.constFind(key);
    if (found != answers.constEnd())
        return *found;
    const Value value = ask();
    answers.insert(key, value);
    return value;
}

} // namespace

qint32 FieldListCache::count(std::source_location at)
{
    if (!m_count)
        m_count = m_session.fieldCount(at);
    return *m_count;
}

qint32 FieldListCache::idAt(qint32 position, std::source_location at)
{
    return remembered(m_ids, position, [&] { return m_session.fieldIdAt(position, at); });
}

qint32 FieldListCache::typeAt(qint32 position, std::source_location at)
{
    return remembered(m_types, position, [&] { return m_session.typeAt(position, at); });
}

QString FieldListCache::labelAt(qint32 position, std::source_location at)
{
    return remembered(m_labels, position, [&] { return m_session.labelAt(position, at); });
}

qint32 FieldListCache::type(const QString& fieldId, std::source_location at)
{
    return remembered(m_typesById, fieldId, [&] { return m_session.fieldType(fieldId, at); });
}

bool FieldListCache::hasPopupList(const QString& fieldId, std::source_location at)
{
    return remembered(m_popups, fieldId, [&] { return m_session.hasPopupList(fieldId, at); });
}

} // namespace corvalent
