#include <Brevanti/BVTNotifySwitch.h>

class BVTNotifySwitch::Private
{
public:
    QString category;
    QString preference;
};

BVTNotifySwitch::BVTNotifySwitch(QWidget *parent)
    : bvt::Switch(parent), d(std::make_unique<Private>())
{ }

BVTNotifySwitch::~BVTNotifySwitch() = default;

QString BVTNotifySwitch::category() const
{
    return d->category;
}

void BVTNotifySwitch::setCategory(const QString &category)
{
    d->category = category;
}

QString BVTNotifySwitch::preference() const
{
    return d->preference;
}

void BVTNotifySwitch::setPreference(const QString &preference)
{
    d->preference = preference;
}
