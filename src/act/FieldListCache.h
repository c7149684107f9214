#pragma once

#include "act/ActSession.h"

#include <QHash>
#include <QString>
#include <optional>
#include <source_location>

namespace corvalent {

// The open database's field list, each answer asked of the contact manager once. The service editor fills ten
// lists from it on every change of type, and the session's own copy (ActSession::fields) serves the phone list
// and the phone tests of every capture; every answer would otherwise be a round trip. Errors are not kept: a call
// that failed is asked again next time.
class FieldListCache {
public:
    explicit FieldListCache(ActSession& session) : m_session(session) {}

    qint32 count(std::source_location at = std::source_location::current());
    qint32 idAt(qint32 position, std::source_location at = std::source_location::current());
    qint32 typeAt(qint32 position, std::source_location at = std::source_location::current());
    QString labelAt(qint32 position, std::source_location at = std::source_location::current());
    qint32 type(const QString& fieldId, std::source_location at = std::source_location::current());
    bool hasPopupList(const QString& fieldId, std::source_location at = std::source_location::current());

private:
    ActSession& m_session;
    std::optional<qint32> m_count;
    QHash<qint32, qint32> m_ids;
    QHash<qint32, qint32> m_types;
    QHash<qint32, QString> m_labels;
    QHash<QString, qint32> m_typesById;
    QHash<QString, bool> m_popups;
};

} // namespace corvalent
