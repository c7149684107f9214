#pragma once

#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

namespace corvalent {

// A top-level window of the desktop as the platform names it (an X11 window ID, later a Windows HWND); 0 is none.
using WindowHandle = quint64;

// What grabbing needs of the desktop: the top-level windows in their stacking order and a few facts about each,
// activating one, sending it the copy keystroke, and the clipboard. One implementation per platform, plus a
// scripted one for tests; nothing outside these implementations knows the window system.
class DesktopWindows {
public:
    virtual ~DesktopWindows() = default;

    // False where the window system lets no program see or drive the windows of others (Wayland): grabbing then
    // reads the selection the user highlighted last, if the platform offers it.
    virtual bool canDriveWindows() const = 0;

    // The top-level windows, topmost first.
    virtual QList<WindowHandle> stackingFromTop() = 0;
    // The window's title as the user sees it in its title bar.
    virtual QString title(WindowHandle window) = 0;
    // The names the window gives its program (on X11 the two strings of WM_CLASS); empty when it gives none.
    virtual QStringList programNames(WindowHandle window) = 0;
    // Shown on the screen: mapped and not minimised.
    virtual bool isVisible(WindowHandle window) = 0;
    // A child window rather than a top-level one.
    virtual bool hasParent(WindowHandle window) = 0;
    // The window this one belongs to (a dialog's main window); 0 when it belongs to none.
    virtual WindowHandle owner(WindowHandle window) = 0;
    // A palette, toolbar, menu, dock, splash screen or other window kept out of the task bar.
    virtual bool isToolWindow(WindowHandle window) = 0;
    // Where the window lies on the desktop, its frame included, in the device-independent pixels Qt places its own
    // windows in; an empty rectangle when the platform does not tell.
    virtual QRect frameGeometry(WindowHandle window) = 0;

    // Empties the clipboard.
    virtual void clearClipboard() = 0;
    // Makes the window the active one and waits, at most `timeoutMs`, until it is. Answers whether it became active.
    virtual bool activate(WindowHandle window, int timeoutMs) = 0;
    // Sends Ctrl+C to the active window as if typed on the keyboard.
    virtual void sendCopyKeystroke() = 0;
    // The clipboard's text once something other than this program has put it there, waiting at most `timeoutMs`
    // (the event loop keeps running meanwhile); "" when nothing came in time or what came is not text.
    virtual QString waitForClipboardText(int timeoutMs) = 0;

    // The text the user highlighted last, where the platform keeps such a selection; "" otherwise.
    virtual QString primarySelection() = 0;
};

} // namespace corvalent
