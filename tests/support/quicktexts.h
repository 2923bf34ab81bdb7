#pragma once

// The texts a Qt Quick window shows, each with how well it reads (readability.h).
#include "readability.h"

#include <QQuickItem>
#include <QQuickWindow>

#include <utility>

namespace readability {

// Each text shown, in the part of it that no clipping ancestor cuts off (a list's delegates made
// ahead of scrolling are not shown).
inline QList<std::pair<QString, Measure>> shownTexts(QQuickWindow &window)
{
    const QImage image = window.grabWindow();
    QList<std::pair<QString, Measure>> texts;
    QList<std::pair<QQuickItem *, QRectF>> below{{window.contentItem(), QRectF(image.rect())}};
    while (!below.isEmpty()) {
        auto [item, visible] = below.takeFirst();
        if (!item->isVisible() || item->opacity() == 0)
            continue;
        const QRectF area = item->mapRectToScene(item->boundingRect());
        if (item->clip())
            visible &= area;
        for (QQuickItem *child : item->childItems())
            below.append({child, visible});
        const QString text = item->property("text").toString();
        const QRect shown = (area & visible).toRect();
        if (item->inherits("QQuickText") && !text.trimmed().isEmpty() && !shown.isEmpty())
            texts.append({text, measure(image, shown)});
    }
    return texts;
}

// Each text of window that reads worse than 4.5:1, described for a person.
inline QStringList unreadableTexts(QQuickWindow &window, const QString &where)
{
    QStringList found;
    for (const auto &[text, measured] : shownTexts(window))
        found << unreadable(where, text, measured);
    found.removeAll(QString());
    return found;
}

} // namespace readability
