#include "host/ExtensionModule.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace {

struct ResourceChain {
    std::mutex mutex;
    std::vector<CDynLinkLibrary*> libraries;  // oldest first
};

ResourceChain& Chain() {
    static ResourceChain* chain = new ResourceChain;  // used from module unload, after static destructors
    return *chain;
}

}  // namespace

BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE module) {
    if (state.bInitialized) return TRUE;
    state.hModule = module;
    state.hResource = module;
    state.bInitialized = TRUE;
    return TRUE;
}

void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL) {
    ResourceChain& chain = Chain();
    std::lock_guard lock(chain.mutex);
    for (auto* library : chain.libraries)
        if (library->m_hModule == state.hModule) library->m_hResource = nullptr;
    state.bInitialized = FALSE;
}

CDynLinkLibrary::CDynLinkLibrary(AFX_EXTENSION_MODULE& state) : m_hModule(state.hModule), m_hResource(state.hResource) {
    std::lock_guard lock(Chain().mutex);
    Chain().libraries.push_back(this);
}

CDynLinkLibrary::~CDynLinkLibrary() {
    std::lock_guard lock(Chain().mutex);
    auto& libraries = Chain().libraries;
    libraries.erase(std::remove(libraries.begin(), libraries.end(), this), libraries.end());
}

int AfxResourceModuleCount() {
    std::lock_guard lock(Chain().mutex);
    return static_cast<int>(Chain().libraries.size());
}

HMODULE AfxResourceModule(int index) {
    std::lock_guard lock(Chain().mutex);
    const auto& libraries = Chain().libraries;
    if (index < 0 || static_cast<size_t>(index) >= libraries.size()) return nullptr;
    return libraries[libraries.size() - 1 - static_cast<size_t>(index)]->m_hResource;
}
