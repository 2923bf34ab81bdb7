#include "screencolors.h"

#include "preferencesstyle.h"

#include <Brevanti/Client.h>

#include <QGuiApplication>
#include <QPalette>

#include <cmath>

namespace bvt {

namespace {
// What the screens call readable, as WCAG's AA level does for text.
constexpr double readable = 4.5;
} // namespace

double contrastRatio(const QColor &a, const QColor &b)
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

ScreenColors ScreenColors::current()
{
    ScreenColors colors;
    if (!Client::instance()->widgetScreensFollowPalette()) {
        colors.background = Qt::white;
        colors.text = Qt::black;
        colors.secondaryText = QColor::fromRgbF(0.75f, 0.75f, 0.75f, 1.0f);
        colors.rowBackground = Qt::white;
        colors.rowText = preferences::cellTextColor;
        colors.headerBackground = preferences::headerBackground;
        colors.headerText = preferences::headerTextColor;
        colors.hairline = preferences::hairlineColor;
        return colors;
    }
    const QPalette palette = QGuiApplication::palette();
    colors.m_followsPalette = true;
    colors.background = palette.color(QPalette::Window);
    colors.text = palette.color(QPalette::WindowText);
    colors.secondaryText = colors.text;
    colors.rowBackground = palette.color(QPalette::Base);
    colors.rowText = palette.color(QPalette::Text);
    colors.headerBackground = colors.background;
    colors.headerText = colors.text;
    colors.hairline = palette.color(QPalette::Mid);
    return colors;
}

QColor ScreenColors::onTint(const QColor &tint) const
{
    if (!m_followsPalette)
        return Qt::white;
    const auto better = [&tint](const QColor &a, const QColor &b) {
        return contrastRatio(a, tint) >= contrastRatio(b, tint) ? a : b;
    };
    const QColor fromPalette = better(background, text);
    return contrastRatio(fromPalette, tint) >= readable ? fromPalette
                                                        : better(Qt::white, Qt::black);
}

QColor ScreenColors::tintAsText(const QColor &tint) const
{
    if (!m_followsPalette || contrastRatio(tint, background) >= readable)
        return tint;
    return text;
}

} // namespace bvt
