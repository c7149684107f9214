#include "services/IniDocument.h"

#include "common/Windows1252.h"

#include <QStringDecoder>
#include <QStringEncoder>

namespace corvalent {

namespace {

const QByteArray kUtf8Bom("\xEF\xBB\xBF", 3);
const QByteArray kUtf16LeBom("\xFF\xFE", 2);

QString fold(const QString& name)
{
    return name.toCaseFolded();
}

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}

QString stripBlanks(const QString& text)
{
    int from = 0;
    int to = text.size();
    while (from < to && isBlank(text.at(from)))
        ++from;
    while (to > from && isBlank(text.at(to - 1)))
        --to;
    return text.mid(from, to - from);
}

QString stripValue(const QString& raw)
{
    QString value = stripBlanks(raw);
    if (value.size() >= 2) {
        const QChar first = value.front();
        if ((first == QLatin1Char('"') || first == QLatin1Char('\'')) && value.back() == first)
            value = value.mid(1, value.size() - 2);
    }
    return value;
}

// The section name of a header line, or nullopt when the line is not a header.
std::optional<QString> headerName(const QString& line)
{
    const QString t = stripBlanks(line);
    if (!t.startsWith(QLatin1Char('[')))
        return std::nullopt;
    const int close = t.indexOf(QLatin1Char(']'));
    return stripBlanks(t.mid(1, close < 0 ? -1 : close - 1));
}

bool isValidUtf8(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return !decoder.hasError();
}

} // namespace

IniDocument IniDocument::parse(const QByteArray& bytes)
{
    IniDocument doc;
    QString text;
    if (bytes.startsWith(kUtf16LeBom)) {
        doc.m_encoding = Encoding::Utf16LE;
        doc.m_bom = true;
        text = QStringDecoder(QStringDecoder::Utf16LE)(bytes.mid(2));
    } else if (bytes.startsWith(kUtf8Bom)) {
        doc.m_bom = true;
        // An editor that ignored the mark may have added Windows-1252 text since; read as UTF-8, it would turn into
        // replacement characters and be lost on the next write.
        const QByteArray rest = bytes.mid(3);
        if (isValidUtf8(rest)) {
            text = QString::fromUtf8(rest);
        } else {
            doc.m_encoding = Encoding::Windows1252;
            text = Windows1252::decode(rest);
        }
    } else if (isValidUtf8(bytes)) {
        text = QString::fromUtf8(bytes);
    } else {
        doc.m_encoding = Encoding::Windows1252;
        text = Windows1252::decode(bytes);
    }

    qsizetype start = 0;
    while (start < text.size()) {
        const qsizetype nl = text.indexOf(QLatin1Char('\n'), start);
        if (nl < 0) {
            doc.m_lines.append({text.mid(start), QString()});
            break;
        }
        const bool crlf = nl > start && text.at(nl - 1) == QLatin1Char('\r');
        const qsizetype end = crlf ? nl - 1 : nl;
        doc.m_lines.append({text.mid(start, end - start), crlf ? QStringLiteral("\r\n") : QStringLiteral("\n")});
        start = nl + 1;
    }
    doc.reindex();
    return doc;
}

void IniDocument::reindex()
{
    m_sections.clear();
    Section* current = nullptr;
    for (int i = 0; i < m_lines.size(); ++i) {
        const QString& line = m_lines.at(i).text;
        if (const auto name = headerName(line)) {
            const QString key = fold(*name);
            if (m_sections.contains(key)) {
                current = nullptr; // a repeated section is never consulted: the first one wins
            } else {
                current = &m_sections[key];
                current->header = i;
            }
            continue;
        }
        if (!current)
            continue;
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        if (eq < 0)
            continue;
        const QString name = fold(stripBlanks(line.left(eq)));
        if (name.isEmpty() || current->keys.contains(name))
            continue;
        current->keys.insert(name, stripValue(line.mid(eq + 1)));
        current->keyLines.insert(name, i);
    }
}

std::optional<QString> IniDocument::value(const QString& section, const QString& key) const
{
    const auto s = m_sections.constFind(fold(section));
    if (s == m_sections.constEnd())
        return std::nullopt;
    const auto k = s->keys.constFind(fold(stripBlanks(key)));
    if (k == s->keys.constEnd())
        return std::nullopt;
    return *k;
}

QString IniDocument::newLineEnd() const
{
    for (const Line& line : m_lines) {
        if (!line.end.isEmpty())
            return line.end;
    }
    return QStringLiteral("\r\n"); // files are shared with Windows users
}

int IniDocument::sectionEnd(int header) const
{
    int end = header + 1;
    while (end < m_lines.size() && !headerName(m_lines.at(end).text))
        ++end;
    return end;
}

void IniDocument::setValue(const QString& section, const QString& key, const QString& value)
{
    const QString eol = newLineEnd();
    const auto s = m_sections.constFind(fold(section));
    if (s != m_sections.constEnd()) {
        const auto k = s->keyLines.constFind(fold(stripBlanks(key)));
        if (k != s->keyLines.constEnd()) {
            Line& line = m_lines[*k];
            const QString existingKey = stripBlanks(line.text.left(line.text.indexOf(QLatin1Char('='))));
            line.text = existingKey + QLatin1Char('=') + value;
        } else {
            // After the section's last non-blank line, so that a blank line before the next section stays there.
            int at = sectionEnd(s->header);
            while (at - 1 > s->header && stripBlanks(m_lines.at(at - 1).text).isEmpty())
                --at;
            if (m_lines.at(at - 1).end.isEmpty())
                m_lines[at - 1].end = eol;
            m_lines.insert(at, {key + QLatin1Char('=') + value, eol});
        }
    } else {
        if (!m_lines.isEmpty()) {
            if (m_lines.back().end.isEmpty())
                m_lines.back().end = eol;
            if (!stripBlanks(m_lines.back().text).isEmpty())
                m_lines.append({QString(), eol});
        }
        m_lines.append({QLatin1Char('[') + section + QLatin1Char(']'), eol});
        m_lines.append({key + QLatin1Char('=') + value, eol});
    }
    reindex();
}

QByteArray IniDocument::serialize() const
{
    QString text;
    for (const Line& line : m_lines)
        text += line.text + line.end;

    switch (m_encoding) {
    case Encoding::Utf16LE:
        return kUtf16LeBom + QStringEncoder(QStringEncoder::Utf16LE)(text);
    case Encoding::Windows1252:
        if (Windows1252::canEncode(text))
            return (m_bom ? kUtf8Bom : QByteArray()) + Windows1252::encode(text);
        break;
    case Encoding::Utf8:
        break;
    }
    return (m_bom ? kUtf8Bom : QByteArray()) + text.toUtf8();
}

} // namespace corvalent
