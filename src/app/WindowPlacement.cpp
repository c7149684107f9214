#include "app/WindowPlacement.h"

#include <algorithm>
#include <limits>

namespace corvalent {

namespace {

qint64 overlap(const QRect& a, const QRect& b)
{
    const QRect common = a.intersected(b);
    return common.isEmpty() ? 0 : qint64(common.width()) * common.height();
}

qint64 distance(const QRect& a, const QRect& b)
{
    const QPoint d = a.center() - b.center();
    return qint64(d.x()) * d.x() + qint64(d.y()) * d.y();
}

// The start of a span of `length` within [low, high], as near `start` as it can be; at `low` when it is longer.
int within(int start, int length, int low, int high)
{
    return std::max(low, std::min(start, high - length + 1));
}

} // namespace

QRect FitOnScreens(const QRect& frame, const QList<QRect>& screens)
{
    if (screens.isEmpty())
        return frame;
    const QRect* target = &screens.first();
    qint64 best = -1;
    for (const QRect& screen : screens) {
        if (overlap(frame, screen) > best) {
            best = overlap(frame, screen);
            target = &screen;
        }
    }
    if (best == 0) {
        qint64 nearest = std::numeric_limits<qint64>::max();
        for (const QRect& screen : screens) {
            if (distance(frame, screen) < nearest) {
                nearest = distance(frame, screen);
                target = &screen;
            }
        }
    }
    QRect placed = frame;
    placed.moveTo(within(frame.left(), frame.width(), target->left(), target->right()),
                  within(frame.top(), frame.height(), target->top(), target->bottom()));
    return placed;
}

QPoint BesideHost(const QSize& size, const QRect& host, const QRect& screen)
{
    const int top = within(host.top(), size.height(), screen.top(), screen.bottom());
    if (screen.right() - host.right() >= size.width())
        return {host.right() + 1, top};
    if (host.left() - screen.left() >= size.width())
        return {host.left() - size.width(), top};
    return {screen.right() - size.width() + 1, screen.top()};
}

} // namespace corvalent
