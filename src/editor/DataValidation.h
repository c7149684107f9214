#pragma once

#include <QString>
#include <functional>

namespace corvalent {

inline constexpr int kBackspaceKey = 8;

// Lets a typed character through when it is one of `allowed` (either case) or, with `allowBackspace`, the
// backspace; anything else sounds the beep and answers 0, which drops the keystroke.
int ValidateText(int keyAscii, const QString& allowed, bool allowBackspace);

// The beep a dropped keystroke sounds; tests count them. Null restores the system beep.
void SetValidationBeep(std::function<void()> beep);

} // namespace corvalent
