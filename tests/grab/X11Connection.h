#pragma once

// The X server connection of this process's Qt, and atoms by name: shared by the X11 test and its helper program.

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>

inline xcb_connection_t* qtConnection()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

inline xcb_atom_t atom(const char* name)
{
    xcb_connection_t* c = qtConnection();
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(strlen(name)), name), nullptr);
    const xcb_atom_t result = reply ? reply->atom : XCB_NONE;
    free(reply);
    return result;
}
