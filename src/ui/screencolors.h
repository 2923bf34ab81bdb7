#pragma once

#include <QColor>

namespace bvt {

// The widget screens' colours: their own by default, the application's palette, light or dark,
// when the host asked for it (Client::widgetScreensFollowPalette). Read as a screen is built or
// appears.
struct ScreenColors
{
    QColor background;    // the card, and the preferences screen behind its rows
    QColor text;          // the card's texts that are not tinted
    QColor secondaryText; // No Thanks
    QColor rowBackground;
    QColor rowText;
    QColor headerBackground; // a category's header
    QColor headerText;
    QColor hairline;

    static ScreenColors current();
    bool followsPalette() const { return m_followsPalette; }

    // A text on the tint: the screens' white, or whichever of the palette's window and text
    // colours reads better on it (black or white when neither reads).
    QColor onTint(const QColor &tint) const;
    // The tint as a text on the background, or the text colour where the tint would not read.
    QColor tintAsText(const QColor &tint) const;

private:
    bool m_followsPalette = false;
};

// The contrast ratio of two colours as WCAG defines it, from 1 to 21.
double contrastRatio(const QColor &a, const QColor &b);

} // namespace bvt
