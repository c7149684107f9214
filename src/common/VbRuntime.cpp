#include "common/VbRuntime.h"

#include <cmath>
#include <limits>

namespace corvalent {

namespace {

bool isSkipped(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\n');
}

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

double radixValue(const QString& text, int from, int radix)
{
    double value = 0;
    for (int i = from; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (isSkipped(c))
            continue;
        const int digit = QStringLiteral("0123456789ABCDEF").indexOf(c.toUpper());
        if (digit < 0 || digit >= radix)
            break;
        value = value * radix + digit;
    }
    return value;
}

// Rounds half to even, as the runtime's integer conversions do.
double roundHalfEven(double value)
{
    return std::nearbyint(value); // the default floating-point rounding mode is to nearest, ties to even
}

template <typename Int>
Int toInteger(const QString& text, std::source_location at)
{
    if (!IsNumeric(text))
        throw Error(ErrorNumber::TypeMismatch, at);
    const double rounded = roundHalfEven(Val(text));
    if (rounded < double(std::numeric_limits<Int>::min()) || rounded > double(std::numeric_limits<Int>::max()))
        throw Error(ErrorNumber::Overflow, at);
    return Int(rounded);
}

} // namespace

double Val(const QString& text)
{
    int i = 0;
    const int n = text.size();
    auto skip = [&] {
        while (i < n && isSkipped(text.at(i)))
            ++i;
    };
    skip();
    if (i + 1 < n && text.at(i) == QLatin1Char('&')) {
        const QChar kind = text.at(i + 1).toUpper();
        if (kind == QLatin1Char('H'))
            return radixValue(text, i + 2, 16);
        if (kind == QLatin1Char('O'))
            return radixValue(text, i + 2, 8);
    }

    QString number;
    if (i < n && (text.at(i) == QLatin1Char('-') || text.at(i) == QLatin1Char('+'))) {
        number.append(text.at(i));
        ++i;
    }
    bool point = false;
    bool digits = false;
    for (; i < n; ++i) {
        const QChar c = text.at(i);
        if (isSkipped(c))
            continue;
        if (isDigit(c)) {
            digits = true;
            number.append(c);
        } else if (c == QLatin1Char('.') && !point) {
            point = true;
            number.append(c);
        } else {
            break;
        }
    }
    if (!digits)
        return 0;
    // An exponent counts only when digits follow it.
    if (i < n && (text.at(i).toUpper() == QLatin1Char('E') || text.at(i).toUpper() == QLatin1Char('D'))) {
        int j = i + 1;
        QString exponent = QStringLiteral("e");
        while (j < n && isSkipped(text.at(j)))
            ++j;
        if (j < n && (text.at(j) == QLatin1Char('-') || text.at(j) == QLatin1Char('+')))
            exponent.append(text.at(j++));
        bool expDigits = false;
        for (; j < n; ++j) {
            const QChar c = text.at(j);
            if (isSkipped(c))
                continue;
            if (!isDigit(c))
                break;
            expDigits = true;
            exponent.append(c);
        }
        if (expDigits)
            number.append(exponent);
    }
    return number.toDouble();
}

bool IsNumeric(const QString& text)
{
    const QString t = text.trimmed();
    int i = 0;
    const int n = t.size();
    if (i < n && (t.at(i) == QLatin1Char('-') || t.at(i) == QLatin1Char('+')))
        ++i;
    int digits = 0;
    bool point = false;
    for (; i < n; ++i) {
        const QChar c = t.at(i);
        if (isDigit(c))
            ++digits;
        else if (c == QLatin1Char('.') && !point)
            point = true;
        else
            break;
    }
    if (digits == 0)
        return false;
    if (i < n && (t.at(i).toUpper() == QLatin1Char('E') || t.at(i).toUpper() == QLatin1Char('D'))) {
        ++i;
        if (i < n && (t.at(i) == QLatin1Char('-') || t.at(i) == QLatin1Char('+')))
            ++i;
        int expDigits = 0;
        while (i < n && isDigit(t.at(i))) {
            ++expDigits;
            ++i;
        }
        if (expDigits == 0)
            return false;
    }
    return i == n;
}

qint16 CInt(const QString& text, std::source_location at)
{
    return toInteger<qint16>(text, at);
}

qint32 CLng(const QString& text, std::source_location at)
{
    return toInteger<qint32>(text, at);
}

QString NumberText(double value)
{
    if (value == 0)
        return QStringLiteral("0");
    QString text = QString::number(value, 'g', 15);
    text.replace(QLatin1Char('e'), QLatin1Char('E'));
    return text;
}

QString Trim(const QString& text)
{
    int from = 0;
    int to = text.size();
    while (from < to && text.at(from) == QLatin1Char(' '))
        ++from;
    while (to > from && text.at(to - 1) == QLatin1Char(' '))
        --to;
    return text.mid(from, to - from);
}

} // namespace corvalent
