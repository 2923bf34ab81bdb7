#pragma once

#include <Brevanti/brevanti_core_export.h>

#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>

namespace bvt {

// Who shows the permission card in a host without Qt Widgets: the QML module installs itself here,
// so that BVTNotify::requestCustomPreferences shows its card there. The colour and icon travel as
// QVariant (a QColor, a QPixmap) so that this layer needs no Qt Gui.
struct CardRequest
{
    QVariant color;
    QVariant icon;
    QString header;
    QString subHeader;
    bool defaults = false; // BVTNotify's defaults instead of the members above
};

using CardPresenter = std::function<void(const CardRequest &)>;

// The presenter runs only while its owner lives; the last one installed wins.
BREVANTI_CORE_EXPORT void installCardPresenter(QObject *owner, CardPresenter presenter);
// Shows the card through the installed presenter; false when there is none.
BREVANTI_CORE_EXPORT bool presentCard(const CardRequest &request);

// The widget card, which the Widgets library installs as it is loaded.
BREVANTI_CORE_EXPORT void installWidgetCardPresenter(CardPresenter presenter);
// Shows the card where the host can show it: the widget card in a QApplication once the Widgets
// library is loaded, else the presenter installed above (the QML card); false when neither can.
BREVANTI_CORE_EXPORT bool presentCardWhereShown(const CardRequest &request);

} // namespace bvt
