#include "associations.h"

#include <tesk/path.h>

#include <fstream>
#include <nlohmann/json.hpp>

namespace tesk::gdi {

std::vector<std::wstring> ReadAssociations(const std::wstring& device) {
    std::vector<std::wstring> names;
    std::ifstream in(path::ConfigDirectory() + "/device_profiles.json");
    if (!in) return names;
    nlohmann::json document = nlohmann::json::parse(in, nullptr, /*allow_exceptions=*/false);
    if (!document.is_object()) return names;
    auto it = document.find(path::Utf8(device));
    if (it == document.end() || !it->is_array()) return names;
    for (const nlohmann::json& entry : *it)
        if (entry.is_string() && !entry.get_ref<const std::string&>().empty())
            names.push_back(path::Wide(entry.get<std::string>()));
    return names;
}

}  // namespace tesk::gdi
