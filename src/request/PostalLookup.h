#pragma once

#include <QString>

namespace corvalent {

// One postal-code lookup only accepts a form POST. Its address, host and path together, marks a service as that
// lookup wherever it appears in the service's URL, in any letter case.
inline const QString kPostalLookupHost = QStringLiteral("www.canadapost.ca");
inline const QString kPostalLookupMarker = kPostalLookupHost + QStringLiteral("/tools/pcl/bin/cp_search_response-e.asp?");
// Where the POST page sends its form, whatever the service's URL says.
inline const QString kPostalFormAction =
    QStringLiteral("http://") + kPostalLookupHost + QStringLiteral("/tools/pcl/bin/cp_search_response-e.asp");

inline bool IsPostalLookup(const QString& url)
{
    return url.contains(kPostalLookupMarker, Qt::CaseInsensitive);
}

} // namespace corvalent
