#include "common/Error.h"

#include <utility>

namespace corvalent {

QString standardDescription(int number)
{
    switch (number) {
    case ErrorNumber::InvalidArgument: return QStringLiteral("Invalid procedure call or argument");
    case ErrorNumber::Overflow: return QStringLiteral("Overflow");
    case ErrorNumber::TypeMismatch: return QStringLiteral("Type mismatch");
    case ErrorNumber::FileNotFound: return QStringLiteral("File not found");
    case ErrorNumber::PermissionDenied: return QStringLiteral("Permission denied");
    case ErrorNumber::PathNotFound: return QStringLiteral("Path not found");
    case ErrorNumber::CannotCreateObject: return QStringLiteral("ActiveX component can't create object");
    case ErrorNumber::MemberNotSupported: return QStringLiteral("Object doesn't support this property or method");
    case ErrorNumber::AutomationError: return QStringLiteral("Automation error");
    default: return QStringLiteral("Application-defined or object-defined error");
    }
}

Error::Error(int number, QString description, std::source_location where)
    : m_number(number), m_description(std::move(description)), m_where(where),
      m_what(QStringLiteral("Error %1: %2").arg(number).arg(m_description).toUtf8())
{
}

Error::Error(int number, std::source_location where)
    : Error(number, standardDescription(number), where)
{
}

} // namespace corvalent
