// Small JSON documents in the user's configuration folder, read and
// rewritten whole (through a temporary file and a rename).
#pragma once
#include <nlohmann/json.hpp>

#include <mutex>
#include <string>

namespace tesk::mscms {

// Serialises read-modify-write cycles of the documents within the process.
std::mutex& SettingsMutex();

// An empty object when the file is missing or damaged.
nlohmann::json LoadSettings(const std::string& fileName);
bool SaveSettings(const std::string& fileName, const nlohmann::json& document);

}  // namespace tesk::mscms
