#include "origin.h"

namespace bvt {

QString serviceOrigin()
{
    return QStringLiteral(BREVANTI_ORIGIN);
}

} // namespace bvt
