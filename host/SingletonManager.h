// The host's singleton manager: one object per GUID, each with the function
// that destroys it at shutdown (in reverse order of registration).
#pragma once
#include <windows.h>

#include "host/HostExport.h"

typedef void (*PFN_SingletonDestroyer)(void* object);

class TESK_HOST_API CSingletonManager {
public:
    static CSingletonManager& Instance();

    void* GetInstanceVoid(const GUID& id) const;
    // False when an object is already registered under `id`.
    bool AddVoid(const GUID& id, void* object, PFN_SingletonDestroyer destroyer);
    // Removes the entry without destroying the object.
    bool RemoveVoid(const GUID& id);
    // Destroys every registered object, newest first.
    void DestroyAll();

private:
    CSingletonManager() = default;
    ~CSingletonManager();
    struct Impl;
    Impl* m_pImpl = nullptr;
    Impl& GetImpl() const;
};
