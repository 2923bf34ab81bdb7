#pragma once

namespace bvt::popupcard {

// Both cards leave this much of the main screen free beside them: width (or, in landscape,
// height) minus this.
inline constexpr int screenMargin = 30;

} // namespace bvt::popupcard
