#pragma once

#include "grab/DesktopWindows.h"

#include <memory>

namespace corvalent {

// The desktop of the session the program runs in: X11 where the program runs on X11 (XWayland included), and
// otherwise a desktop that offers only the highlighted-text selection.
std::unique_ptr<DesktopWindows> CreateDesktopWindows();

} // namespace corvalent
