#pragma once

#include "grab/DesktopWindows.h"

#include <QString>
#include <QStringList>

namespace corvalent {

// The browser's selection, fetched through the clipboard from the first browser window below our own.
class GrabText {
public:
    // How long a grab waits for the browser to become active and then to fill the clipboard. A browser that is
    // slower (or hangs) yields nothing rather than freezing the window.
    static constexpr int kActivateTimeoutMs = 500;
    static constexpr int kCopyTimeoutMs = 1000;
    // At most this much text is taken from one grab; the rest is cut.
    static constexpr qsizetype kMaxGrabChars = 1024 * 1024;
    // The words that mark a browser's title, tried in this order without regard to case.
    static inline const QStringList kBrowserTitleWords{QStringLiteral("Internet Explorer"),
                                                       QStringLiteral("Netscape"), QStringLiteral("Mozilla")};
    // Programs known to be browsers by the name they give their windows, compared without regard to case:
    // Chromium-family titles carry none of the words above.
    static const QStringList kBrowserProgramNames;

    explicit GrabText(DesktopWindows& desktop) : m_desktop(desktop) {}

    // The copied text, or "" when no browser window was found. The clipboard is emptied first and its earlier
    // content is not put back. Where windows cannot be driven, the last highlighted text. Line breaks come back
    // as CR LF, NULs dropped, and at most kMaxGrabChars characters are kept.
    QString GrabBrowserText();
    bool IsBrowserTitle(WindowHandle window);
    bool IsTaskbarWindow(WindowHandle window);
    bool IsToolWindow(WindowHandle window);
    QString CopyWindowText(WindowHandle window);

    // Whether the last grab was cut to kMaxGrabChars, and whether it found a browser window at all.
    bool lastGrabWasCut() const { return m_cut; }
    bool lastGrabFoundBrowser() const { return m_found; }
    // Whether the browser came to the front for the last grab.
    bool lastGrabActivatedBrowser() const { return m_activated; }

    // Every line break (LF, CR LF, a lone CR) as CR LF, without NULs, cut to `maxChars`; `cut` tells whether it was.
    static QString NormalizeGrabbedText(const QString& text, qsizetype maxChars, bool* cut = nullptr);

private:
    QString normalized(const QString& text);

    DesktopWindows& m_desktop;
    bool m_cut = false;
    bool m_found = false;
    bool m_activated = false;
};

} // namespace corvalent
