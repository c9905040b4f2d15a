// A printer's PPD text, as GDI32 reads it for the printer's ICC profile.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ppd_profiles.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    tesk::printers::PpdColorInfo info = tesk::printers::ParsePpdColorInfo(text);
    (void)tesk::printers::ChoosePpdProfile(info, "/usr/share/cups/profiles");
    return 0;
}
