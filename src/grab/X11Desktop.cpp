#include "grab/X11Desktop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QSocketNotifier>
#include <QStringDecoder>
#include <QThread>
#include <QTimer>

#include <xcb/xcb.h>
#include <xcb/xcb_ewmh.h>
#include <xcb/xcb_icccm.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

#include <X11/keysym.h>

#include <poll.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>

namespace corvalent {

namespace {

// How long a wait sleeps between two looks at the server. Short enough that a copy is seen within a few
// milliseconds of being made, long enough that waiting costs next to nothing.
constexpr int kTickMs = 5;

// How long the highlighted selection may take to arrive: its owner is some program that is at the user's desk
// right now, so a second is ample, and a hung owner must not freeze the user's click for longer.
constexpr int kPrimaryMs = 1000;

// Property length asked for in one read, in 32-bit units: everything an owner can put into one property.
constexpr uint32_t kWholeProperty = 0x1fffffff;

// Replies of xcb come from malloc and go back with free.
struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
template <typename T>
using XcbReply = std::unique_ptr<T, FreeDeleter>;

// Text a program wrote as bytes of unknown encoding under the type STRING: ICCCM says Latin-1, yet many
// programs write their locale's bytes, which today is UTF-8. Bytes that form valid UTF-8 are almost never meant
// as Latin-1, so they are read as UTF-8 and anything else as Latin-1.
QString decodeLegacy(const QByteArray& bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(bytes);
    if (!utf8.hasError())
        return text;
    return QString::fromLatin1(bytes);
}

// Selection data may end in NULs that some owners append as C strings do; they are not part of the text.
QByteArray withoutTrailingNuls(QByteArray bytes)
{
    while (!bytes.isEmpty() && bytes.back() == '\0')
        bytes.chop(1);
    return bytes;
}

} // namespace

struct X11Desktop::Impl {
    xcb_connection_t* conn = nullptr;
    int screenNumber = 0;
    xcb_window_t root = XCB_NONE;
    xcb_ewmh_connection_t ewmh{};
    bool ewmhReady = false;

    // A window of our own, never mapped: it holds the CLIPBOARD while it is "empty" and receives converted
    // selections in a property.
    xcb_window_t own = XCB_NONE;

    xcb_atom_t clipboard = XCB_NONE;
    xcb_atom_t utf8String = XCB_NONE;
    xcb_atom_t incr = XCB_NONE;
    xcb_atom_t text = XCB_NONE;
    xcb_atom_t compoundText = XCB_NONE;
    xcb_atom_t transfer = XCB_NONE; // the property on `own` that selections are converted into

    // What the event pump has seen for the conversion under way.
    std::optional<xcb_selection_notify_event_t> selectionNotify;
    int newTransferValues = 0; // PropertyNotify NewValue on the transfer property since last counted

    std::unique_ptr<QSocketNotifier> notifier;
    QEventLoop* idleLoop = nullptr;
    bool busy = false;

    ~Impl()
    {
        notifier.reset();
        if (ewmhReady)
            xcb_ewmh_connection_wipe(&ewmh);
        if (conn)
            xcb_disconnect(conn); // our window, and with it any selection it holds, goes with the connection
    }

    bool broken() const { return xcb_connection_has_error(conn) != 0; }

    xcb_atom_t intern(const char* name)
    {
        const xcb_intern_atom_cookie_t cookie = xcb_intern_atom(conn, 0, uint16_t(strlen(name)), name);
        XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(conn, cookie, nullptr));
        return reply ? reply->atom : XCB_NONE;
    }

