#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <optional>

namespace corvalent {

// One INI file in memory, read and written by the rules the program's files have always followed: section and
// key names are compared without regard to case, the first section and the first key of a name win, values lose
// surrounding blanks and one pair of enclosing quotes. Everything else in the file (comments, unknown lines,
// blank lines, line endings, encoding, byte order mark) is kept as it is when a value is written.
class IniDocument {
public:
    enum class Encoding { Utf8, Windows1252, Utf16LE };

    // Reads a file's bytes: UTF-16 with a byte order mark, otherwise UTF-8 when the bytes after any UTF-8 byte
    // order mark are valid UTF-8, otherwise Windows-1252 (the mark, if any, is kept).
    static IniDocument parse(const QByteArray& bytes);

    // The value of `key` in `section`, as the file holds it after stripping; nullopt when there is none.
    std::optional<QString> value(const QString& section, const QString& key) const;

    // Replaces the first `key` of the first `section` in place, or adds it at the end of that section, or adds the
    // section at the end of the file.
    void setValue(const QString& section, const QString& key, const QString& value);

    // The file's bytes in its own encoding. A Windows-1252 file that now holds a character the code page cannot
    // hold is written as UTF-8 instead, so that nothing is lost.
    QByteArray serialize() const;

    Encoding encoding() const { return m_encoding; }
    bool hasByteOrderMark() const { return m_bom; }

private:
    struct Line {
        QString text;
        QString end; // "\r\n", "\n", or "" for a last line without a line break
    };
    struct Section {
        int header = -1;               // line index of the header
        QHash<QString, QString> keys;  // folded key name -> stripped value (first occurrence)
        QHash<QString, int> keyLines;  // folded key name -> line index (first occurrence)
    };

    void reindex();
    QString newLineEnd() const;
    int sectionEnd(int header) const; // index one past the last line that belongs to the section

    QList<Line> m_lines;
    QHash<QString, Section> m_sections; // folded section name -> first section of that name
    Encoding m_encoding = Encoding::Utf8;
    bool m_bom = false;
};

} // namespace corvalent
