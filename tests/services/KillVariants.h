#pragma once

// The two versions of the service that service_saver_child saves by turns: the same keys, other values and
// another name, so that every save is a rename and a file from either save shows which one it is.

#include "common/ProgramFolder.h"
#include "services/ServiceDefinition.h"

namespace corvalent::test {

inline ServiceDefinition killVariant(int which)
{
    ServiceDefinition s;
    s.name = which == 0 ? QStringLiteral("Kill") : QStringLiteral("Kill.2");
    s.url = which == 0 ? QStringLiteral("a.example.org/find?") : QStringLiteral("b.example.org/search?x=1");
    s.base = which;
    s.countryFile = QStringLiteral("Countries-ISO.ini");
    s.defaultCountry = which == 0 ? QStringLiteral("CA") : QStringLiteral("GB");
    for (int row = 0; row < kFieldRows; ++row) {
        s.fields[row] = row == 8 ? FieldCode::PhoneNumbers : 25 + row + which;
        s.variables[row] = QStringLiteral("v%1_%2").arg(row).arg(which);
    }
    s.phoneFormats[8] = which == 0 ? QStringLiteral("1,2,3") : QStringLiteral("4,5,6");
    s.labels[0] = QStringLiteral("Label %1").arg(which);
    return s;
}

inline QString killVariantFile(const QString& folder, int which)
{
    return ServiceFilePath(folder, killVariant(which).name);
}

} // namespace corvalent::test
