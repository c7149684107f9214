#pragma once

#include <QString>
#include <exception>
#include <source_location>

namespace corvalent {

// Error numbers follow the familiar runtime numbering so that messages read the same on every platform.
namespace ErrorNumber {
constexpr int InvalidArgument = 5;
constexpr int Overflow = 6;
constexpr int TypeMismatch = 13;
constexpr int FileNotFound = 53;
constexpr int PermissionDenied = 70;
constexpr int PathNotFound = 76;
constexpr int CannotCreateObject = 429;
constexpr int MemberNotSupported = 438;
constexpr int AutomationError = 440;
} // namespace ErrorNumber

// The runtime's own description of an error number ("Type mismatch" for 13), or "Application-defined or
// object-defined error" for numbers it does not know.
QString standardDescription(int number);

// What every failing operation throws. `where` is the line of the caller that made the failing call, which is
// what the error box reports as "Line #".
class Error : public std::exception {
public:
    Error(int number, QString description, std::source_location where = std::source_location::current());
    // An error with the runtime's standard description for its number.
    explicit Error(int number, std::source_location where = std::source_location::current());

    int number() const { return m_number; }
    const QString& description() const { return m_description; }
    const std::source_location& where() const { return m_where; }
    const char* what() const noexcept override { return m_what.constData(); }

private:
    int m_number;
    QString m_description;
    std::source_location m_where;
    QByteArray m_what;
};

} // namespace corvalent
