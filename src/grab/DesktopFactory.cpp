#include "grab/DesktopFactory.h"

#include "grab/SelectionOnlyDesktop.h"
#include "grab/X11Desktop.h"

#include <QGuiApplication>

namespace corvalent {

std::unique_ptr<DesktopWindows> CreateDesktopWindows()
{
    if (QGuiApplication::platformName() == QLatin1String("xcb")) {
        if (std::unique_ptr<X11Desktop> x11 = X11Desktop::connect())
            return x11;
    }
    return std::make_unique<SelectionOnlyDesktop>();
}

} // namespace corvalent
