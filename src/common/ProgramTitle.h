#pragma once

namespace corvalent {

// The program's title: the caption of its message boxes and the application name of its preferences.
inline constexpr const char* kProgramTitle = "Corvalent";

// The contact manager that comes with it, as the add-on names it to the user.
inline constexpr const char* kContactsTitle = "Corvalent Contacts";

} // namespace corvalent
