#include "app/ColourScheme.h"

#include "common/VbRuntime.h"
#include "prefs/Preferences.h"

#include <QApplication>
#include <QPalette>
#include <QWidget>

namespace corvalent {

ColourScheme ColourScheme::Standard()
{
    return {Qt::white, QApplication::palette().color(QPalette::Active, QPalette::ButtonText)};
}

ColourScheme ColourScheme::Modern()
{
    return {Qt::black, QColor(0x00, 0xFF, 0x00)};
}

ColourScheme ColourScheme::forSetting(const QString& colorStandard)
{
    return IsNumeric(colorStandard) && Val(colorStandard) == 1 ? Standard() : Modern();
}

ColourScheme ColourScheme::current()
{
    return forSetting(GetSetting(QStringLiteral("ColorStandard"), QStringLiteral("1")));
}

bool TakesColourScheme(const QWidget* widget)
{
    return widget->property(kTagProperty).toString().startsWith(QLatin1Char('1'));
}

namespace {

void colour(QWidget* widget, const ColourScheme& scheme)
{
    QPalette palette = widget->palette();
    for (QPalette::ColorRole role : {QPalette::Window, QPalette::Base, QPalette::Button})
        palette.setColor(role, scheme.back);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, scheme.fore);
    widget->setPalette(palette);
    // Labels and frames draw no background of their own.
    widget->setAutoFillBackground(true);
}

bool insideMarked(const QWidget* widget)
{
    for (const QWidget* p = widget->parentWidget(); p; p = p->parentWidget())
        if (TakesColourScheme(p))
            return true;
    return false;
}

// An unmarked control inside a marked frame would inherit the frame's colours; it keeps the desktop's own.
void keepOwnColours(QWidget* widget)
{
    QPalette palette = QApplication::palette(widget);
    palette.setResolveMask(~QPalette::ResolveMask(0));
    widget->setPalette(palette);
}

} // namespace

void ApplyColourScheme(QWidget* root, const ColourScheme& scheme)
{
    QList<QWidget*> widgets = root->findChildren<QWidget*>();
    widgets.prepend(root);
    for (QWidget* widget : widgets) {
        if (TakesColourScheme(widget))
            colour(widget, scheme);
        else if (insideMarked(widget))
            keepOwnColours(widget);
    }
}

} // namespace corvalent
