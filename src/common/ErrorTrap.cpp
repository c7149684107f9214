#include "common/ErrorTrap.h"

#include "common/Prompter.h"

namespace corvalent {

QString errorCaption()
{
    return QStringLiteral("Corvalent error");
}

QString errorMessageText(int number, const QString& description, const QString& location, int line)
{
    return QStringLiteral("Error %1: '%2'\rin %3 - Line # %4\r\r"
                          "Please contact Corvalent support at %5 with this error message.")
        .arg(number)
        .arg(description, location)
        .arg(line)
        .arg(QString::fromLatin1(kSupportAddress));
}

void reportError(const Error& error, const QString& location)
{
    Prompter::instance().message(errorMessageText(error.number(), error.description(), location,
                                                  int(error.where().line())),
                                 Prompter::Critical, errorCaption());
}

void reportUnexpected(const QString& what, const QString& location, int line)
{
    // Anything that is not one of ours is reported under the runtime's catch-all number.
    Prompter::instance().message(errorMessageText(51, what, location, line), Prompter::Critical, errorCaption());
}

} // namespace corvalent
