#pragma once

#include "grab/DesktopWindows.h"

namespace corvalent {

// A desktop whose windows cannot be seen or driven by another program (Wayland): there are no windows to walk,
// and grabbing takes the text the user highlighted last, where the platform offers that selection.
class SelectionOnlyDesktop : public DesktopWindows {
public:
    bool canDriveWindows() const override { return false; }
    QList<WindowHandle> stackingFromTop() override { return {}; }
    QString title(WindowHandle) override { return {}; }
    QStringList programNames(WindowHandle) override { return {}; }
    bool isVisible(WindowHandle) override { return false; }
    bool hasParent(WindowHandle) override { return false; }
    WindowHandle owner(WindowHandle) override { return 0; }
    bool isToolWindow(WindowHandle) override { return false; }
    QRect frameGeometry(WindowHandle) override { return {}; }
    void clearClipboard() override {}
    bool activate(WindowHandle, int) override { return false; }
    void sendCopyKeystroke() override {}
    QString waitForClipboardText(int) override { return {}; }
    QString primarySelection() override;
    // Whether the platform keeps a highlighted-text selection at all.
    static bool hasPrimarySelection();
};

} // namespace corvalent
