#pragma once

#include "core/internalexport.h"

namespace bvt {

// Whether the facade BVT has a manager: it was initialised in this process.
BREVANTI_CORE_INTERNAL_EXPORT bool facadeInitialised();

} // namespace bvt
