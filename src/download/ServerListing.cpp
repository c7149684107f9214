#include "download/ServerListing.h"

#include "services/ServiceCatalogue.h"
#include "services/ServiceDefinition.h"

#include <QRegularExpression>
#include <QStringDecoder>

namespace corvalent {

namespace {

const QString kServiceExtension = QStringLiteral(".isf");

// Names are taken as UTF-8; bytes that are not UTF-8 cannot be asked for again by the same name, so such a name
// is not a plain one.
bool decodeName(const QByteArray& bytes, QString& name)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    name = utf8(bytes);
    return !utf8.hasError();
}

void take(ServerListing& listing, const QByteArray& bytes)
{
    QString name;
    if (bytes == "." || bytes == "..")
        return;
    if (decodeName(bytes, name) && IsPlainName(name))
        listing.names << name;
    else
        ++listing.ignored;
}

// Undoes the character references a listing page writes in its links (&amp; for "&" and the like).
QString unescapeHtml(const QString& text)
{
    static const QRegularExpression reference(QStringLiteral("&(#[0-9]+|#[xX][0-9a-fA-F]+|amp|lt|gt|quot|apos);"));
    QString result;
    qsizetype from = 0;
    for (auto it = reference.globalMatch(text); it.hasNext();) {
        const auto match = it.next();
        result += text.mid(from, match.capturedStart() - from);
        const QString entity = match.captured(1);
        if (entity == QLatin1String("amp"))
            result += QLatin1Char('&');
        else if (entity == QLatin1String("lt"))
            result += QLatin1Char('<');
        else if (entity == QLatin1String("gt"))
            result += QLatin1Char('>');
        else if (entity == QLatin1String("quot"))
            result += QLatin1Char('"');
        else if (entity == QLatin1String("apos"))
            result += QLatin1Char('\'');
        else {
            const bool hex = entity.size() > 1 && (entity[1] == QLatin1Char('x') || entity[1] == QLatin1Char('X'));
            const uint code = entity.mid(hex ? 2 : 1).toUInt(nullptr, hex ? 16 : 10);
            const char32_t character = code;
            result += QString::fromUcs4(&character, 1);
        }
        from = match.capturedEnd();
    }
    return result + text.mid(from);
}

} // namespace

bool IsPlainName(const QString& name)
{
    if (name.isEmpty() || name.startsWith(QLatin1Char('.')) || name.contains(QLatin1String(".."))
        || name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\'))
        || name.toUtf8().size() > kMaxServerNameBytes)
        return false;
    for (QChar c : name) {
        if (c.category() == QChar::Other_Control || c.category() == QChar::Other_Format
            || c.category() == QChar::Separator_Line || c.category() == QChar::Separator_Paragraph)
            return false;
    }
    return true;
}

ServerListing ParseFtpNameList(const QByteArray& body)
{
    ServerListing listing;
    const QByteArray lineEnd = body.contains("\r\n") ? QByteArray("\r\n") : QByteArray("\n");
    qsizetype from = 0;
    while (from < body.size()) {
        qsizetype end = body.indexOf(lineEnd, from);
        if (end < 0)
            end = body.size();
        const QByteArray line = body.mid(from, end - from);
        if (!line.isEmpty())
            take(listing, line);
        from = end + lineEnd.size();
    }
    return listing;
}

ServerListing ParseHtmlListing(const QByteArray& body)
{
    static const QRegularExpression link(QStringLiteral(R"re(<a\s[^>]*?href\s*=\s*(?:"([^"]*)"|'([^']*)'|([^\s>"']+)))re"),
                                         QRegularExpression::CaseInsensitiveOption);
    ServerListing listing;
    const QString page = QString::fromUtf8(body);
    for (auto it = link.globalMatch(page); it.hasNext();) {
        const auto match = it.next();
        const QString target = unescapeHtml(match.captured(1) + match.captured(2) + match.captured(3));
        if (target.isEmpty() || target.startsWith(QLatin1Char('?')) || target.startsWith(QLatin1Char('#'))
            || target.endsWith(QLatin1Char('/')))
            continue;
        const QByteArray name = QByteArray::fromPercentEncoding(target.toUtf8());
        if (!listing.names.contains(QString::fromUtf8(name)))
            take(listing, name);
    }
    return listing;
}

QStringList ShownServiceNames(const QStringList& serverNames)
{
    QStringList shown;
    for (const QString& name : serverNames) {
        if (name.endsWith(kServiceExtension, Qt::CaseSensitive))
            shown << DisplayName(FileStem(name));
    }
    return shown;
}

QString ServiceFileName(const QString& shownName)
{
    return StoredName(shownName) + kServiceExtension;
}

} // namespace corvalent
