// A stand-in for the browser: a window of another program whose selection Ctrl+C copies, so that the clipboard's
// owner is a client other than the one reading it.
//
// Usage: x11_copy_window MODE TITLE TEXTFILE
//   line   a one-line box holding the file's text, all of it selected
//   large  a multi-line box holding the file's text, all of it selected
//   none   a one-line box holding the file's text, nothing selected: Ctrl+C copies nothing
//   image  Ctrl+C puts a picture on the clipboard, no text
//   latin1 Ctrl+C puts the file's text on the clipboard as an old program does: Latin-1 under STRING, no UTF-8
//   pieces Ctrl+C puts the file's text on the clipboard as UTF-8 sent in pieces of 64 KiB
// It prints "window ID" once its window is shown and "owned" each time it has put something on the clipboard.

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QShortcut>

#include <xcb/xcb.h>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

void say(const QByteArray& line)
{
    std::fputs(line.constData(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

xcb_connection_t* connection()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

xcb_atom_t atom(const char* name)
{
    xcb_connection_t* c = connection();
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(strlen(name)), name), nullptr);
    const xcb_atom_t result = reply ? reply->atom : XCB_NONE;
    free(reply);
    return result;
}

// Holds the CLIPBOARD with its window and answers requests for it itself, before Qt sees them, the way other
// toolkits do: the text under one type only (every other target refused), and in pieces of `piece` bytes through
// the INCR protocol when it is longer than that (as GTK programs, browsers among them, send large texts).
class RawOwner : public QAbstractNativeEventFilter {
public:
    RawOwner(xcb_window_t window, xcb_atom_t type, QByteArray bytes, qsizetype piece)
        : m_window(window), m_type(type), m_bytes(std::move(bytes)), m_piece(piece)
    {
    }

    void take()
    {
        xcb_set_selection_owner(connection(), m_window, atom("CLIPBOARD"), XCB_CURRENT_TIME);
        xcb_flush(connection());
        say("owned");
    }

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override
    {
        const auto* event = static_cast<xcb_generic_event_t*>(message);
        switch (event->response_type & 0x7f) {
        case XCB_SELECTION_REQUEST:
            return answer(*static_cast<const xcb_selection_request_event_t*>(message));
        case XCB_PROPERTY_NOTIFY: {
            // The requestor took the last piece: the next one, or an empty one to end.
            const auto* change = static_cast<const xcb_property_notify_event_t*>(message);
            if (m_sent < 0 || change->window != m_requestor || change->atom != m_property
                || change->state != XCB_PROPERTY_DELETE)
                return false;
            const QByteArray piece = m_bytes.mid(m_sent, m_piece);
            write(m_type, 8, piece.size(), piece.constData());
            m_sent = piece.isEmpty() ? -1 : m_sent + piece.size();
            return true;
        }
        default:
            return false;
        }
    }

private:
    bool answer(const xcb_selection_request_event_t& request)
    {
        if (request.owner != m_window)
            return false;
        xcb_selection_notify_event_t notify{};
        notify.response_type = XCB_SELECTION_NOTIFY;
        notify.time = request.time;
        notify.requestor = request.requestor;
        notify.selection = request.selection;
        notify.target = request.target;
        notify.property = XCB_NONE;
        if (request.target == m_type) {
            m_requestor = request.requestor;
            m_property = request.property;
            if (m_bytes.size() > m_piece) {
                const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
                xcb_change_window_attributes(connection(), m_requestor, XCB_CW_EVENT_MASK, &events);
                const uint32_t size = uint32_t(m_bytes.size());
                write(atom("INCR"), 32, 1, &size);
                m_sent = 0;
            } else {
                write(m_type, 8, m_bytes.size(), m_bytes.constData());
            }
            notify.property = request.property;
        }
        xcb_send_event(connection(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char*>(&notify));
        xcb_flush(connection());
        return true;
    }

    void write(xcb_atom_t type, int format, qsizetype length, const void* data)
    {
        xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, m_requestor, m_property, type, uint8_t(format),
                            uint32_t(length), data);
        xcb_flush(connection());
    }

    xcb_window_t m_window;
    xcb_atom_t m_type;
    QByteArray m_bytes;
    qsizetype m_piece;
    xcb_window_t m_requestor = XCB_NONE;
    xcb_atom_t m_property = XCB_NONE;
    qsizetype m_sent = -1; // bytes of an incremental transfer sent so far; -1 when none is under way
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 4) {
        std::fputs("usage: x11_copy_window line|large|none|image|latin1|pieces TITLE TEXTFILE\n", stderr);
        return 2;
    }
    const QString mode = args.at(1);
    QFile file(args.at(3));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "x11_copy_window: cannot read %s\n", qPrintable(args.at(3)));
        return 2;
    }
    const QString text = QString::fromUtf8(file.readAll());

    std::unique_ptr<QWidget> window;
    std::unique_ptr<RawOwner> rawOwner;
    if (mode == u"large") {
        auto* box = new QPlainTextEdit;
        box->setPlainText(text);
        box->selectAll();
        window.reset(box);
    } else if (mode == u"line" || mode == u"none") {
        auto* box = new QLineEdit(text);
        if (mode == u"line")
            box->selectAll();
        else
            box->deselect();
        window.reset(box);
    } else if (mode == u"image") {
        window = std::make_unique<QWidget>();
        auto* copy = new QShortcut(QKeySequence::Copy, window.get());
        QObject::connect(copy, &QShortcut::activated, [] {
            QImage picture(16, 16, QImage::Format_RGB32);
            picture.fill(Qt::darkGreen);
            QGuiApplication::clipboard()->setImage(picture);
        });
    } else if (mode == u"latin1" || mode == u"pieces") {
        window = std::make_unique<QWidget>();
        const auto id = xcb_window_t(window->winId());
        if (mode == u"latin1")
            rawOwner = std::make_unique<RawOwner>(id, XCB_ATOM_STRING, text.toLatin1(), text.size());
        else
            rawOwner = std::make_unique<RawOwner>(id, atom("UTF8_STRING"), text.toUtf8(), 64 * 1024);
        app.installNativeEventFilter(rawOwner.get());
        auto* copy = new QShortcut(QKeySequence::Copy, window.get());
        QObject::connect(copy, &QShortcut::activated, [&] { rawOwner->take(); });
    } else {
        std::fprintf(stderr, "x11_copy_window: unknown mode %s\n", qPrintable(mode));
        return 2;
    }
    // Every change of the clipboard is told here, also another program's: only our own counts.
    QObject::connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, [] {
        if (QGuiApplication::clipboard()->ownsClipboard())
            say("owned");
    });

    window->setWindowTitle(args.at(2));
    window->resize(400, 200);
    window->show();
    window->setFocus();
    say("window " + QByteArray::number(window->winId()));
    return app.exec();
}
