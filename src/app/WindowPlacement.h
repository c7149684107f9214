#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

namespace corvalent {

// Where the add-on's window goes on the desktop. Rectangles are frames (title bar and borders included) and
// screens are their available areas, so that a placed window is whole, menu bar and title bar included.

// `frame` moved as little as possible to lie fully on one of `screens`: the one it overlaps most or, when it
// overlaps none (a monitor that was removed, a position from a larger desktop), the nearest. A frame larger than
// that screen keeps its top left corner on it. `frame` unchanged when there is no screen at all.
QRect FitOnScreens(const QRect& frame, const QList<QRect>& screens);

// The top left corner of a frame of `size` beside `host` on `screen`: to the host's right where there is room,
// else to its left, else at the screen's right edge; level with the host's top.
QPoint BesideHost(const QSize& size, const QRect& host, const QRect& screen);

} // namespace corvalent
