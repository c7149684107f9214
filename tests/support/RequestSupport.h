#pragma once

// Shared by the request and tool tests: service files, field rows, the recording stand-ins for message boxes and
// the browser, and the POST page as the browser receives it.

#include "common/Launcher.h"
#include "common/Prompter.h"
#include "request/FieldTexts.h"
#include "request/PostalLookup.h"
#include "support/TestHome.h"

#include <QRegularExpression>
#include <QTest>
#include <memory>

namespace corvalent::test {

// Presets/<name>.isf from "KEY=VALUE|..." lines, CR LF as the editor writes it; by default named after the data row
// so that rows never share a file. Answers the file's path.
inline QString writeService(const TestHome& home, const QString& keys, QString name = QString())
{
    if (name.isEmpty())
        name = QString::fromUtf8(QTest::currentDataTag()).replace(QLatin1Char('/'), QLatin1Char('_'));
    QString text = QStringLiteral("[Settings]|") + keys + QLatin1Char('|');
    text.replace(QLatin1Char('|'), QStringLiteral("\r\n"));
    return home.write(QStringLiteral("Presets/%1.isf").arg(name), text.toUtf8());
}

// Field rows from "N=TEXT|..." items, as corvalent-tool's --field takes them; the other rows stay empty.
inline FieldTexts fieldTexts(const QString& items)
{
    FieldTexts fields;
    for (const QString& item : items.split(QLatin1Char('|'), Qt::SkipEmptyParts))
        fields.at(item.section(QLatin1Char('='), 0, 0).toInt()) = item.section(QLatin1Char('='), 1);
    return fields;
}

inline const QString kPostalUrl = QStringLiteral("URL=http://") + kPostalLookupMarker + QStringLiteral("lang=e");

// Puts a recording stand-in (prompter, launcher) in place and answers it.
template <typename Recorder, typename Service>
Recorder* install()
{
    auto* recorder = new Recorder;
    Service::install(std::unique_ptr<Service>(recorder));
    return recorder;
}

// The error box of a failed procedure: caption, the error first, then the procedure and a line.
inline bool isErrorBox(const RecordingPrompter::Prompt& prompt, const QString& errorStart, const QString& location)
{
    static const QRegularExpression line(QStringLiteral(" - Line # [1-9][0-9]*\r"));
    const qsizetype at = prompt.text.indexOf(QStringLiteral("in ") + location + QStringLiteral(" - Line # "));
    return prompt.caption == QStringLiteral("Corvalent error") && prompt.text.startsWith(errorStart) && at > 0
        && line.match(prompt.text, at).hasMatch();
}

// The POST page around its input lines, bytes as written.
inline QByteArray postPage(const QByteArray& inputs)
{
    return "<html><body>\r\n<span style=visibility:hidden>\r\n<form NAME=SearchQuick method=POST action='http://"
        + kPostalLookupHost.toLatin1() + "/tools/pcl/bin/cp_search_response-e.asp'>\r\n" + inputs
        + "</form></span>\r\n<script>\r\ndocument.SearchQuick.submit();\r\n</script>\r\n</body></html>\r\n";
}

} // namespace corvalent::test
