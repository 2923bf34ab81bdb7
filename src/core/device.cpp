#include "device.h"

#include <QSysInfo>

namespace bvt {

Device &Device::currentDevice()
{
    static Device device;
    return device;
}

QString Device::model() const
{
    return m_model.isNull() ? QSysInfo::productType() : m_model;
}

QString Device::systemVersion() const
{
    return m_systemVersion.isNull() ? QSysInfo::productVersion() : m_systemVersion;
}

void Device::setModel(const QString &model)
{
    m_model = model;
}

void Device::setSystemVersion(const QString &version)
{
    m_systemVersion = version;
}

} // namespace bvt
