// A stand-in for the browser: a window of another program that puts text on the clipboard when it gets Ctrl+C, so
// that the clipboard's owner is a client other than the one reading it.
//
// Usage: x11_copy_window MODE < TEXT
//   utf8    Ctrl+C puts the text on the clipboard as UTF-8, in pieces of 64 KiB (INCR) when longer
//   latin1  Ctrl+C puts it there as an old program does: Latin-1 under STRING, no UTF-8
//   stopped as utf8, but the program stops as soon as it holds the clipboard and never answers
//   none    Ctrl+C copies nothing
// It prints "window ID" once its window is shown.

#include "X11Connection.h"

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QFile>
#include <QShortcut>
#include <QWidget>

#include <xcb/xcb.h>

#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

// Holds the CLIPBOARD and answers requests itself, before Qt sees them, as other toolkits do: the text under one
// type only, and in pieces of `m_piece` bytes through the INCR protocol when it is longer than that.
struct RawOwner : QAbstractNativeEventFilter {
    RawOwner(xcb_window_t window, xcb_atom_t type, QByteArray bytes)
        : m_window(window), m_type(type), m_bytes(std::move(bytes))
    {
    }

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override
    {
        const auto* event = static_cast<xcb_generic_event_t*>(message);
        if ((event->response_type & 0x7f) == XCB_SELECTION_REQUEST)
            return answer(*static_cast<const xcb_selection_request_event_t*>(message));
        // The requestor took the last piece: the next one, or an empty one to end.
        const auto* change = static_cast<const xcb_property_notify_event_t*>(message);
        if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY || m_sent < 0 || change->window != m_requestor
            || change->atom != m_property || change->state != XCB_PROPERTY_DELETE)
            return false;
        const QByteArray piece = m_bytes.mid(m_sent, m_piece);
        write(m_type, 8, piece.size(), piece.constData());
        m_sent = piece.isEmpty() ? -1 : m_sent + piece.size();
        return true;
    }

    bool answer(const xcb_selection_request_event_t& request)
    {
        if (request.owner != m_window)
            return false;
        xcb_selection_notify_event_t notify{XCB_SELECTION_NOTIFY, 0,           0, request.time, request.requestor,
                                            request.selection,    request.target, XCB_NONE};
        if (request.target == m_type) {
            m_requestor = request.requestor;
            m_property = notify.property = request.property;
            if (m_bytes.size() > m_piece) {
                const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
                xcb_change_window_attributes(qtConnection(), m_requestor, XCB_CW_EVENT_MASK, &events);
                const auto size = uint32_t(m_bytes.size());
                write(atom("INCR"), 32, 1, &size);
                m_sent = 0;
            } else {
                write(m_type, 8, m_bytes.size(), m_bytes.constData());
            }
        }
        xcb_send_event(qtConnection(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char*>(&notify));
        xcb_flush(qtConnection());
        return true;
    }

    void write(xcb_atom_t type, int format, qsizetype length, const void* data)
    {
        xcb_change_property(qtConnection(), XCB_PROP_MODE_REPLACE, m_requestor, m_property, type, uint8_t(format),
                            uint32_t(length), data);
        xcb_flush(qtConnection());
    }

    xcb_window_t m_window;
    xcb_atom_t m_type;
    QByteArray m_bytes;
    qsizetype m_piece = 64 * 1024;
    xcb_window_t m_requestor = XCB_NONE;
    xcb_atom_t m_property = XCB_NONE;
    qsizetype m_sent = -1; // bytes of an incremental transfer sent so far; -1 when none is under way
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QString mode = app.arguments().value(1);
    QFile in;
    in.open(stdin, QIODevice::ReadOnly);
    const QString text = QString::fromUtf8(in.readAll());

    QWidget window;
    const bool latin1 = mode == u"latin1";
    RawOwner raw(xcb_window_t(window.winId()), latin1 ? xcb_atom_t(XCB_ATOM_STRING) : atom("UTF8_STRING"),
                 latin1 ? text.toLatin1() : text.toUtf8());
    app.installNativeEventFilter(&raw);
    if (mode != u"none") {
        QObject::connect(new QShortcut(QKeySequence::Copy, &window), &QShortcut::activated, [&] {
            xcb_set_selection_owner(qtConnection(), raw.m_window, atom("CLIPBOARD"), XCB_CURRENT_TIME);
            xcb_flush(qtConnection());
            if (mode == u"stopped") // before the event loop could answer a request
                std::raise(SIGSTOP);
        });
    }
    window.setWindowTitle(u"Page — Mozilla Firefox"_s);
    window.resize(400, 200);
    window.show();
    std::printf("window %llu\n", static_cast<unsigned long long>(window.winId()));
    std::fflush(stdout);
    return app.exec();
}
