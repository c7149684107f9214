#pragma once

#include "request/FieldTexts.h"

#include <QString>
#include <functional>

namespace corvalent {

inline const QString kNoUrlMessage = QStringLiteral("No URL has been specified for this service!");
inline const QString kMissingCountryFileMessage =
    QStringLiteral("Can't find the country file as specified in this service's settings.");

// What pressing GO does with a service and the ten field texts, decided without doing any of it.
struct GoPlan {
    enum class Kind {
        Get,                // open `address`
        Post,               // write and open the POST page
        NoUrl,              // show kNoUrlMessage
        MissingCountryFile, // show kMissingCountryFileMessage and open the country dialog for `serviceName`
    };
    Kind kind = Kind::Get;
    QString address;
    QString countryFilePath; // what the main window keeps as the resolved country file
    QString serviceName;     // the service's name as its file name has it
};
GoPlan PlanGo(const QString& serviceFile, const FieldTexts& fields);

// Carries out GO: opens the address or the POST page, or shows the message (and, for a missing country file,
// calls `openCountryDialog` with the service's name). Answers whether the main window should now close: after a
// GET unless `keepOpen`, never after the POST page or a message. `countryFilePath` receives the resolved country
// file, as the main window keeps it between presses.
struct GoResult {
    bool closeWindow = false;
    GoPlan plan;
};
GoResult RunGo(const QString& serviceFile, const FieldTexts& fields, bool keepOpen, QString& countryFilePath,
               const std::function<void(const QString& serviceName)>& openCountryDialog);

} // namespace corvalent
