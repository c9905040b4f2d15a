// The built-in sRGB profile that seeds the colour directory.
#pragma once

namespace tesk::mscms {

inline constexpr char kBuiltInSrgbFileName[] = "sRGB Color Space Profile.icm";

}  // namespace tesk::mscms
