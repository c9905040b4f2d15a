#include <tesk/language.h>

#include <cctype>
#include <cstdlib>
#include <string>

namespace tesk {

const char* UserLanguageTag() {
    thread_local std::string tag;
    const char* value = nullptr;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        value = std::getenv(name);
        if (value && *value) break;
        value = nullptr;
    }
    std::string locale = value ? value : "";
    // "de_DE.UTF-8@euro" -> "de-de"
    locale = locale.substr(0, locale.find_first_of(".@"));
    if (locale.empty() || locale == "C" || locale == "POSIX") {
        tag = "en-us";
        return tag.c_str();
    }
    tag.clear();
    for (char ch : locale) tag += ch == '_' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    if (tag.find('-') == std::string::npos) {
        if (tag == "en") tag = "en-us";
        else tag += "-" + tag;  // "de" -> "de-de"
    }
    return tag.c_str();
}

}  // namespace tesk
