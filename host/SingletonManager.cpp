#include "host/SingletonManager.h"

#include <mutex>
#include <vector>

struct CSingletonManager::Impl {
    struct Entry {
        GUID id;
        void* object;
        PFN_SingletonDestroyer destroyer;
    };
    mutable std::recursive_mutex mutex;  // a destroyer may ask the manager for other services
    std::vector<Entry> entries;           // in order of registration
};

CSingletonManager& CSingletonManager::Instance() {
    // Objects registered here are destroyed at process exit, newest first.
    static CSingletonManager manager;
    return manager;
}

CSingletonManager::~CSingletonManager() {
    DestroyAll();
    delete m_pImpl;
}

CSingletonManager::Impl& CSingletonManager::GetImpl() const {
    static std::once_flag once;
    std::call_once(once, [this] { const_cast<CSingletonManager*>(this)->m_pImpl = new Impl; });
    return *m_pImpl;
}

void* CSingletonManager::GetInstanceVoid(const GUID& id) const {
    Impl& impl = GetImpl();
    std::lock_guard lock(impl.mutex);
    for (const auto& entry : impl.entries)
        if (entry.id == id) return entry.object;
    return nullptr;
}

bool CSingletonManager::AddVoid(const GUID& id, void* object, PFN_SingletonDestroyer destroyer) {
    Impl& impl = GetImpl();
    std::lock_guard lock(impl.mutex);
    for (const auto& entry : impl.entries)
        if (entry.id == id) return false;
    impl.entries.push_back({id, object, destroyer});
    return true;
}

bool CSingletonManager::RemoveVoid(const GUID& id) {
    Impl& impl = GetImpl();
    std::lock_guard lock(impl.mutex);
    for (auto it = impl.entries.begin(); it != impl.entries.end(); ++it)
        if (it->id == id) {
            impl.entries.erase(it);
            return true;
        }
    return false;
}

void CSingletonManager::DestroyAll() {
    Impl& impl = GetImpl();
    for (;;) {
        Impl::Entry entry;
        {
            std::lock_guard lock(impl.mutex);
            if (impl.entries.empty()) return;
            entry = impl.entries.back();
            impl.entries.pop_back();
        }
        if (entry.destroyer) entry.destroyer(entry.object);
    }
}
