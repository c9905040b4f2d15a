// The one part of the path rules that is the same on both systems.
#include <tesk/path.h>
#include <tesk/text.h>

namespace tesk::path {

std::wstring ToWindows(const std::string& nativePath) {
    std::wstring wide = Wide(nativePath);
    for (wchar_t& ch : wide)
        if (ch == L'/') ch = L'\\';
    return wide;
}

}  // namespace tesk::path
