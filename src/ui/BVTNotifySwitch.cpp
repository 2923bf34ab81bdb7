#include <Brevanti/BVTNotifySwitch.h>

BVTNotifySwitch::BVTNotifySwitch(QWidget *parent) : bvt::Switch(parent) { }

QString BVTNotifySwitch::category() const
{
    return m_category;
}

void BVTNotifySwitch::setCategory(const QString &category)
{
    m_category = category;
}

QString BVTNotifySwitch::preference() const
{
    return m_preference;
}

void BVTNotifySwitch::setPreference(const QString &preference)
{
    m_preference = preference;
}