    // A round trip: once it returns, the server has carried out every request sent before it.
    void sync()
    {
        XcbReply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(conn, xcb_get_input_focus(conn), nullptr));
    }

    // Handles every event that has come in. It runs whenever the connection has something to read, also between
    // our own calls, because while our window holds the CLIPBOARD other programs ask it for the contents (a
    // clipboard manager, a paste into any window) and wait for an answer; they get a refusal at once.
    void pump()
    {
        while (xcb_generic_event_t* raw = xcb_poll_for_event(conn)) {
            XcbReply<xcb_generic_event_t> event(raw);
            switch (event->response_type & 0x7f) {
            case XCB_SELECTION_REQUEST:
                refuse(*reinterpret_cast<xcb_selection_request_event_t*>(raw));
                break;
            case XCB_SELECTION_NOTIFY: {
                const auto* notify = reinterpret_cast<xcb_selection_notify_event_t*>(raw);
                if (notify->requestor == own)
                    selectionNotify = *notify;
                break;
            }
            case XCB_PROPERTY_NOTIFY: {
                const auto* change = reinterpret_cast<xcb_property_notify_event_t*>(raw);
                if (change->window == own && change->atom == transfer && change->state == XCB_PROPERTY_NEW_VALUE)
                    ++newTransferValues;
                break;
            }
            default: // errors of requests whose replies we did not wait for: a window that went away, nothing more
                break;
            }
        }
        xcb_flush(conn);
    }

    void refuse(const xcb_selection_request_event_t& request)
    {
        xcb_selection_notify_event_t answer{};
        answer.response_type = XCB_SELECTION_NOTIFY;
        answer.time = request.time;
        answer.requestor = request.requestor;
        answer.selection = request.selection;
        answer.target = request.target;
        answer.property = XCB_NONE;
        xcb_send_event(conn, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&answer));
    }

    void watchConnection()
    {
        // Without an application object nothing dispatches socket notifiers; waits then poll the socket directly.
        if (!QCoreApplication::instance() || QThread::currentThread() != QCoreApplication::instance()->thread())
            return;
        notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(conn), QSocketNotifier::Read);
        QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this] {
            pump();
            if (broken())
                notifier->setEnabled(false); // a dead socket stays readable and would fire for ever
            if (idleLoop)
                idleLoop->quit();
        });
    }

    // Lets time pass for at most `ms`: the application's own events go on being handled meanwhile (its windows
    // repaint, its timers fire), and news from the server ends the pause early.
    void idle(int ms)
    {
        if (ms <= 0)
            return;
        if (notifier) {
            QEventLoop loop;
            QTimer::singleShot(ms, &loop, &QEventLoop::quit);
            idleLoop = &loop;
            // Painting and timers go on; clicks and keys wait until the grab is over, so that nothing the user
            // does (an update, an undo, another grab) runs in the middle of one.
            loop.exec(QEventLoop::ExcludeUserInputEvents);
            idleLoop = nullptr;
        } else {
            pollfd fd{xcb_get_file_descriptor(conn), POLLIN, 0};
            ::poll(&fd, 1, ms);
        }
    }

    // Waits until `done` answers true or the deadline passes; answers which of the two.
    bool waitUntil(const QDeadlineTimer& deadline, const std::function<bool()>& done)
    {
        for (;;) {
            pump();
            if (done())
                return true;
            if (broken() || deadline.hasExpired())
                return false;
            idle(int(std::min<qint64>(kTickMs, deadline.remainingTime())));
        }
    }

    xcb_window_t selectionOwner(xcb_atom_t selection)
    {
        XcbReply<xcb_get_selection_owner_reply_t> reply(
            xcb_get_selection_owner_reply(conn, xcb_get_selection_owner(conn, selection), nullptr));
        return reply ? reply->owner : XCB_NONE;
    }

    xcb_window_t activeWindow()
    {
        xcb_window_t active = XCB_NONE;
        if (!xcb_ewmh_get_active_window_reply(&ewmh, xcb_ewmh_get_active_window(&ewmh, screenNumber), &active,
                                              nullptr))
            return XCB_NONE;
        return active;
    }

    // The atoms of an atom-list property of the window (its window types, its states); empty when it has none.
    QList<xcb_atom_t> atoms(xcb_get_property_cookie_t cookie)
    {
        xcb_ewmh_get_atoms_reply_t reply;
        if (!xcb_ewmh_get_atoms_reply(&ewmh, cookie, &reply, nullptr))
            return {};
        QList<xcb_atom_t> list(reply.atoms, reply.atoms + reply.atoms_len);
        xcb_ewmh_get_atoms_reply_wipe(&reply);
        return list;
    }

    struct Chunk {
        xcb_atom_t type = XCB_NONE;
        QByteArray bytes;
    };

    // Reads the transfer property and deletes it, which is also what tells an incremental sender to go on.
    std::optional<Chunk> takeTransfer()
    {
        const xcb_get_property_cookie_t cookie =
            xcb_get_property(conn, 1, own, transfer, XCB_GET_PROPERTY_TYPE_ANY, 0, kWholeProperty);
        XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(conn, cookie, nullptr));
        if (!reply)
            return std::nullopt;
        Chunk chunk;
        chunk.type = reply->type;
        const int length = xcb_get_property_value_length(reply.get());
        if (reply->format == 8 && length > 0)
            chunk.bytes = QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())), length);
        return chunk;
    }

    enum class Outcome { Text, Refused, NoAnswer };
    struct Conversion {
        Outcome outcome = Outcome::NoAnswer;
        QString text;
    };

    // Asks the owner of `selection` for its contents as `target` and reads them, in pieces when the owner sends
    // them incrementally (large texts do), everything before the deadline.
    Conversion convert(xcb_atom_t selection, xcb_atom_t target, const QDeadlineTimer& deadline)
    {
        xcb_delete_property(conn, own, transfer);
        selectionNotify.reset();
        xcb_convert_selection(conn, own, selection, target, transfer, XCB_CURRENT_TIME);
        xcb_flush(conn);
        const bool answered = waitUntil(deadline, [&] {
            return selectionNotify && selectionNotify->selection == selection && selectionNotify->target == target;
        });
        if (!answered)
            return {};
        if (selectionNotify->property == XCB_NONE)
            return {Outcome::Refused, {}};

        // The sender writes the next piece only after we took the previous one, so the count of new values
        // starts here, before the first take.
        newTransferValues = 0;
        std::optional<Chunk> chunk = takeTransfer();
        if (!chunk)
            return {};
        if (chunk->type == incr) {
            QByteArray all;
            xcb_atom_t type = XCB_NONE;
            for (;;) {
                if (!waitUntil(deadline, [&] { return newTransferValues > 0; }))
                    return {};
                newTransferValues = 0;
                chunk = takeTransfer();
                if (!chunk)
                    return {};
                if (chunk->bytes.isEmpty())
                    break;
                type = chunk->type;
                all += chunk->bytes;
            }
            chunk = Chunk{type, all};
        }
        return {Outcome::Text, decode(*chunk)};
    }

    QString decode(const Chunk& chunk) const
    {
        const QByteArray bytes = withoutTrailingNuls(chunk.bytes);
        if (chunk.type == utf8String)
            return QString::fromUtf8(bytes);
        if (chunk.type == XCB_ATOM_STRING || chunk.type == text || chunk.type == compoundText)
            return decodeLegacy(bytes);
        return {}; // an owner that answered with something other than text
    }

    // The text of `selection`: UTF-8 where the owner offers it, else Latin-1 text; "" when the owner offers no
    // text or does not answer before the deadline.
    QString readSelection(xcb_atom_t selection, const QDeadlineTimer& deadline)
    {
        for (const xcb_atom_t target : {utf8String, xcb_atom_t(XCB_ATOM_STRING)}) {
            const Conversion conversion = convert(selection, target, deadline);
            if (conversion.outcome != Outcome::Refused)
                return conversion.text;
        }
        return {};
    }

    // The keycode that types `keysym` on the keyboard as it is mapped right now; 0 when no key does.
    static xcb_keycode_t keycodeOf(xcb_key_symbols_t* symbols, xcb_keysym_t keysym)
    {
        XcbReply<xcb_keycode_t> codes(xcb_key_symbols_get_keycode(symbols, keysym));
        return codes ? codes.get()[0] : xcb_keycode_t(0);
    }
};

