#pragma once

#include <Brevanti/brevanti_core_export.h>

#include <QObject>

namespace bvt {

// Tells the front ends that a stored identifier may read differently now: the store wrote or
// removed it, or the facade took a new manager (before its first one it reads nothing). The value
// is not passed along: listeners read it again, as every read goes to storage afresh.
class BREVANTI_CORE_EXPORT IdentifierEvents : public QObject
{
    Q_OBJECT
public:
    static IdentifierEvents &instance();

Q_SIGNALS:
    void deviceIdChanged();
    void userIdChanged();
    void deviceTokenChanged();

private:
    IdentifierEvents() = default;
};

} // namespace bvt
