#pragma once

// Finding a window's control by its documented name, as the window tests do; a missing one ends the test
// program at once, naming the control.

#include <QString>
#include <QWidget>

namespace corvalent::test {

template <typename T = QWidget>
T* control(QWidget* window, const QString& name)
{
    T* found = window->findChild<T*>(name);
    if (!found)
        qFatal("no control %s", qPrintable(name));
    return found;
}

} // namespace corvalent::test
