#include "module/ColorDirectory.h"

namespace tesk {

CString ColorDirectory(decltype(&::GetColorDirectoryW) getColorDirectory) {
    constexpr DWORD kOfferedSize = 513;
    wchar_t buffer[520] = {};
    DWORD size = kOfferedSize;
    if (getColorDirectory) getColorDirectory(nullptr, buffer, &size);
    buffer[519] = 0;
    return CString(buffer);
}

}  // namespace tesk
