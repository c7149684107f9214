#pragma once

#include <QColor>
#include <QString>

class QWidget;

namespace corvalent {

// The two looks of the contact panel, chosen in the preferences ("ColorStandard"). Only the controls marked for
// it take the scheme: those whose "Tag" property begins with "1".
struct ColourScheme {
    QColor back;
    QColor fore;

    static ColourScheme Standard(); // white, with the desktop's button text colour
    static ColourScheme Modern();   // green on black

    // "ColorStandard" as stored: a number equal to 1 is Standard, anything else (0, -1, "True", "") Modern.
    static ColourScheme forSetting(const QString& colorStandard);
    // The scheme the preferences hold now (missing means Standard).
    static ColourScheme current();
};

inline constexpr const char* kTagProperty = "Tag";

// Whether a control takes the colour scheme.
bool TakesColourScheme(const QWidget* widget);

// Colours every marked control below and including `root`.
void ApplyColourScheme(QWidget* root, const ColourScheme& scheme);

} // namespace corvalent
