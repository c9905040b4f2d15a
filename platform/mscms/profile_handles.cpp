#include "profile_handles.h"

#include <windows.h>

#include <cstdint>
#include <unordered_map>

namespace tesk::mscms {

namespace {

// Above the canonical user address range: never equal to a pointer.
constexpr uint64_t kProfileHandleTag = 0x5052460000000000ull;  // "PRF"

struct HandleTable {
    std::mutex mutex;
    uint64_t nextId = 1;
    std::unordered_map<uint64_t, std::shared_ptr<OpenProfile>> profiles;
};

HandleTable& Table() {
    static HandleTable* table = new HandleTable;  // outlives every static destructor
    return *table;
}

uint64_t HandleValue(HPROFILE handle) { return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(handle)); }

}  // namespace

HPROFILE RegisterProfile(std::shared_ptr<OpenProfile> profile) {
    HandleTable& table = Table();
    std::lock_guard lock(table.mutex);
    const uint64_t value = kProfileHandleTag | table.nextId++;
    table.profiles.emplace(value, std::move(profile));
    return reinterpret_cast<HPROFILE>(static_cast<uintptr_t>(value));
}

std::shared_ptr<OpenProfile> LookupProfile(HPROFILE handle) {
    HandleTable& table = Table();
    std::lock_guard lock(table.mutex);
    auto it = table.profiles.find(HandleValue(handle));
    if (it == table.profiles.end()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    return it->second;
}

std::shared_ptr<OpenProfile> UnregisterProfile(HPROFILE handle) {
    HandleTable& table = Table();
    std::lock_guard lock(table.mutex);
    auto it = table.profiles.find(HandleValue(handle));
    if (it == table.profiles.end()) return nullptr;
    std::shared_ptr<OpenProfile> profile = std::move(it->second);
    table.profiles.erase(it);
    return profile;
}

}  // namespace tesk::mscms

namespace tesk::mscms {

std::shared_ptr<OpenProfile> LookupWritableProfile(HPROFILE handle) {
    std::shared_ptr<OpenProfile> profile = LookupProfile(handle);
    if (profile && !profile->writable) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return profile;
}

}  // namespace tesk::mscms
