#pragma once

#include <Brevanti/brevanti_core_export.h>

// Internal classes that only the tests and benchmarks reach are exported from a shared library only
// in builds that have tests or benchmarks. (Those that the Widgets and Quick libraries use are
// always exported, with BREVANTI_CORE_EXPORT; their headers are not installed, so they are not
// part of the API.)
#ifdef BREVANTI_EXPORT_INTERNALS
#define BREVANTI_CORE_INTERNAL_EXPORT BREVANTI_CORE_EXPORT
#else
#define BREVANTI_CORE_INTERNAL_EXPORT
#endif
