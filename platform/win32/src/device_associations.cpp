#include <tesk/device_associations.h>
#include <tesk/path.h>

#include <algorithm>
#include <fstream>
#include <mutex>
#include <nlohmann/json.hpp>

using nlohmann::json;

namespace tesk::associations {

namespace {

// Serialises read-modify-write cycles within the process.
std::mutex g_mutex;

std::string FilePath() { return path::ConfigDirectory() + "/device_profiles.json"; }

// An empty object when the file is missing or damaged.
json Load() {
    std::ifstream in(FilePath());
    if (!in) return json::object();
    json document = json::parse(in, nullptr, /*allow_exceptions=*/false);
    return document.is_object() ? document : json::object();
}

bool Save(const json& document) { return path::WriteFileAtomically(FilePath(), document.dump(2) + "\n"); }

// Entries that are not names are skipped.
std::vector<std::string> ListOf(const json& document, const std::string& device) {
    std::vector<std::string> names;
    auto it = document.find(device);
    if (it == document.end() || !it->is_array()) return names;
    for (const json& entry : *it)
        if (entry.is_string() && !entry.get_ref<const std::string&>().empty())
            names.push_back(entry.get<std::string>());
    return names;
}

}  // namespace

std::vector<std::string> ProfilesOf(const std::string& device) {
    std::lock_guard lock(g_mutex);
    return ListOf(Load(), device);
}

bool Add(const std::string& device, const std::string& profile) {
    std::lock_guard lock(g_mutex);
    json document = Load();
    std::vector<std::string> names = ListOf(document, device);
    if (std::find(names.begin(), names.end(), profile) != names.end()) return true;
    names.push_back(profile);
    document[device] = names;
    return Save(document);
}

RemoveResult Remove(const std::string& device, const std::string& profile) {
    std::lock_guard lock(g_mutex);
    json document = Load();
    std::vector<std::string> names = ListOf(document, device);
    auto it = std::find(names.begin(), names.end(), profile);
    if (it == names.end()) return RemoveResult::kNotAssociated;
    names.erase(it);
    if (names.empty())
        document.erase(device);
    else
        document[device] = names;
    return Save(document) ? RemoveResult::kRemoved : RemoveResult::kWriteFailed;
}

bool Forget(const std::string& profile) {
    std::lock_guard lock(g_mutex);
    json document = Load();
    bool changed = false;
    for (auto& [device, list] : document.items()) {
        if (!list.is_array()) continue;
        const size_t before = list.size();
        list.erase(std::remove(list.begin(), list.end(), json(profile)), list.end());
        changed |= list.size() != before;
    }
    return !changed || Save(document);
}

}  // namespace tesk::associations
