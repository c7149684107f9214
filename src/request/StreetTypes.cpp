#include "request/StreetTypes.h"

#include <QHash>
#include <QStringList>

namespace corvalent {

namespace {

// Street types and the abbreviations the national postal service's address standard uses for them, English and
// French. The first spelling of each row is the full word; the others are spellings people commonly type. Words
// that are often part of a street's own name (Park, Gate, Green, Point, Hill...) are left out on purpose: turning
// them into abbreviations would garble more addresses than it helps. Avenue is spelled alike in both languages and
// takes the English abbreviation.
struct StreetType {
    const char16_t* abbreviation;
    std::initializer_list<const char16_t*> spellings;
};

const StreetType kStreetTypes[] = {
    // English
    {u"ST", {u"Street", u"St", u"Str"}},
    {u"AVE", {u"Avenue", u"Ave", u"Av"}},
    {u"BLVD", {u"Boulevard", u"Blvd", u"Boul"}},
    {u"RD", {u"Road", u"Rd"}},
    {u"DR", {u"Drive", u"Dr"}},
    {u"CRES", {u"Crescent", u"Cres"}},
    {u"CRT", {u"Court", u"Crt", u"Ct"}},
    {u"PL", {u"Place", u"Pl"}},
    {u"TERR", {u"Terrace", u"Terr"}},
    {u"LANE", {u"Lane", u"Ln"}},
    {u"WAY", {u"Way"}},
    {u"HWY", {u"Highway", u"Hwy"}},
    {u"PKY", {u"Parkway", u"Pky", u"Pkwy"}},
    {u"CIR", {u"Circle", u"Cir"}},
    {u"SQ", {u"Square", u"Sq"}},
    {u"TRAIL", {u"Trail", u"Trl"}},
    {u"EXPY", {u"Expressway", u"Expy"}},
    {u"FWY", {u"Freeway", u"Fwy"}},
    // French
    {u"RUE", {u"Rue"}},
    {u"CH", {u"Chemin", u"Ch"}},
    {u"RTE", {u"Route", u"Rte"}},
    {u"MTÉE", {u"Montée", u"Montee", u"Mtée", u"Mtee"}},
    {u"PROM", {u"Promenade", u"Prom"}},
    {u"IMP", {u"Impasse", u"Imp"}},
    {u"CROIS", {u"Croissant", u"Crois"}},
    {u"TSSE", {u"Terrasse", u"Tsse"}},
    {u"CAR", {u"Carré", u"Carre"}},
    {u"RANG", {u"Rang"}},
    {u"SENT", {u"Sentier", u"Sent"}},
    {u"AUT", {u"Autoroute", u"Aut"}},
};

const QHash<QString, QString>& abbreviations()
{
    static const QHash<QString, QString> table = [] {
        QHash<QString, QString> t;
        for (const StreetType& type : kStreetTypes) {
            for (const char16_t* spelling : type.spellings)
                t.insert(QString::fromUtf16(spelling).toCaseFolded(), QString::fromUtf16(type.abbreviation));
        }
        return t;
    }();
    return table;
}

} // namespace

QString NormaliseStreetType(const QString& street)
{
    QStringList words = street.split(QLatin1Char(' '));
    for (QString& word : words) {
        // A trailing period or comma ("St.", "Ave,") is not part of the word; a comma is kept.
        qsizetype end = word.size();
        while (end > 0 && (word.at(end - 1) == QLatin1Char('.') || word.at(end - 1) == QLatin1Char(',')))
            --end;
        const auto found = abbreviations().constFind(word.left(end).toCaseFolded());
        if (found == abbreviations().constEnd())
            continue;
        const QString tail = word.mid(end).contains(QLatin1Char(',')) ? QStringLiteral(",") : QString();
        word = *found + tail;
    }
    return words.join(QLatin1Char(' '));
}

} // namespace corvalent
