#include "grab/AddressRecognition.h"

#include <QHash>
#include <QList>
#include <QRegularExpression>
#include <QStringView>

#include <algorithm>

namespace corvalent {

namespace {

// Every way of writing a state, province or territory that a "city, state zip" line may carry, in one place.
// The postal code itself is always accepted, with or without periods ("DC", "D.C.", "N. Y.", "Pa."). Alternatives
// are separated by '|'. An alternative written with a period ("Ill.", "W.Va.") is an abbreviation and is accepted
// only when the line writes at least one period in it: "Ill", "Wash" or "Man" alone are ordinary words, not a
// state. Names are matched case-insensitively, without accents, and with hyphens read as spaces, so "Quebec",
// "QUÉBEC", "Colombie Britannique" and "ile-du-prince-edouard" need no alternative of their own.
struct Region {
    const char* code;
    const char* names; // UTF-8
};

constexpr Region kRegions[] = {
    // The 50 states and the federal district.
    {"AL", "Alabama|Ala."},
    {"AK", "Alaska|Alas."},
    {"AZ", "Arizona|Ariz."},
    {"AR", "Arkansas|Ark."},
    {"CA", "California|Calif.|Cal."},
    {"CO", "Colorado|Colo.|Col."},
    {"CT", "Connecticut|Conn."},
    {"DE", "Delaware|Del."},
    {"DC", "District of Columbia"},
    {"FL", "Florida|Fla."},
    {"GA", "Georgia"},
    {"HI", "Hawaii|Hawai‘i|Hawai'i"},
    {"ID", "Idaho|Ida."},
    {"IL", "Illinois|Ill."},
    {"IN", "Indiana|Ind."},
    {"IA", "Iowa"},
    {"KS", "Kansas|Kan.|Kans."},
    {"KY", "Kentucky"},
    {"LA", "Louisiana"},
    {"ME", "Maine"},
    {"MD", "Maryland"},
    {"MA", "Massachusetts|Mass."},
    {"MI", "Michigan|Mich."},
    {"MN", "Minnesota|Minn."},
    {"MS", "Mississippi|Miss."},
    {"MO", "Missouri"},
    {"MT", "Montana|Mont."},
    {"NE", "Nebraska|Neb.|Nebr."},
    {"NV", "Nevada|Nev."},
    {"NH", "New Hampshire"},
    {"NJ", "New Jersey"},
    {"NM", "New Mexico|N.Mex."},
    {"NY", "New York"},
    {"NC", "North Carolina"},
    {"ND", "North Dakota|N.Dak."},
    {"OH", "Ohio"},
    {"OK", "Oklahoma|Okla."},
    {"OR", "Oregon|Ore.|Oreg."},
    {"PA", "Pennsylvania|Penn.|Penna."},
    {"RI", "Rhode Island"},
    {"SC", "South Carolina"},
    {"SD", "South Dakota|S.Dak."},
    {"TN", "Tennessee|Tenn."},
    {"TX", "Texas|Tex."},
    {"UT", "Utah"},
    {"VT", "Vermont"},
    {"VA", "Virginia"},
    {"WA", "Washington|Wash."},
    {"WV", "West Virginia|W.Va."},
    {"WI", "Wisconsin|Wis.|Wisc."},
    {"WY", "Wyoming|Wyo."},
    // US territories.
    {"PR", "Puerto Rico"},
    {"GU", "Guam"},
    {"VI", "Virgin Islands|US Virgin Islands|U.S. Virgin Islands|United States Virgin Islands|USVI"},
    {"AS", "American Samoa"},
    {"MP", "Northern Mariana Islands|Northern Marianas"},
    // The provinces and territories of Canada, in English and in French.
    {"AB", "Alberta|Alta."},
    {"BC", "British Columbia|Colombie-Britannique"},
    {"MB", "Manitoba|Man."},
    {"NB", "New Brunswick|Nouveau-Brunswick"},
    {"NL", "Newfoundland and Labrador|Newfoundland & Labrador|Newfoundland|Terre-Neuve-et-Labrador|Terre-Neuve|"
           "Nfld."},
    {"NS", "Nova Scotia|Nouvelle-Écosse"},
    {"NT", "Northwest Territories|Territoires du Nord-Ouest|NWT|T.N.-O."},
    {"NU", "Nunavut"},
    {"ON", "Ontario|Ont."},
    {"PE", "Prince Edward Island|Île-du-Prince-Édouard|PEI|Î.-P.-É."},
    {"QC", "Québec|Que.|P.Q."},
    {"SK", "Saskatchewan|Sask."},
    {"YT", "Yukon|Yukon Territory|Territoire du Yukon"},
};

// A country name that a page puts after (or, in "Ottawa, Ontario, Canada K1P 1J1", before) the postal code. "CA"
// is California, never Canada.
constexpr const char* kCountries = "USA|U.S.A.|US|U.S.|United States|United States of America|Canada";

bool isHyphen(QChar c)
{
    return c == u'-' || c == u'\u2010' || c == u'\u2011' || c == u'\u2012' || c == u'\u2013' || c == u'\u2014';
}

// The form names are compared in: lower case, no accents, hyphens as spaces, and no periods (the space after a
// period goes with it, so "N. Y." and "N.Y." are both "ny").
QString nameKey(QStringView text)
{
    const QString decomposed = text.toString().normalized(QString::NormalizationForm_D);
    QString key;
    key.reserve(decomposed.size());
    bool afterPeriod = false;
    for (const QChar c : decomposed) {
        if (c.category() == QChar::Mark_NonSpacing)
            continue;
        if (c == u'.') {
            afterPeriod = true;
            continue;
        }
        if (c.isSpace() || isHyphen(c)) {
            if (!afterPeriod && !key.isEmpty() && !key.endsWith(u' '))
                key += u' ';
            continue;
        }
        afterPeriod = false;
        key += c.toLower();
    }
    while (key.endsWith(u' '))
        key.chop(1);
    return key;
}

struct NameEntry {
    QString code;
    bool needsPeriod = false;
};

struct NameTable {
    QHash<QString, NameEntry> byKey;
    qsizetype maxWords = 1;