// A nested call, from a handler that ran while one of our waits kept the event loop going, would take over the
// conversion under way; it answers as if nothing were there instead.
namespace {
class BusyGuard {
public:
    explicit BusyGuard(bool& busy) : m_busy(busy), m_entered(!busy) { m_busy = true; }
    ~BusyGuard()
    {
        if (m_entered)
            m_busy = false;
    }
    bool entered() const { return m_entered; }

private:
    bool& m_busy;
    bool m_entered;
};
} // namespace

std::unique_ptr<X11Desktop> X11Desktop::connect()
{
    auto d = std::make_unique<Impl>();
    d->conn = xcb_connect(nullptr, &d->screenNumber);
    if (!d->conn)
        return nullptr;
    if (d->broken())
        return nullptr; // Impl's destructor disconnects: xcb wants that also for a failed connection

    const xcb_setup_t* setup = xcb_get_setup(d->conn);
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(setup);
    for (int i = 0; i < d->screenNumber && screens.rem > 0; ++i)
        xcb_screen_next(&screens);
    if (screens.rem == 0)
        return nullptr;
    d->root = screens.data->root;

    xcb_intern_atom_cookie_t* cookies = xcb_ewmh_init_atoms(d->conn, &d->ewmh);
    if (!cookies || !xcb_ewmh_init_atoms_replies(&d->ewmh, cookies, nullptr))
        return nullptr;
    d->ewmhReady = true;

    d->clipboard = d->intern("CLIPBOARD");
    d->utf8String = d->ewmh.UTF8_STRING;
    d->incr = d->intern("INCR");
    d->text = d->intern("TEXT");
    d->compoundText = d->intern("COMPOUND_TEXT");
    d->transfer = d->intern("CORVALENT_SELECTION");
    if (d->clipboard == XCB_NONE || d->incr == XCB_NONE || d->transfer == XCB_NONE)
        return nullptr;

    d->own = xcb_generate_id(d->conn);
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(d->conn, XCB_COPY_FROM_PARENT, d->own, d->root, -10, -10, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    d->sync();
    if (d->broken())
        return nullptr;
    d->watchConnection();
    return std::unique_ptr<X11Desktop>(new X11Desktop(std::move(d)));
}

X11Desktop::X11Desktop(std::unique_ptr<Impl> impl) : d(std::move(impl)) {}

X11Desktop::~X11Desktop() = default;

QList<WindowHandle> X11Desktop::stackingFromTop()
{
    QList<WindowHandle> windows;
    xcb_ewmh_get_windows_reply_t clients;
    if (xcb_ewmh_get_client_list_stacking_reply(&d->ewmh, xcb_ewmh_get_client_list_stacking(&d->ewmh, d->screenNumber),
                                                &clients, nullptr)) {
        for (uint32_t i = clients.windows_len; i > 0; --i)
            windows.append(clients.windows[i - 1]);
        xcb_ewmh_get_windows_reply_wipe(&clients);
        return windows;
    }
    // No window manager keeps the list: the children of the root are the top-level windows, bottom first.
    XcbReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(d->conn, xcb_query_tree(d->conn, d->root), nullptr));
    if (!tree)
        return windows;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = xcb_query_tree_children_length(tree.get()); i > 0; --i)
        windows.append(children[i - 1]);
    return windows;
}

