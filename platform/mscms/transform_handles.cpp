#include "transform_handles.h"

#include <windows.h>

#include <mutex>
#include <unordered_map>

namespace tesk::mscms {
namespace {

// Transform handles carry a tag in their high bits so that they never equal
// a profile handle or a small integer that a caller confuses with one.
constexpr uintptr_t kHandleTag = uintptr_t{0x7846} << 48;  // "xF"

struct Registry {
    std::mutex mutex;
    uintptr_t lastId = 0;
    std::unordered_map<uintptr_t, std::shared_ptr<ColorTransform>> open;
};

Registry& TheRegistry() {
    static Registry* registry = new Registry;  // outlives handles freed at exit
    return *registry;
}

}  // namespace

HTRANSFORM RegisterTransform(std::shared_ptr<ColorTransform> transform) {
    Registry& registry = TheRegistry();
    std::lock_guard lock(registry.mutex);
    const uintptr_t value = kHandleTag | ++registry.lastId;
    registry.open.emplace(value, std::move(transform));
    return reinterpret_cast<HTRANSFORM>(value);
}

std::shared_ptr<ColorTransform> FindTransform(HTRANSFORM handle) {
    Registry& registry = TheRegistry();
    {
        std::lock_guard lock(registry.mutex);
        auto it = registry.open.find(reinterpret_cast<uintptr_t>(handle));
        if (it != registry.open.end()) return it->second;
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

bool UnregisterTransform(HTRANSFORM handle) {
    std::shared_ptr<ColorTransform> released;  // freed after the lock is dropped
    Registry& registry = TheRegistry();
    {
        std::lock_guard lock(registry.mutex);
        auto it = registry.open.find(reinterpret_cast<uintptr_t>(handle));
        if (it == registry.open.end()) {
            SetLastError(ERROR_INVALID_HANDLE);
            return false;
        }
        released = std::move(it->second);
        registry.open.erase(it);
    }
    return true;
}

}  // namespace tesk::mscms