    void add(const QString& name, const QString& code)
    {
        const QString key = nameKey(name);
        const bool needsPeriod = name.contains(u'.');
        // The first spelling of a key wins. Codes are added first, so a dotted spelling of a code never makes the
        // plain code need a period.
        const auto found = byKey.constFind(key);
        if (found != byKey.constEnd()) {
            Q_ASSERT_X(found->code == code, "AddressRecognition", "one name for two regions");
            return;
        }
        byKey.insert(key, NameEntry{code, needsPeriod});
        maxWords = std::max(maxWords, name.count(u' ') + 1);
    }
};

const NameTable& regionTable()
{
    static const NameTable table = [] {
        NameTable t;
        for (const Region& region : kRegions) {
            const QString code = QString::fromLatin1(region.code);
            t.add(code, code);
            const QStringList names = QString::fromUtf8(region.names).split(u'|');
            for (const QString& name : names)
                t.add(name, code);
        }
        return t;
    }();
    return table;
}

const NameTable& countryTable()
{
    static const NameTable table = [] {
        NameTable t;
        const QStringList names = QString::fromUtf8(kCountries).split(u'|');
        // Which country does not matter, only that it is one.
        for (const QString& name : names)
            t.add(name, QStringLiteral("country"));
        return t;
    }();
    return table;
}

// Characters that separate the words of a line; the parentheses are those of "Montréal (Québec)".
bool isSeparator(QChar c)
{
    return c == u' ' || c == u',' || c == u';' || c == u'(' || c == u')';
}

struct Word {
    qsizetype begin;
    qsizetype end;
};

QList<Word> wordsOf(QStringView line)
{
    QList<Word> words;
    qsizetype i = 0;
    while (i < line.size()) {
        while (i < line.size() && isSeparator(line[i]))
            ++i;
        const qsizetype begin = i;
        while (i < line.size() && !isSeparator(line[i]))
            ++i;
        if (i > begin)
            words.append(Word{begin, i});
    }
    return words;
}

// Where a name of the table ends the line: the index of its first word, and what it stands for. The longest name
// wins, so "Charleston West Virginia" is West Virginia and "New York New York" keeps "New York" as the city. Words
// apart by a comma or a parenthesis never make one name ("Beach, Virginia"): the key keeps those characters, and
// no name has them.
struct Suffix {
    qsizetype firstWord = -1;
    QString code;
};

Suffix nameAtEnd(QStringView line, const QList<Word>& words, const NameTable& table)
{
    const qsizetype count = words.size();
    for (qsizetype n = std::min(count, table.maxWords); n >= 1; --n) {
        const qsizetype first = count - n;
        const QStringView candidate = line.mid(words[first].begin, words[count - 1].end - words[first].begin);
        const auto found = table.byKey.constFind(nameKey(candidate));
        if (found == table.byKey.constEnd())
            continue;
        if (found->needsPeriod && !candidate.contains(u'.'))
            continue;
        return Suffix{first, found->code};
    }
    return {};
}

// Drops what a selection drags along after the text: spaces, commas, semicolons, a closing parenthesis, and a
// sentence's full stop. A period right after a letter is kept, since it may end an abbreviation ("Ill.", "D.C.").
QString trimmedEnd(QString line)
{
    while (!line.isEmpty()) {
        const QChar last = line.back();
        const bool periodOfAbbreviation = last == u'.' && line.size() > 1 && line[line.size() - 2].isLetter();
        if (isSeparator(last) || (last == u'.' && !periodOfAbbreviation))
            line.chop(1);
        else
            break;
    }
    return line;
}

// Without a trailing country name. A country alone leaves nothing, which is not an address line; "Canada K1A 0A6"
// leaves the postal code.
QString withoutCountry(const QString& line)
{
    const QList<Word> words = wordsOf(line);
    const Suffix country = nameAtEnd(line, words, countryTable());
    if (country.firstWord < 0)
        return line;
    return trimmedEnd(line.left(words[country.firstWord].begin));
}

// What stands before the state, without the separators around it. Only the part after the last comma is the
// city, so a whole one-line address ("100 Main St, Springfield, IL 62701") still gives "Springfield".
std::optional<QString> cityOf(QStringView beforeState)
{
    const auto isJunk = [](QChar c) { return isSeparator(c) || isHyphen(c) || c == u'/' || c == u'|' || c == u':'; };
    const auto trim = [&isJunk](QStringView text) {
        while (!text.isEmpty() && isJunk(text.front()))
            text = text.mid(1);
        while (!text.isEmpty() && isJunk(text.back()))
            text.chop(1);
        return text;
    };
    beforeState = trim(beforeState);
    const qsizetype comma = beforeState.lastIndexOf(u',');
    if (comma >= 0)
        beforeState = trim(beforeState.mid(comma + 1));
    const QString city = beforeState.toString();
    if (city.isEmpty())
        return std::nullopt;
    return city;
}

// A US ZIP code ending the line: five digits, or ZIP+4 with a hyphen. ZIP+4 written with a space instead
// ("62704 1234") is read too, but only after a state: alone, it could as well be two unrelated numbers.
const QRegularExpression& usZipPattern()
{
    static const QRegularExpression pattern(
        QStringLiteral("(?:^|(?<=[ ,;(]))([0-9]{5})(?: ?[-\u2010\u2011\u2012\u2013\u2014] ?([0-9]{4})"
                       "| ([0-9]{4}))?$"));
    return pattern;
}

// A Canadian postal code ending the line, in any case, with a space, a hyphen or nothing between its halves.
const QRegularExpression& canadianPostalPattern()
{
    static const QRegularExpression pattern(
        QStringLiteral("(?:^|(?<=[ ,;(]))([A-Za-z][0-9][A-Za-z])"
                       " ?[-\u2010\u2011\u2012\u2013\u2014]? ?([0-9][A-Za-z][0-9])$"));
    return pattern;
}

// Canada Post never uses D, F, I, O, Q or U, and W and Z never start a code; checking it keeps look-alike
// references ("D1F 2G3") out.
bool isCanadianPostalCode(const QString& code)
{
    static const QString firstLetters = QStringLiteral("ABCEGHJKLMNPRSTVXY");
    static const QString unusedLetters = QStringLiteral("DFIOQU");
    if (!firstLetters.contains(code[0]))
        return false;
    // "A1A 1A1": the letters stand at 0, 2 and 5.
    return !unusedLetters.contains(code[2]) && !unusedLetters.contains(code[5]);
}

struct ZipAtEnd {
    qsizetype start = -1;
    QString zip;
    bool spaceSeparatedPlusFour = false;
};

ZipAtEnd zipAtEnd(const QString& line)
{
    const QRegularExpressionMatch us = usZipPattern().match(line);
    if (us.hasMatch()) {
        ZipAtEnd found{us.capturedStart(0), us.captured(1), false};
        if (us.hasCaptured(2)) {
            found.zip += u'-' + us.captured(2);
        } else if (us.hasCaptured(3)) {
            found.zip += u'-' + us.captured(3);
            found.spaceSeparatedPlusFour = true;
        }
        return found;
    }
    const QRegularExpressionMatch ca = canadianPostalPattern().match(line);
    if (ca.hasMatch()) {
        const QString code = ca.captured(1).toUpper() + u' ' + ca.captured(2).toUpper();
        if (isCanadianPostalCode(code))
            return ZipAtEnd{ca.capturedStart(0), code, false};
    }
    return {};
}

} // namespace

bool isMultiLine(const QString& text)
{
    int lines = 0;
    bool lineHasText = false;
    for (const QChar c : text) {
        if (c == u'\n' || c == u'\r') {
            lineHasText = false;
            continue;
        }
        if (c != u' ' && c != u'\t' && !lineHasText) {
            lineHasText = true;
            if (++lines >= 2)
                return true;
        }
    }
    return false;
}

// The line is read from its end: a country name is dropped, then a ZIP or postal code is looked for, then a state
// right before it, and the city is what is left. Only a zip, a state next to a zip, a state after a comma (or in
// parentheses) at the end of the line, or a state that is the whole text count, so the "IN" of "Main St IN" or
// the "OR" in a sentence is never a state. A line with a zip but no state before it ("PO Box 62704", "Paris
// 75001") recognises nothing. A state and a zip of different countries ("Niagara Falls, ON 14303") are reported
// as found: the user sees both and decides. A selection of several lines is not one address line and recognises
// nothing.
CityStateZip RecogniseCityStateZip(const QString& text)
{
    if (isMultiLine(text))
        return {};

    // Pages use no-break spaces, tabs and runs of spaces; from here on there is one plain space between words, which
    // is also what the city keeps.
    const QString line = withoutCountry(trimmedEnd(text.simplified()));
    if (line.isEmpty())
        return {};

    CityStateZip result;
    const ZipAtEnd zip = zipAtEnd(line);
    QString beforeZip = line;
    if (zip.start >= 0) {
        beforeZip = withoutCountry(trimmedEnd(line.left(zip.start)));
        if (beforeZip.isEmpty()) {
            if (zip.spaceSeparatedPlusFour)
                return {};
            result.zip = zip.zip;
            return result;
        }
    }

    const QList<Word> words = wordsOf(beforeZip);
    const Suffix state = nameAtEnd(beforeZip, words, regionTable());
    if (state.firstWord < 0)
        return {};

    const qsizetype stateStart = words[state.firstWord].begin;
    if (zip.start < 0 && state.firstWord > 0) {
        // Without a zip, the state must be set off from the city by a comma or parentheses.
        const QStringView gap = QStringView(beforeZip).mid(words[state.firstWord - 1].end,
                                                          stateStart - words[state.firstWord - 1].end);
        if (!gap.contains(u',') && !gap.contains(u'('))
            return {};
    }

    result.state = state.code;
    if (zip.start >= 0)
        result.zip = zip.zip;
    result.city = cityOf(QStringView(beforeZip).left(stateStart));
    return result;
}

} // namespace corvalent
