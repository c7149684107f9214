#include "grab/SmartDataCollector.h"

#include "common/Error.h"
#include "common/ErrorTrap.h"
#include "common/VbRuntime.h"

namespace corvalent {

namespace {

const QString kCrLf = QStringLiteral("\r\n");

QString location(const char* procedure)
{
    return QStringLiteral("frmSmartParser: ") + QLatin1String(procedure);
}

// The character-code test the collector has always used: A (the code of the upper-cased character) in 48..90 and
// a (its own code) outside 58..64. On ASCII that is exactly the digits and the Latin letters. Everything outside
// ASCII counts as punctuation, accented letters included, so a leading 'É' is stripped like a dash.
bool isLetterOrDigit(QChar c)
{
    const char16_t a = c.unicode();
    if (a > 127)
        return false;
    const char16_t upper = (a >= u'a' && a <= u'z') ? char16_t(a - 32) : a;
    return upper >= 48 && upper <= 90 && !(a >= 58 && a <= 64);
}

} // namespace

SmartDataCollector::SmartDataCollector(QObject* parent) : QObject(parent) {}

void SmartDataCollector::Load(const QString& grabbed)
{
    trappedSub(location("Sub Form_Load"), [&] {
        // A collector that is loaded again starts afresh, as a newly opened window would.
        m_finished = false;
        m_canGoBack = false;
        m_canGoNext = false;
        m_current.clear();
        m_grabbed.clear();
        m_currentIndex = 0;
        m_lines = SplitLines(grabbed);
        m_firstIndex = -1;
        m_lastIndex = 0;
        for (int i = 0; i < m_lines.size(); ++i) {
            if (m_lines.at(i).text.isEmpty())
                continue;
            if (m_firstIndex < 0)
                m_firstIndex = i;
            m_lastIndex = i;
        }
        int n = m_currentIndex;
        ShowLine(n);
    });
}

void SmartDataCollector::setCurrent(const QString& text)
{
    m_current = text;
}

void SmartDataCollector::setGrabbed(const QString& text)
{
    m_grabbed = text;
}

QVector<SmartDataCollector::Line> SmartDataCollector::SplitLines(const QString& text)
{
    return trapped(location("Sub SplitLines"), QVector<Line>(), [&] {
        // CR LF only: a lone CR or LF stays inside its line. The caller has already turned every line end into
        // CR LF.
        const QStringList parts = text.split(kCrLf, Qt::KeepEmptyParts, Qt::CaseSensitive);
        QVector<Line> lines;
        lines.reserve(parts.size());
        for (const QString& part : parts)
            lines.append(Line{part, CleanLeading(part).isEmpty()});
        return lines;
    });
}

QString SmartDataCollector::CleanLeading(const QString& text)
{
    return trapped(location("Function CleanLeading"), QString(), [&] {
        const QString trimmed = Trim(text);
        for (qsizetype i = 0; i < trimmed.size(); ++i) {
            if (isLetterOrDigit(trimmed.at(i)))
                return trimmed.mid(i);
        }
        return QString();
    });
}

QString SmartDataCollector::RemoveLabels(const QString& text)
{
    return trapped(location("Function RemoveLabels"), text, [&] {
        static const QStringList words = kLabelWords.split(QLatin1Char(','));
        QString result = text;
        // Each word sees what the words before it left, so a line opening with several labels loses them all.
        for (const QString& word : words) {
            const QString trimmed = Trim(result);
            if (trimmed.startsWith(word, Qt::CaseInsensitive))
                result = QString(trimmed).remove(word, Qt::CaseInsensitive);
        }
        return result;
    });
}

void SmartDataCollector::ShowLine(int& n)
{
    trappedSub(location("Sub ShowLine"), [&] {
        m_current.clear();
        const int count = int(m_lines.size());
        // Nothing ever asks for a line before the first one except a stray "previous" from the first line;
        // start from the top rather than read outside the list.
        if (n < 0)
            n = 0;
        if (n < count) {
            // Blank lines are skipped forward only: going back onto one lands on the line after it.
            while (n < count && m_lines.at(n).blank)
                ++n;
            if (n < count) {
                m_current = CleanLeading(RemoveLabels(m_lines.at(n).text));

                qsizetype size = 0;
                for (int k = n + 1; k < count; ++k)
                    size += m_lines.at(k).text.size() + kCrLf.size();
                m_grabbed.clear();
                m_grabbed.reserve(size);
                for (int k = n + 1; k < count; ++k) {
                    m_grabbed += m_lines.at(k).text;
                    m_grabbed += kCrLf;
                }

                m_currentIndex = n;
                m_canGoBack = m_currentIndex > m_firstIndex;
                m_canGoNext = m_currentIndex < m_lastIndex;
            }
        }
        emit changed();
        CheckFinished();
    });
}

void SmartDataCollector::CheckFinished()
{
    trappedSub(location("Sub CheckFinished"), [&] {
        // What the boxes hold decides, not the line list: the user may have typed into either of them.
        if (CleanLeading(m_grabbed).isEmpty() && CleanLeading(m_current).isEmpty()) {
            m_finished = true;
            emit finished();
        }
    });
}

void SmartDataCollector::cmdUp_Click()
{
    trappedSub(location("Sub cmdUp_Click"), [&] {
        int n = m_currentIndex + 1;
        ShowLine(n);
    });
}

void SmartDataCollector::cmdDown_Click()
{
    trappedSub(location("Sub cmdDown_Click"), [&] {
        int n = m_currentIndex - 1;
        ShowLine(n);
    });
}

void SmartDataCollector::RemoveText(bool bUserSelectedText, int selStart, int selLength)
{
    trappedSub(location("Sub RemoveText"), [&] {
        if (bUserSelectedText) {
            if (selStart < 0 || selLength < 0)
                throw Error(ErrorNumber::InvalidArgument);
            // Everything up to the end of the selection goes, the text before the selection included: what the
            // user picked out of the middle of a line was the part they wanted, the rest before it is dropped.
            const QString rest = CleanLeading(m_current.mid(qsizetype(selStart) + selLength));
            if (!rest.isEmpty()) {
                m_current = rest;
                emit changed();
                return;
            }
        }
        int n = m_currentIndex + 1;
        ShowLine(n);
    });
}

} // namespace corvalent