QString X11Desktop::title(WindowHandle window)
{
    const auto id = xcb_window_t(window);
    xcb_ewmh_get_utf8_strings_reply_t name;
    if (xcb_ewmh_get_wm_name_reply(&d->ewmh, xcb_ewmh_get_wm_name(&d->ewmh, id), &name, nullptr)) {
        const QString title = QString::fromUtf8(name.strings, qsizetype(name.strings_len));
        xcb_ewmh_get_utf8_strings_reply_wipe(&name);
        return title;
    }
    xcb_icccm_get_text_property_reply_t legacy;
    if (!xcb_icccm_get_wm_name_reply(d->conn, xcb_icccm_get_wm_name(d->conn, id), &legacy, nullptr))
        return {};
    QString title;
    if (legacy.format == 8) {
        const QByteArray bytes(legacy.name, qsizetype(legacy.name_len));
        title = legacy.encoding == d->utf8String ? QString::fromUtf8(bytes) : decodeLegacy(bytes);
    }
    xcb_icccm_get_text_property_reply_wipe(&legacy);
    return title;
}

QStringList X11Desktop::programNames(WindowHandle window)
{
    xcb_icccm_get_wm_class_reply_t names;
    if (!xcb_icccm_get_wm_class_reply(d->conn, xcb_icccm_get_wm_class(d->conn, xcb_window_t(window)), &names, nullptr))
        return {};
    // The helper has checked that the property is two NUL-terminated strings.
    const QStringList list{decodeLegacy(QByteArray(names.instance_name)), decodeLegacy(QByteArray(names.class_name))};
    xcb_icccm_get_wm_class_reply_wipe(&names);
    return list;
}

