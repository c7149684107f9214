#pragma once

#include "request/FieldTexts.h"
#include "services/ServiceDefinition.h"

#include <QString>
#include <QTemporaryDir>

namespace corvalent {

// What GO would do with a service that is still being edited, for the line under the editor's rows. The service
// is written to a file of its own and planned as GO plans it, so that the preview never differs from the request.
class RequestPreview {
public:
    QString describe(const ServiceDefinition& service, const FieldTexts& fields);

private:
    QTemporaryDir m_folder;
};

// The hints the editor shows beside a service's fields; none of them stops a save.
struct ServiceHints {
    QString url;                            // "" when the address looks right
    std::array<QString, kFieldRows> rows{}; // "" for a row that looks right
};
ServiceHints HintsFor(const ServiceDefinition& service);

} // namespace corvalent
