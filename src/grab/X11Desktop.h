#pragma once

#include "grab/DesktopWindows.h"

#include <memory>

namespace corvalent {

// The desktop of an X11 session, through a connection of its own to the X server: the stacking order and window
// facts from the EWMH and ICCCM properties the window manager and the programs keep, activation by
// _NET_ACTIVE_WINDOW, Ctrl+C through XTEST with the keycodes of the current keymap (browsers ignore keys sent with
// SendEvent), and the CLIPBOARD selection read as UTF-8 text.
class X11Desktop : public DesktopWindows {
public:
    // Connects to the display named by DISPLAY; answers nullptr when there is none to connect to.
    static std::unique_ptr<X11Desktop> connect();
    ~X11Desktop() override;

    bool canDriveWindows() const override { return true; }
    QList<WindowHandle> stackingFromTop() override;
    QString title(WindowHandle window) override;
    QStringList programNames(WindowHandle window) override;
    bool isVisible(WindowHandle window) override;
    bool hasParent(WindowHandle window) override;
    WindowHandle owner(WindowHandle window) override;
    bool isToolWindow(WindowHandle window) override;
    QRect frameGeometry(WindowHandle window) override;
    void clearClipboard() override;
    bool activate(WindowHandle window, int timeoutMs) override;
    void sendCopyKeystroke() override;
    QString waitForClipboardText(int timeoutMs) override;
    QString primarySelection() override;

private:
    struct Impl;
    explicit X11Desktop(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> d;
};

} // namespace corvalent
