#pragma once

// Helpers shared by the request tests: service files in the private program folder, and the recording prompter
// and launcher that stand in for message boxes and the browser.

#include "common/Launcher.h"
#include "common/Prompter.h"
#include "request/FieldTexts.h"
#include "support/TestHome.h"

#include <QRegularExpression>
#include <QStringList>
#include <QTest>
#include <memory>

namespace corvalent::test {

// Writes Presets/<name>.isf below the program folder: "[Settings]" and the given key lines, CR LF as the editor
// writes them. Answers the file's full path.
inline QString writeService(const TestHome& home, const QString& name, const QStringList& keyLines)
{
    QByteArray bytes = "[Settings]\r\n";
    for (const QString& line : keyLines)
        bytes += line.toUtf8() + "\r\n";
    return home.write(QStringLiteral("Presets/") + name + QStringLiteral(".isf"), bytes);
}

// Up to ten field texts, rows from 0; the rest stay empty.
inline FieldTexts fieldTexts(const QStringList& texts)
{
    FieldTexts fields;
    for (int row = 0; row < texts.size() && row < kFieldRows; ++row)
        fields[row] = texts.at(row);
    return fields;
}

inline RecordingPrompter* installRecordingPrompter()
{
    auto prompter = std::make_unique<RecordingPrompter>();
    RecordingPrompter* raw = prompter.get();
    Prompter::install(std::move(prompter));
    return raw;
}

inline RecordingLauncher* installRecordingLauncher()
{
    auto launcher = std::make_unique<RecordingLauncher>();
    RecordingLauncher* raw = launcher.get();
    Launcher::install(std::move(launcher));
    return raw;
}

// The error box of a procedure that failed: its caption, and a text that starts with the error and names the
// procedure and a line.
inline bool isErrorBox(const RecordingPrompter::Prompt& prompt, const QString& errorStart, const QString& location)
{
    static const QRegularExpression line(QStringLiteral(" - Line # [1-9][0-9]*\r"));
    const qsizetype at = prompt.text.indexOf(QStringLiteral("in ") + location + QStringLiteral(" - Line # "));
    return prompt.caption == QStringLiteral("Corvalent error") && prompt.text.startsWith(errorStart) && at > 0
        && line.match(prompt.text, at).hasMatch();
}

} // namespace corvalent::test
