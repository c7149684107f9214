#pragma once

#include <QString>

namespace corvalent {

// The name of one control of a control array, as tests and the rest of the program find it: "txtField(3)".
inline QString ControlName(const char* array, int index)
{
    return QStringLiteral("%1(%2)").arg(QLatin1String(array)).arg(index);
}

} // namespace corvalent
