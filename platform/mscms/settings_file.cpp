#include "settings_file.h"

#include <tesk/path.h>

#include <fstream>

namespace tesk::mscms {

std::mutex& SettingsMutex() {
    static std::mutex mutex;
    return mutex;
}

nlohmann::json LoadSettings(const std::string& fileName) {
    std::ifstream in(tesk::path::ConfigDirectory() + "/" + fileName);
    if (!in) return nlohmann::json::object();
    nlohmann::json document = nlohmann::json::parse(in, nullptr, /*allow_exceptions=*/false);
    return document.is_object() ? document : nlohmann::json::object();
}

bool SaveSettings(const std::string& fileName, const nlohmann::json& document) {
    return tesk::path::WriteFileAtomically(tesk::path::ConfigDirectory() + "/" + fileName, document.dump(2) + "\n");
}

}  // namespace tesk::mscms