bool X11Desktop::isVisible(WindowHandle window)
{
    const auto id = xcb_window_t(window);
    const xcb_get_window_attributes_cookie_t attributes = xcb_get_window_attributes(d->conn, id);
    const xcb_get_property_cookie_t states = xcb_ewmh_get_wm_state(&d->ewmh, id);
    XcbReply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(d->conn, attributes, nullptr));
    const QList<xcb_atom_t> state = d->atoms(states);
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE && !state.contains(d->ewmh._NET_WM_STATE_HIDDEN);
}

bool X11Desktop::hasParent(WindowHandle)
{
    // Every window we are given is a top-level client from the window manager's list (or, without a window
    // manager, a child of the root). Its parent in the X tree is the manager's frame around it, which is
    // decoration, not a parent window in the sense asked about here; a dialog's main window is its owner.
    return false;
}

WindowHandle X11Desktop::owner(WindowHandle window)
{
    xcb_window_t transientFor = XCB_NONE;
    if (!xcb_icccm_get_wm_transient_for_reply(
            d->conn, xcb_icccm_get_wm_transient_for(d->conn, xcb_window_t(window)), &transientFor, nullptr))
        return 0;
    // Transient for the root means "for the whole group of its program", not for a window of its own.
    return transientFor == d->root ? 0 : transientFor;
}

bool X11Desktop::isToolWindow(WindowHandle window)
{
    const auto id = xcb_window_t(window);
    const xcb_get_property_cookie_t typeCookie = xcb_ewmh_get_wm_window_type(&d->ewmh, id);
    const xcb_get_property_cookie_t stateCookie = xcb_ewmh_get_wm_state(&d->ewmh, id);
    const QList<xcb_atom_t> types = d->atoms(typeCookie);
    const QList<xcb_atom_t> states = d->atoms(stateCookie);
    const xcb_ewmh_connection_t& e = d->ewmh;
    const xcb_atom_t toolTypes[] = {e._NET_WM_WINDOW_TYPE_UTILITY,       e._NET_WM_WINDOW_TYPE_TOOLBAR,
                                    e._NET_WM_WINDOW_TYPE_MENU,          e._NET_WM_WINDOW_TYPE_DOCK,
                                    e._NET_WM_WINDOW_TYPE_SPLASH,        e._NET_WM_WINDOW_TYPE_DROPDOWN_MENU,
                                    e._NET_WM_WINDOW_TYPE_POPUP_MENU,    e._NET_WM_WINDOW_TYPE_TOOLTIP,
                                    e._NET_WM_WINDOW_TYPE_NOTIFICATION};
    return std::any_of(std::begin(toolTypes), std::end(toolTypes), [&](xcb_atom_t t) { return types.contains(t); })
        || states.contains(e._NET_WM_STATE_SKIP_TASKBAR);
}

QRect X11Desktop::frameGeometry(WindowHandle window)
{
    const auto id = xcb_window_t(window);
    const xcb_get_geometry_cookie_t sizeCookie = xcb_get_geometry(d->conn, id);
    const xcb_translate_coordinates_cookie_t originCookie = xcb_translate_coordinates(d->conn, id, d->root, 0, 0);
    const xcb_get_property_cookie_t extentsCookie = xcb_ewmh_get_frame_extents(&d->ewmh, id);
    XcbReply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(d->conn, sizeCookie, nullptr));
    XcbReply<xcb_translate_coordinates_reply_t> origin(
        xcb_translate_coordinates_reply(d->conn, originCookie, nullptr));
    xcb_ewmh_get_extents_reply_t extents{};
    const bool framed = xcb_ewmh_get_frame_extents_reply(&d->ewmh, extentsCookie, &extents, nullptr);
    if (!size || !origin)
        return {};
    QRect frame(origin->dst_x, origin->dst_y, size->width, size->height);
    if (framed)
        frame.adjust(-int(extents.left), -int(extents.top), int(extents.right), int(extents.bottom));
    // The server counts device pixels; Qt places its windows in pixels scaled by the screen's factor.
    const qreal ratio = qGuiApp ? qGuiApp->devicePixelRatio() : 1.0;
    return QRect((QPointF(frame.topLeft()) / ratio).toPoint(), (QSizeF(frame.size()) / ratio).toSize());
}

