#pragma once

#include <QApplication>
#include <QColor>
#include <QFont>
#include <QMargins>
#include <QPalette>
#include <QRect>
#include <QWidget>

// The preferences screen's look, in the phone's points (one point a device-independent pixel).
namespace bvt::preferences {

inline const QMargins margins(15, 0, 0, 0); // separator inset and layout margins: left 15
inline const QRect cellLabelFrame(15, 0, 220, 60);
inline const QColor cellTextColor = QColor::fromRgbF(0.26f, 0.26f, 0.26f, 1.0f);
inline const QColor switchOnTint = QColor::fromRgbF(0.6f, 0.85f, 0.38f, 1.0f);
inline const QColor headerBackground = QColor::fromRgbF(0.98f, 0.98f, 0.98f, 1.0f);
inline const QColor headerTextColor = QColor::fromRgbF(0.64f, 0.64f, 0.64f, 1.0f);
inline const QColor hairlineColor = QColor::fromRgbF(0.87f, 0.87f, 0.87f, 1.0f);
inline constexpr qreal hairlineThickness = 0.5;
inline constexpr int headerLabelLeft = 15;
inline constexpr int headerLabelTop = 24;
inline constexpr int headerLabelHeight = 16;
inline constexpr int spinnerCentreY = 62;
inline constexpr int popupLandscapeMargin = 60; // landscape card height: screen width minus this
inline constexpr int popupPortraitHeight = 400;

// Widgets inside a table's viewport inherit its Base background role, which would make them paint
// with the Base and Text colours: the roles are named here so that the colours set are the ones
// shown.
inline void setTextColor(QWidget *widget, const QColor &color)
{
    widget->setForegroundRole(QPalette::WindowText);
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

inline void setBackgroundColor(QWidget *widget, const QColor &color)
{
    widget->setBackgroundRole(QPalette::Window);
    widget->setAutoFillBackground(true);
    QPalette palette = widget->palette();
    palette.setColor(QPalette::Window, color);
    widget->setPalette(palette);
}

// The bold system font, 14 points.
inline QFont boldFont()
{
    QFont font = QApplication::font();
    font.setPixelSize(14);
    font.setBold(true);
    return font;
}

} // namespace bvt::preferences
