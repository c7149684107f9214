#pragma once

namespace corvalent {

// The program's title: the caption of its message boxes and the application name of its preferences.
inline constexpr const char* kProgramTitle = "Corvalent";

} // namespace corvalent
