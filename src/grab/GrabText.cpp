#include "grab/GrabText.h"

#include <QEventLoop>
#include <QTimer>

namespace corvalent {

namespace {

// How many characters of a title count, as a title buffer of 255 characters holds.
constexpr qsizetype kTitleChars = 255;
// The pause between activating the browser and sending it the keystroke.
constexpr int kSettleMs = 10;

// Waits without freezing the window: the event loop keeps running.
void pause(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

} // namespace

const QStringList GrabText::kBrowserProgramNames{
    QStringLiteral("firefox"),       QStringLiteral("firefox-esr"),   QStringLiteral("navigator"),
    QStringLiteral("librewolf"),     QStringLiteral("waterfox"),      QStringLiteral("icecat"),
    QStringLiteral("seamonkey"),     QStringLiteral("floorp"),        QStringLiteral("zen"),
    QStringLiteral("chromium"),      QStringLiteral("chromium-browser"), QStringLiteral("google-chrome"),
    QStringLiteral("google-chrome-stable"), QStringLiteral("brave-browser"), QStringLiteral("microsoft-edge"),
    QStringLiteral("vivaldi-stable"), QStringLiteral("vivaldi"),      QStringLiteral("opera"),
    QStringLiteral("epiphany"),      QStringLiteral("org.gnome.epiphany"), QStringLiteral("falkon"),
    QStringLiteral("konqueror"),     QStringLiteral("qutebrowser"),   QStringLiteral("midori"),
};

QString GrabText::GrabBrowserText()
{
    m_cut = false;
    m_found = false;
    m_activated = false;
    if (!m_desktop.canDriveWindows()) {
        m_found = true;
        return normalized(m_desktop.primarySelection());
    }

    // The topmost window is our own at the moment of the click, so it is never looked at.
    const QList<WindowHandle> windows = m_desktop.stackingFromTop();
    m_desktop.clearClipboard();
    for (qsizetype i = 1; i < windows.size(); ++i) {
        const WindowHandle window = windows.at(i);
        if (IsBrowserTitle(window) && IsTaskbarWindow(window)) {
            m_found = true;
            return CopyWindowText(window);
        }
    }
    return QString();
}

bool GrabText::IsBrowserTitle(WindowHandle window)
{
    const QString title = m_desktop.title(window).left(kTitleChars);
    for (const QString& word : kBrowserTitleWords) {
        if (title.contains(word, Qt::CaseInsensitive))
            return true;
    }
    for (const QString& name : m_desktop.programNames(window)) {
        if (kBrowserProgramNames.contains(name, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

bool GrabText::IsTaskbarWindow(WindowHandle window)
{
    if (!m_desktop.isVisible(window))
        return false;
    if (m_desktop.hasParent(window))
        return false;
    const WindowHandle owner = m_desktop.owner(window);
    if (owner != 0 && !IsToolWindow(owner))
        return false;
    return !IsToolWindow(window);
}

bool GrabText::IsToolWindow(WindowHandle window)
{
    return m_desktop.isToolWindow(window);
}

QString GrabText::CopyWindowText(WindowHandle window)
{
    m_desktop.clearClipboard();
    // Ctrl+C sent while the browser is not in front would copy from whatever is, the add-on's own box included.
    m_activated = m_desktop.activate(window, kActivateTimeoutMs);
    if (!m_activated)
        return QString();
    pause(kSettleMs);
    m_desktop.sendCopyKeystroke();
    const QString text = m_desktop.waitForClipboardText(kCopyTimeoutMs);
    m_desktop.activate(window, 0);
    return normalized(text);
}

QString GrabText::normalized(const QString& text)
{
    return NormalizeGrabbedText(text, kMaxGrabChars, &m_cut);
}

QString GrabText::NormalizeGrabbedText(const QString& text, qsizetype maxChars, bool* cut)
{
    QString result;
    result.reserve(qMin(text.size() + text.size() / 16, maxChars));
    bool wasCut = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        QStringView piece;
        if (c == u'\0')
            continue;
        if (c == u'\r' || c == u'\n') {
            if (c == u'\r' && i + 1 < text.size() && text.at(i + 1) == u'\n')
                ++i;
            piece = u"\r\n";
        } else {
            piece = QStringView(&text.constData()[i], 1);
        }
        if (result.size() + piece.size() > maxChars) {
            wasCut = true;
            break;
        }
        result.append(piece);
    }
    // A cut between the halves of a character outside the basic plane would leave half a character.
    if (wasCut && !result.isEmpty() && result.back().isHighSurrogate())
        result.chop(1);
    if (cut)
        *cut = wasCut;
    return result;
}

} // namespace corvalent
