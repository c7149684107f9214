#include "request/TextTransforms.h"

#include "common/ErrorTrap.h"
#include "common/VbRuntime.h"
#include "common/Windows1252.h"
#include "request/PostalLookup.h"
#include "request/StreetTypes.h"
#include "services/IniLib.h"
#include "services/ServiceDefinition.h"

#include <QStringList>

namespace corvalent {

namespace {

QString afterBracket(const QString& text)
{
    const qsizetype bracket = text.indexOf(QLatin1Char(']'));
    return bracket < 0 ? text : Trim(text.mid(bracket + 1));
}

bool isAsciiLetterOrDigit(QChar c)
{
    return (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) || (c >= QLatin1Char('a') && c <= QLatin1Char('z'))
        || (c >= QLatin1Char('0') && c <= QLatin1Char('9'));
}

} // namespace

QString Remove_Accents(const QString& Text)
{
    return trapped(QStringLiteral("frmMain: Function Remove_Accents"), QString(), [&] {
        // The order matters and ô becomes a: both are part of what services have always received.
        static const std::pair<char16_t, char16_t> kFolds[] = {
            {u'é', u'e'}, {u'è', u'e'}, {u'ê', u'e'}, {u'ë', u'e'}, {u'à', u'a'}, {u'â', u'a'},
            {u'ä', u'a'}, {u'ì', u'i'}, {u'ï', u'i'}, {u'î', u'i'}, {u'ò', u'o'}, {u'ö', u'o'},
            {u'ô', u'a'}, {u'ù', u'u'}, {u'ü', u'u'}, {u'û', u'u'},
        };
        QString text = Text;
        for (const auto& [letter, folded] : kFolds)
            text.replace(QChar(letter), QChar(folded), Qt::CaseInsensitive);
        return text;
    });
}

QString GetVal(const QString& Text)
{
    return trapped(QStringLiteral("frmMain: Function GetVal"), QString(), [&] {
        return Text.isEmpty() ? QString() : afterBracket(Text);
    });
}

QString Custom_Phone(const QString& Phone, int Row, const QString& ServiceFile)
{
    return trapped(QStringLiteral("frmMain: Function Custom_Phone"), QString(), [&] {
        if (Phone.isEmpty())
            return QString();
        const QString format = ServiceSetting(ServiceFile, QStringLiteral("PhFormat%1").arg(Row));
        const QString number = afterBracket(Phone);
        if (CLng(ServiceSetting(ServiceFile, QStringLiteral("Base"), QStringLiteral("0"))) != 1)
            return number;

        QString digits;
        for (QChar c : number) {
            if (c >= QLatin1Char('0') && c <= QLatin1Char('9'))
                digits.append(c);
        }
        if (format.isEmpty())
            return digits;

        QString picked;
        for (const QString& element : format.split(QLatin1Char(','))) {
            const int position = CInt(element);
            if (position < 1)
                throw Error(ErrorNumber::InvalidArgument);
            if (position <= digits.size())
                picked.append(digits.at(position - 1));
        }
        return picked;
    });
}

QString Get_Home_Number(const QString& Street)
{
    return trapped(QStringLiteral("frmMain: Function Get_Home_Number"), QString(), [&] {
        if (Street.isEmpty())
            return QString();
        // Val skips blanks and would read "12 34" as 1234; a "+" stops it after the first number.
        const double number = Val(QString(Street).replace(QLatin1Char(' '), QLatin1Char('+')));
        return number == 0 ? QString() : NumberText(number);
    });
}

QString Remove_Home_Number(const QString& Street, const QString& ServiceFile)
{
    return trapped(QStringLiteral("frmMain: Function Remove_Home_Number"), QString(), [&] {
        if (Street.isEmpty())
            return QString();
        QString street = Street;
        const QString number = Get_Home_Number(Street);
        if (!number.isEmpty())
            street.remove(number, Qt::CaseSensitive);
        street = Trim(street);

        qsizetype start = 0;
        while (start < street.size() && !isAsciiLetterOrDigit(street.at(start)))
            ++start;
        if (start == street.size())
            throw Error(ErrorNumber::InvalidArgument);
        street = street.mid(start);

        if (IsPostalLookup(ServiceSetting(ServiceFile, QStringLiteral("URL"))))
            street = NormaliseStreetType(street);
        return street;
    });
}

bool Is_Letter(const QString& Char)
{
    return trapped(QStringLiteral("frmMain: Function Is_Letter"), false, [&] {
        if (Char.isEmpty())
            throw Error(ErrorNumber::InvalidArgument);
        const int a = Windows1252::code(Char.front());
        if (a < 65)
            return false;
        if (a > 96)
            return true;
        return a <= 90;
    });
}

QString RemoveInvalidChar(const QString& Text, qint16 Below, const QString& Allowed)
{
    return trapped(QStringLiteral("frmMain: Function RemoveInvalidChar"), QString(), [&] {
        QString kept;
        kept.reserve(Text.size());
        for (QChar c : Text) {
            const int code = Windows1252::code(c);
            if (code >= Below || Allowed.contains(QStringLiteral("|%1|").arg(code)))
                kept.append(c);
        }
        return kept;
    });
}

} // namespace corvalent
