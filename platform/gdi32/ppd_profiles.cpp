#include "ppd_profiles.h"

namespace tesk::printers {
namespace {

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) text.remove_suffix(1);
    return text;
}

// The value after the first ':' of a main-keyword line, without its quotes.
std::string_view ValueOf(std::string_view line) {
    size_t colon = line.find(':');
    if (colon == std::string_view::npos) return {};
    std::string_view value = Trimmed(line.substr(colon + 1));
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
    return value;
}

}  // namespace

PpdColorInfo ParsePpdColorInfo(std::string_view text) {
    PpdColorInfo info;
    constexpr std::string_view kProfile = "*cupsICCProfile";
    constexpr std::string_view kDefaultColorModel = "*DefaultColorModel:";
    while (!text.empty()) {
        size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);

        if (line.substr(0, kDefaultColorModel.size()) == kDefaultColorModel) {
            info.defaultColorModel = std::string(Trimmed(line.substr(kDefaultColorModel.size())));
        } else if (line.substr(0, kProfile.size()) == kProfile && line.size() > kProfile.size() &&
                   (line[kProfile.size()] == ' ' || line[kProfile.size()] == '\t')) {
            // *cupsICCProfile ColorModel.MediaType.Resolution/Text: "file"
            std::string_view option = Trimmed(line.substr(kProfile.size()));
            option = option.substr(0, std::min(option.find('/'), option.find(':')));
            std::string_view file = ValueOf(line);
            if (!file.empty()) info.profiles.push_back({std::string(option), std::string(file)});
        }
    }
    return info;
}

std::string ChoosePpdProfile(const PpdColorInfo& info, const std::string& profilesFolder) {
    const PpdProfile* chosen = nullptr;
    for (const PpdProfile& profile : info.profiles) {
        std::string_view model = std::string_view(profile.qualifiers).substr(0, profile.qualifiers.find('.'));
        if (!info.defaultColorModel.empty() && model == info.defaultColorModel) {
            chosen = &profile;
            break;
        }
        if (!chosen) chosen = &profile;
    }
    if (!chosen) return "";
    return chosen->file.front() == '/' ? chosen->file : profilesFolder + "/" + chosen->file;
}

}  // namespace tesk::printers
