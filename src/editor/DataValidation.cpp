#include "editor/DataValidation.h"

#include "common/ErrorTrap.h"

#include <QApplication>

namespace corvalent {

namespace {

std::function<void()>& beep()
{
    static std::function<void()> hook;
    return hook;
}

} // namespace

void SetValidationBeep(std::function<void()> hook)
{
    beep() = std::move(hook);
}

int ValidateText(int keyAscii, const QString& allowed, bool allowBackspace)
{
    return trapped(QStringLiteral("modDataValidation: Function ValidateText"), 0, [&] {
        QString accepted = allowed.toUpper();
        if (allowBackspace)
            accepted.prepend(QChar(kBackspaceKey));
        if (accepted.contains(QString(QChar(keyAscii)).toUpper(), Qt::CaseInsensitive))
            return keyAscii;
        if (beep())
            beep()();
        else
            QApplication::beep();
        return 0;
    });
}

} // namespace corvalent
