// The component framework's implementation of an interface for a class T:
// reference counting, QueryInterface through T's interface table, and the
// framework's own queries (class name, interface table, object pointer).
#pragma once
#include <windows.h>

#include <atomic>
#include <cstddef>

#include "host/Unknown.h"

namespace vcom {

// One row of an interface table; the table ends with an all-zero row. The
// offset is where the interface lies from the object's start, -1 for the
// object's primary interface.
struct SInterfaceEntry {
    const GUID* piid;
    std::ptrdiff_t offset;
};

inline constexpr std::ptrdiff_t kPrimaryInterface = -1;

// What the framework's extensions ask of every object.
struct IVObjectInfo {
    virtual const char* GetObjectClassName() const = 0;
    virtual const SInterfaceEntry* GetInterfaceTable() const = 0;
    // The object itself, whichever of its interfaces was at hand.
    virtual void* GetThis() = 0;

protected:
    ~IVObjectInfo() = default;
};

// T provides `static const SInterfaceEntry* InterfaceTable()`.
template <typename T, typename I>
class TUnknownImpl : public I, public IVObjectInfo {
public:
    HRESULT QueryInterface(const GUID& iid, void** out) override {
        if (!out) return E_POINTER;
        if (iid == IID_IVUnknown) {
            *out = static_cast<IVUnknown*>(static_cast<I*>(this));
            AddRef();
            return S_OK;
        }
        for (const SInterfaceEntry* entry = GetInterfaceTable(); entry && entry->piid; ++entry) {
            if (*entry->piid != iid) continue;
            *out = entry->offset == kPrimaryInterface ? static_cast<void*>(static_cast<I*>(this))
                                                      : static_cast<BYTE*>(GetThis()) + entry->offset;
            AddRef();
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG AddRef() override { return LocalAddRef(); }
    ULONG Release() override { return LocalRelease(); }

    virtual ULONG LocalAddRef() { return m_nRefs.fetch_add(1) + 1; }
    virtual ULONG LocalRelease() {
        const ULONG left = m_nRefs.fetch_sub(1) - 1;
        if (left == 0) delete this;
        return left;
    }
    virtual ULONG ReferenceCount() const { return m_nRefs.load(); }

    const char* GetObjectClassName() const override { return "<unknown>"; }
    const SInterfaceEntry* GetInterfaceTable() const override { return T::InterfaceTable(); }
    void* GetThis() override { return static_cast<T*>(this); }

protected:
    TUnknownImpl() = default;
    // A copy is another object: it starts with a count of its own.
    TUnknownImpl(const TUnknownImpl&) : I(), IVObjectInfo() {}
    TUnknownImpl& operator=(const TUnknownImpl&) { return *this; }
    ~TUnknownImpl() override = default;

private:
    std::atomic<ULONG> m_nRefs{1};
};

}  // namespace vcom
