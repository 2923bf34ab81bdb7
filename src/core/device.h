#pragma once

#include "core/internalexport.h"

#include <QString>

namespace bvt {

// What the library knows of the device it runs on. The values come from QSysInfo; a host (or a
// test) may set its own, such as the phone's marketing model name.
class BREVANTI_CORE_INTERNAL_EXPORT Device
{
public:
    static Device &currentDevice();

    QString model() const;         // QSysInfo::productType() unless set
    QString systemVersion() const; // QSysInfo::productVersion() unless set

    void setModel(const QString &model); // a null QString goes back to QSysInfo's
    void setSystemVersion(const QString &version);

private:
    QString m_model;
    QString m_systemVersion;
};

} // namespace bvt
