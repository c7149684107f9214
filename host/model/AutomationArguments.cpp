#include "model/AutomationArguments.h"

#include "common/Automation.h"
#include "common/Error.h"
#include "common/VbRuntime.h"

#include <cmath>
#include <limits>

namespace corvalent::host::automation {

namespace {

// What an error message quotes of an argument: never a whole megabyte.
QString shown(const QString& text)
{
    constexpr qsizetype kShown = 40;
    return text.size() <= kShown ? text : text.left(kShown) + QStringLiteral("...");
}

QString argumentName(qsizetype index, const QString& member)
{
    return QStringLiteral("Argument %1 of %2").arg(index + 1).arg(member);
}

const QVariant& argument(const QVariantList& args, qsizetype index, const QString& member)
{
    if (index < 0 || index >= args.size())
        throw Error(ErrorNumber::InvalidArgument, QStringLiteral("%1 is missing").arg(argumentName(index, member)));
    return args.at(index);
}

[[noreturn]] void typeMismatch(const QVariant& value, qsizetype index, const QString& member, const char* wanted)
{
    const QString what = holdsObject(value)       ? QStringLiteral("an object")
                         : !value.isValid()       ? QStringLiteral("nothing")
                         : value.typeId() == QMetaType::QString ? QStringLiteral("\"%1\"").arg(shown(value.toString()))
                                                  : QString::fromLatin1(value.typeName());
    throw Error(ErrorNumber::TypeMismatch,
                QStringLiteral("%1 must be %2, not %3").arg(argumentName(index, member), QLatin1String(wanted), what));
}

bool isIntegral(int typeId)
{
    switch (typeId) {
    case QMetaType::Short: case QMetaType::UShort: case QMetaType::Int: case QMetaType::UInt:
    case QMetaType::Long: case QMetaType::ULong: case QMetaType::LongLong: case QMetaType::ULongLong:
    case QMetaType::Char: case QMetaType::SChar: case QMetaType::UChar:
        return true;
    default:
        return false;
    }
}

// A numeric argument as a double (whole numbers up to 2^53 are exact, far past any range checked here).
double number(const QVariant& value, qsizetype index, const QString& member)
{
    const int type = value.typeId();
    if (holdsObject(value) || !value.isValid())
        typeMismatch(value, index, member, "a number");
    if (type == QMetaType::Bool)
        return value.toBool() ? -1 : 0; // True is -1 to the runtime
    if (type == QMetaType::ULongLong)
        return double(value.toULongLong());
    if (isIntegral(type))
        return double(value.toLongLong());
    if (type == QMetaType::Double || type == QMetaType::Float)
        return value.toDouble();
    if (type == QMetaType::QString) {
        const QString text = value.toString();
        if (text.size() <= kMaxTextLength && IsNumeric(text))
            return Val(text);
    }
    typeMismatch(value, index, member, "a number");
}

template <typename Int>
Int integer(const QVariantList& args, qsizetype index, const QString& member)
{
    const double value = std::nearbyint(number(argument(args, index, member), index, member));
    if (!std::isfinite(value) || value < double(std::numeric_limits<Int>::min()) ||
        value > double(std::numeric_limits<Int>::max()))
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("%1 is out of range (%2 to %3)")
                        .arg(argumentName(index, member))
                        .arg(std::numeric_limits<Int>::min())
                        .arg(std::numeric_limits<Int>::max()));
    return Int(value);
}

} // namespace

bool isMember(const QString& member, QLatin1String name)
{
    return member.compare(name, Qt::CaseInsensitive) == 0;
}

void unknownMember(const char* object, const QString& member)
{
    throw Error(ErrorNumber::MemberNotSupported,
                QStringLiteral("The %1 object has no member \"%2\"").arg(QLatin1String(object), shown(member)));
}

void requireCount(const QVariantList& args, qsizetype count, const QString& member)
{
    if (args.size() != count)
        throw Error(ErrorNumber::InvalidArgument, QStringLiteral("%1 takes %2 argument(s), not %3")
                                                      .arg(shown(member))
                                                      .arg(count)
                                                      .arg(args.size()));
}

qint16 toInt16(const QVariantList& args, qsizetype index, const QString& member)
{
    return integer<qint16>(args, index, member);
}

qint32 toInt32(const QVariantList& args, qsizetype index, const QString& member)
{
    return integer<qint32>(args, index, member);
}

QList<int> toInt32List(const QVariantList& args, qsizetype first, const QString& member)
{
    const qsizetype count = args.size() - first;
    if (count < 1 || count > kMaxListLength)
        throw Error(ErrorNumber::InvalidArgument, QStringLiteral("%1 takes %2 to %3 argument(s), not %4")
                                                      .arg(shown(member))
                                                      .arg(first + 1)
                                                      .arg(first + kMaxListLength)
                                                      .arg(args.size()));
    QList<int> numbers;
    numbers.reserve(count);
    for (qsizetype i = first; i < args.size(); ++i)
        numbers << toInt32(args, i, member);
    return numbers;
}

QString toText(const QVariantList& args, qsizetype index, const QString& member)
{
    const QVariant& value = argument(args, index, member);
    const int type = value.typeId();
    QString text;
    if (!value.isValid())
        return text;
    if (type == QMetaType::QString)
        text = value.toString();
    else if (type == QMetaType::Bool)
        text = value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    else if (type == QMetaType::ULongLong)
        text = QString::number(value.toULongLong());
    else if (isIntegral(type))
        text = QString::number(value.toLongLong());
    else if (type == QMetaType::Double || type == QMetaType::Float)
        text = NumberText(value.toDouble());
    else
        typeMismatch(value, index, member, "text");
    if (text.size() > kMaxTextLength)
        throw Error(ErrorNumber::InvalidArgument, QStringLiteral("%1 is too long (%2 characters, at most %3)")
                                                      .arg(argumentName(index, member))
                                                      .arg(text.size())
                                                      .arg(kMaxTextLength));
    return text;
}

bool isText(const QVariant& value)
{
    return value.typeId() == QMetaType::QString;
}

} // namespace corvalent::host::automation