void X11Desktop::clearClipboard()
{
    // Our window takes the CLIPBOARD and answers every request for it with a refusal, so the clipboard reads as
    // empty. Dropping the ownership to None would do the same, but a clipboard manager takes an abandoned
    // CLIPBOARD over at once and puts the old text back, which would then pass for a fresh copy.
    xcb_set_selection_owner(d->conn, d->own, d->clipboard, XCB_CURRENT_TIME);
    d->sync();
    d->pump();
}

bool X11Desktop::activate(WindowHandle window, int timeoutMs)
{
    BusyGuard guard(d->busy);
    if (!guard.entered())
        return false;
    const auto id = xcb_window_t(window);
    // Asking again for a window that is active already is not harmless: the program may answer it late and take
    // the keyboard back from whoever was activated in between.
    if (d->activeWindow() == id)
        return true;
    const QDeadlineTimer deadline(std::max(timeoutMs, 0));
    // Source 2 says a pager asks, which is the user's own wish: window managers then skip the focus-stealing
    // prevention that would leave a request from an ordinary program unanswered.
    xcb_ewmh_request_change_active_window(&d->ewmh, d->screenNumber, id, XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER,
                                          XCB_CURRENT_TIME, d->activeWindow());
    xcb_flush(d->conn);
    return d->waitUntil(deadline, [&] { return d->activeWindow() == id; });
}

void X11Desktop::sendCopyKeystroke()
{
    // Keys sent with SendEvent carry a flag that browsers take for a forgery and ignore; XTEST keys come in as
    // if typed on the keyboard.
    const xcb_query_extension_reply_t* xtest = xcb_get_extension_data(d->conn, &xcb_test_id);
    if (!xtest || !xtest->present) {
        qWarning("X11Desktop: the X server has no XTEST extension; Ctrl+C cannot be typed");
        return;
    }
    // Asked anew each time: the user may have switched the keyboard layout since the last grab.
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(d->conn);
    if (!symbols)
        return;
    const xcb_keycode_t control = Impl::keycodeOf(symbols, XK_Control_L);
    const xcb_keycode_t c = Impl::keycodeOf(symbols, XK_c);
    xcb_key_symbols_free(symbols);
    if (control == 0 || c == 0) {
        qWarning("X11Desktop: the keyboard map has no key for Control_L or c");
        return;
    }
    const auto key = [&](uint8_t type, xcb_keycode_t code) {
        xcb_test_fake_input(d->conn, type, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    };
    key(XCB_KEY_PRESS, control);
    key(XCB_KEY_PRESS, c);
    key(XCB_KEY_RELEASE, c);
    key(XCB_KEY_RELEASE, control);
    // Once the round trip is back, the server has delivered the keys; what the window makes of them is its own
    // business and shows in the clipboard.
    d->sync();
}

QString X11Desktop::waitForClipboardText(int timeoutMs)
{
    BusyGuard guard(d->busy);
    if (!guard.entered())
        return {};
    const QDeadlineTimer deadline(std::max(timeoutMs, 0));
    const bool taken = d->waitUntil(deadline, [&] {
        const xcb_window_t owner = d->selectionOwner(d->clipboard);
        return owner != XCB_NONE && owner != d->own;
    });
    if (!taken)
        return {};
    return d->readSelection(d->clipboard, deadline);
}

QString X11Desktop::primarySelection()
{
    BusyGuard guard(d->busy);
    if (!guard.entered())
        return {};
    if (d->selectionOwner(XCB_ATOM_PRIMARY) == XCB_NONE)
        return {};
    return d->readSelection(XCB_ATOM_PRIMARY, QDeadlineTimer(kPrimaryMs));
}

} // namespace corvalent
