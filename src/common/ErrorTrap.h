#pragma once

#include "common/Error.h"

#include <QString>
#include <source_location>
#include <utility>

namespace corvalent {

// The address users are asked to write to when an error box appears.
inline constexpr const char* kSupportAddress = "support@corvalent.org";

// The one text of the error box: number and description, where it happened, and the plea to write to support.
// `location` is the procedure's own location text, e.g. "frmMain: Sub Get_Contact".
QString errorMessageText(int number, const QString& description, const QString& location, int line);

// The caption of every error box: the program's title followed by " error".
QString errorCaption();

// Shows the error box for an error caught in the procedure named by `location`.
void reportError(const Error& error, const QString& location);
void reportUnexpected(const QString& what, const QString& location, int line);

// Runs a procedure's body behind the error trap: any error shows the one error box and leaves the procedure,
// which then returns `fallback` (what it had at that moment; most procedures have nothing yet).
template <typename Result, typename Body>
Result trapped(const QString& location, Result fallback, Body&& body,
               std::source_location trapAt = std::source_location::current())
{
    try {
        return std::forward<Body>(body)();
    } catch (const Error& e) {
        reportError(e, location);
    } catch (const std::exception& e) {
        reportUnexpected(QString::fromLocal8Bit(e.what()), location, int(trapAt.line()));
    } catch (...) {
        reportUnexpected(QStringLiteral("Unknown error"), location, int(trapAt.line()));
    }
    return fallback;
}

// The same for procedures that return nothing; answers whether the body ran to its end.
template <typename Body>
bool trappedSub(const QString& location, Body&& body,
                std::source_location trapAt = std::source_location::current())
{
    return trapped(location, false, [&] { std::forward<Body>(body)(); return true; }, trapAt);
}

} // namespace corvalent
