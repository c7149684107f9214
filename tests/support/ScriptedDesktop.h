#pragma once

// A desktop of made-up windows for the grab rules: the test lists the windows from the top with what each says of
// itself, and what each would put on the clipboard when it is sent Ctrl+C.

#include "grab/DesktopWindows.h"

#include <QMap>
#include <QStringList>

#include <numeric>

namespace corvalent::test {

struct ScriptedWindow {
    QString title;
    QStringList programNames;
    bool visible = true;
    bool child = false;
    WindowHandle owner = 0;
    bool tool = false;
    // What Ctrl+C puts on the clipboard; with `copies` false the window never answers it.
    QString selection;
    bool copies = true;
    bool activates = true; // comes to the front when asked
    QRect frame; // where it lies on the desktop

    // A plain visible window; Ctrl+C in it copies `selection`.
    static ScriptedWindow named(const QString& title, const QString& selection = QString())
    {
        ScriptedWindow w;
        w.title = title;
        w.selection = selection;
        return w;
    }
};

class ScriptedDesktop : public DesktopWindows {
public:
    // Windows get the handles 1, 2, 3, ... in the order given, topmost first.
    explicit ScriptedDesktop(QList<ScriptedWindow> windows = {}, bool drivable = true)
        : m_windows(std::move(windows)), m_drivable(drivable)
    {
    }

    bool canDriveWindows() const override { return m_drivable; }
    QList<WindowHandle> stackingFromTop() override
    {
        QList<WindowHandle> handles(m_windows.size());
        std::iota(handles.begin(), handles.end(), WindowHandle(1));
        return handles;
    }
    QString title(WindowHandle w) override { return at(w).title; }
    QStringList programNames(WindowHandle w) override { return at(w).programNames; }
    bool isVisible(WindowHandle w) override { return at(w).visible; }
    bool hasParent(WindowHandle w) override { return at(w).child; }
    WindowHandle owner(WindowHandle w) override { return at(w).owner; }
    bool isToolWindow(WindowHandle w) override { return at(w).tool; }
    QRect frameGeometry(WindowHandle w) override { return at(w).frame; }
    void clearClipboard() override
    {
        clipboard.clear();
        log << QStringLiteral("clear");
    }
    bool activate(WindowHandle w, int) override
    {
        log << QStringLiteral("activate %1").arg(w);
        // Windows of the test's own (the add-on's) are not scripted: they always come.
        if (qsizetype(w) <= m_windows.size() && !at(w).activates)
            return false;
        active = w;
        return true;
    }
    void sendCopyKeystroke() override
    {
        log << QStringLiteral("copy");
        if (active != 0 && at(active).copies)
            clipboard = at(active).selection;
    }
    QString waitForClipboardText(int) override { return clipboard; }
    QString primarySelection() override { return primary; }

    QStringList log;
    QString clipboard;
    QString primary;
    WindowHandle active = 0;

private:
    const ScriptedWindow& at(WindowHandle w) const { return m_windows.at(qsizetype(w) - 1); }
    QList<ScriptedWindow> m_windows;
    bool m_drivable;
};

} // namespace corvalent::test
