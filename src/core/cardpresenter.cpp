#include "cardpresenter.h"

#include <QCoreApplication>
#include <QPointer>

namespace bvt {

namespace {

struct Installed
{
    QPointer<QObject> owner;
    CardPresenter presenter;
};

Installed &installed()
{
    static Installed one;
    return one;
}

CardPresenter &widgetPresenter()
{
    static CardPresenter one;
    return one;
}

} // namespace

void installCardPresenter(QObject *owner, CardPresenter presenter)
{
    installed() = {owner, std::move(presenter)};
}

bool presentCard(const CardRequest &request)
{
    const Installed &now = installed();
    if (!now.owner || !now.presenter)
        return false;
    now.presenter(request);
    return true;
}

} // namespace bvt

namespace bvt {

void installWidgetCardPresenter(CardPresenter presenter)
{
    widgetPresenter() = std::move(presenter);
}

bool presentCardWhereShown(const CardRequest &request)
{
    // By name: this library does not link Qt Widgets.
    const QCoreApplication *application = QCoreApplication::instance();
    if (application && application->inherits("QApplication") && widgetPresenter()) {
        widgetPresenter()(request);
        return true;
    }
    return presentCard(request);
}

} // namespace bvt
