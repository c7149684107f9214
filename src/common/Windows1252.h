#pragma once

#include <QByteArray>
#include <QChar>
#include <QString>

namespace corvalent::Windows1252 {

// Windows-1252 is what the program's files and character codes were written in. Qt has no codec of its own for
// it, and it is small enough to carry: bytes 0x80-0x9F differ from Latin-1, the rest is the same.

QString decode(const QByteArray& bytes);

// Characters the code page cannot hold become "?"; `lossless` tells whether that happened.
QByteArray encode(const QString& text, bool* lossless = nullptr);

bool canEncode(const QString& text);

// The character code of `c` in Windows-1252, or 63 ("?") for a character it cannot hold, as the runtime's Asc.
int code(QChar c);

// The character of a Windows-1252 code (0-255).
QChar character(int code);

} // namespace corvalent::Windows1252
