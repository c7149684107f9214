#pragma once

#include <QLatin1String>
#include <QString>
#include <QVariant>
#include <QVariantList>

namespace corvalent::host::automation {

// The longest text an automation call may pass. Anything longer is refused (Error 5) before it reaches the
// database or the window.
constexpr qsizetype kMaxTextLength = 64 * 1024;

// Member names are matched without regard to case, as late binding matches them.
bool isMember(const QString& member, QLatin1String name);
[[noreturn]] void unknownMember(const char* object, const QString& member);

// Error 5 unless exactly `count` arguments were given.
void requireCount(const QVariantList& args, qsizetype count, const QString& member);

// The argument at `index`, converted as late binding converts it: numbers from any numeric variant or from a
// text that is a number (rounded half to even), text from text or numbers. An object, or a text that is not a
// number where a number is wanted, is Error 13; a number out of range or a text over kMaxTextLength is Error 5.
qint16 toInt16(const QVariantList& args, qsizetype index, const QString& member);
qint32 toInt32(const QVariantList& args, qsizetype index, const QString& member);
QString toText(const QVariantList& args, qsizetype index, const QString& member);
// The arguments from `first` on, each a number as toInt32 takes it: at least one, at most kMaxListLength (Error 5).
constexpr qsizetype kMaxListLength = 256;
QList<int> toInt32List(const QVariantList& args, qsizetype first, const QString& member);

// Whether an argument was passed as text (the field list reads text as a field ID, numbers as positions).
bool isText(const QVariant& value);

} // namespace corvalent::host::automation
