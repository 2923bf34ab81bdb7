#pragma once

#include "core/internalexport.h"

#include <Brevanti/BVTTypes.h>

#include <QString>

namespace bvt {

// The system version as the service receives it: its leading decimal number in single precision,
// printed with "%f" ("10.3.1" gives "10.300000").
QString osVersionText(const QString &systemVersion);

// The device as its registration describes it: {"device": {"os", "os_version", "model",
// "manufacturer"}}.
BREVANTI_CORE_INTERNAL_EXPORT BVTParameters deviceDescription();

} // namespace bvt
