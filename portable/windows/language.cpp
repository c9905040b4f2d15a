#include <windows.h>

#include <tesk/language.h>
#include <tesk/text.h>

#include <cwctype>
#include <string>

namespace tesk {

const char* UserLanguageTag() {
    thread_local std::string tag;
    wchar_t name[LOCALE_NAME_MAX_LENGTH] = {};
    // "de-DE" -> "de-de"; a locale with a script ("sr-Latn-RS") keeps it.
    if (GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH) <= 0 || !name[0]) {
        tag = "en-us";
        return tag.c_str();
    }
    std::wstring lower = name;
    for (wchar_t& ch : lower) ch = static_cast<wchar_t>(std::towlower(ch));
    tag = path::Utf8(lower);
    if (tag.find('-') == std::string::npos) tag = tag == "en" ? "en-us" : tag + "-" + tag;
    return tag.c_str();
}

}  // namespace tesk
