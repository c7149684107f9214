#include "grab/SelectionOnlyDesktop.h"

#include <QClipboard>
#include <QGuiApplication>

namespace corvalent {

bool SelectionOnlyDesktop::hasPrimarySelection()
{
    return QGuiApplication::clipboard()->supportsSelection();
}

QString SelectionOnlyDesktop::primarySelection()
{
    if (!hasPrimarySelection())
        return {};
    return QGuiApplication::clipboard()->text(QClipboard::Selection);
}

} // namespace corvalent
