#include "cardpresenter.h"

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
