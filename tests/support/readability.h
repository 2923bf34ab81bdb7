#pragma once

// How well a text reads, measured from the pixels drawn: the colour drawn most in its area is what
// is behind it (a glyph's strokes cover less than its background), and its ink is the pixel that
// stands out most from that. Header-only, so that a host built from the installed package can
// measure itself too.
#include <QColor>
#include <QHash>
#include <QImage>
#include <QRect>
#include <QString>

#include <algorithm>
#include <cmath>

namespace readability {

// The contrast ratio of two colours as WCAG defines it, from 1 to 21.
inline double contrast(const QColor &a, const QColor &b)
{
    const auto luminance = [](const QColor &c) {
        const auto linear = [](double v) {
            return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(c.redF()) + 0.7152 * linear(c.greenF()) + 0.0722 * linear(c.blueF());
    };
    const double x = luminance(a), y = luminance(b);
    return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
}

struct Measure
{
    QColor ink;
    QColor background;
    double ratio = 1;
};

// The text drawn in area of image; a ratio of 1 when nothing stands out there.
inline Measure measure(const QImage &image, const QRect &area)
{
    const QRect inside = area & image.rect();
    QHash<QRgb, int> counts;
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            ++counts[image.pixel(x, y) | 0xff000000];
    if (counts.isEmpty())
        return {};
    Measure found;
    found.background = QColor(std::max_element(counts.cbegin(), counts.cend()).key());
    found.ink = found.background;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        if (const double ratio = contrast(QColor(it.key()), found.background);
            ratio > found.ratio) {
            found.ratio = ratio;
            found.ink = QColor(it.key());
        }
    }
    return found;
}

// A text that reads worse than 4.5:1, or empty; for a person.
inline QString unreadable(const QString &where, const QString &text, const Measure &measured)
{
    if (measured.ratio >= 4.5)
        return QString();
    return QStringLiteral("%1: \"%2\" in %3 on %4, contrast %5:1")
            .arg(where, text, measured.ink.name(), measured.background.name())
            .arg(measured.ratio, 0, 'f', 2);
}

} // namespace readability
