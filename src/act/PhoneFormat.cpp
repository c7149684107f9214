#include "act/PhoneFormat.h"

#include "act/FieldListCache.h"
#include "act/HostFolder.h"
#include "common/ErrorTrap.h"
#include "common/ProgramFolder.h"
#include "common/Windows1252.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

namespace corvalent {

namespace {

constexpr qint32 kPhoneType = 14;
constexpr qint16 kPhoneField = 35;

bool isAsciiDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

// Phone.fmt comes from the contact manager's install; it may be UTF-8 or the older code page.
QString decodeText(const QByteArray& bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8(bytes);
    return utf8.hasError() ? Windows1252::decode(bytes) : text;
}

// The mask of the first line for `countryCode`, cut after its last "#"; nullopt when no line is for it.
std::optional<QString> maskFromFile(const QString& path, const QString& countryCode)
{
    if (!QFileInfo(path).isFile())
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(ErrorNumber::PermissionDenied);
    const QStringList lines = decodeText(file.readAll()).split(QLatin1Char('\n'));
    for (QString line : lines) {
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        const qsizetype tab = line.indexOf(QLatin1Char('\t'));
        if (tab < 0 || line.left(tab) != countryCode)
            continue;
        const QString mask = line.mid(tab + 1);
        return mask.left(mask.lastIndexOf(QLatin1Char('#')) + 1);
    }
    return std::nullopt;
}

} // namespace

bool isPhone(ActSession& session, const QString& FieldId)
{
    return trapped(QStringLiteral("frmMain: Function isPhone"), false,
                   [&] { return session.fields().type(FieldId) == kPhoneType; });
}

QString FormatWithPhoneMask(const QString& phone, const QString& mask)
{
    QString digits;
    for (QChar c : phone) {
        if (isAsciiDigit(c))
            digits.append(c);
    }
    // No number at all formats to nothing, not to the mask's bare separators: a cleared phone stays clear.
    if (digits.isEmpty())
        return QString();
    // A number has no leading zeros, and zero itself fills no "#".
    qsizetype firstNonZero = 0;
    while (firstNonZero < digits.size() && digits.at(firstNonZero) == QLatin1Char('0'))
        ++firstNonZero;
    digits = digits.mid(firstNonZero);

    const qsizetype firstPlace = mask.indexOf(QLatin1Char('#'));
    if (firstPlace < 0)
        return mask + digits;

    QString result;
    qsizetype left = digits.size(); // digits not yet placed: digits.left(left)
    for (qsizetype i = mask.size() - 1; i >= 0; --i) {
        const QChar c = mask.at(i);
        if (c != QLatin1Char('#')) {
            result.prepend(c);
        } else if (i == firstPlace) {
            result.prepend(digits.left(left));
            left = 0;
        } else if (left > 0) {
            result.prepend(digits.at(--left));
        }
    }
    return result;
}

PhoneFormatter::PhoneFormatter(ActSession& session)
    : m_session(session)
{
}

QString PhoneFormatter::hostFolder()
{
    if (!m_hostFolder)
        m_hostFolder = FindHostFolder();
    return *m_hostFolder;
}

QString PhoneFormatter::GetPhoneFormat(const QString& ContactId)
{
    return trapped(QStringLiteral("frmMain: Function GetPhoneFormat"), QString(), [&] {
        m_session.goTo(ContactId);
        const QString data = m_session.contactData(kPhoneField);
        // A contact without a phone has no country to go by: the caller falls back to the user's own mask.
        if (data.isEmpty())
            return QString();

        // The stored data is a one-character prefix, the country code, a blank and the number.
        const qsizetype blank = data.indexOf(QLatin1Char(' '));
        if (blank < 1)
            throw Error(ErrorNumber::InvalidArgument);
        const QString countryCode = data.mid(1, blank - 1);

        const QString folder = hostFolder();
        if (folder.isEmpty())
            return kDefaultMask;
        const auto mask = maskFromFile(ProgramFolder::join(folder, QStringLiteral("Phone.fmt")), countryCode);
        return mask ? *mask : kDefaultMask;
    });
}

QString PhoneFormatter::PhoneFormat(const QString& Phone)
{
    return trapped(QStringLiteral("frmMain: Function PhoneFormat"), QString(), [&] {
        const QString currentId = m_session.getCurrentId();
        QString mask = GetPhoneFormat(currentId);
        if (mask.isEmpty()) {
            if (!m_userMask) {
                const QString userId = m_session.getUserId();
                m_userMask = GetPhoneFormat(userId);
                // Reading the user's mask makes the user's own record current; whatever follows (an update
                // writing this phone) must still go to the contact the user is looking at.
                if (userId != currentId)
                    m_session.goTo(currentId);
            }
            mask = m_userMask->isEmpty() ? kDefaultMask : *m_userMask;
        }
        return FormatWithPhoneMask(Phone, mask);
    });
}

} // namespace corvalent
