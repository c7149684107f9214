#include "editor/RequestPreview.h"

#include "request/Go.h"

#include <QCoreApplication>

namespace corvalent {

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("RequestPreview", text);
}

} // namespace

QString RequestPreview::describe(const ServiceDefinition& service, const FieldTexts& fields)
{
    if (!m_folder.isValid())
        return tr("No preview: %1").arg(m_folder.errorString());
    const QString file = m_folder.filePath(QStringLiteral("preview.isf"));
    if (!WriteNewService(file, service))
        return tr("No preview: the address or a variable name holds a line break.");
    const GoPlan plan = PlanGo(file, fields);
    switch (plan.kind) {
    case GoPlan::Kind::Post:
        return tr("GO posts a form with this contact's fields to the postal lookup.");
    case GoPlan::Kind::NoUrl:
        return kNoUrlMessage;
    case GoPlan::Kind::MissingCountryFile:
        return kMissingCountryFileMessage;
    case GoPlan::Kind::Get:
        break;
    }
    return tr("GO sends: %1").arg(plan.address);
}

ServiceHints HintsFor(const ServiceDefinition& service)
{
    ServiceHints hints;
    const QString url = service.url.trimmed();
    if (!url.isEmpty() && !url.startsWith(QLatin1String("http://"), Qt::CaseInsensitive)) {
        hints.url = url.startsWith(QLatin1String("https://"), Qt::CaseInsensitive)
            ? tr("GO puts \"http://\" before \"https://\": leave the scheme out or use http://")
            : tr("No scheme: GO puts \"http://\" in front");
    }
    std::array<QString, kFieldRows> sent{};
    for (int row = 0; row < kFieldRows; ++row) {
        QString name = service.variables[row];
        if (name.startsWith(QLatin1Char('&')))
            name.remove(0, 1);
        sent[row] = name;
    }
    for (int row = 0; row < kFieldRows; ++row) {
        if (sent[row].isEmpty())
            continue;
        if (service.fields[row] == FieldCode::None) {
            hints.rows[row] = tr("No field chosen: sends only what is typed into its box");
            continue;
        }
        for (int other = 0; other < row; ++other) {
            if (sent[other] == sent[row]) {
                hints.rows[row] = tr("Same name as row %1").arg(other + 1);
                break;
            }
        }
    }
    return hints;
}

} // namespace corvalent
