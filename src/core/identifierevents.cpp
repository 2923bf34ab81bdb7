#include "identifierevents.h"

namespace bvt {

IdentifierEvents &IdentifierEvents::instance()
{
    static IdentifierEvents events;
    return events;
}

} // namespace bvt
