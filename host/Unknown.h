// The host's component-framework base: reference-counted interfaces with
// QueryInterface, and TUnknownImpl to implement them.
#pragma once
#include <windows.h>

#include <atomic>

struct IVUnknown {
    virtual HRESULT QueryInterface(const GUID& iid, void** out) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

protected:
    virtual ~IVUnknown() = default;
};

// An error object returned by a host service call; callers release it.
struct IVError : IVUnknown {
    virtual int GetCode() const = 0;
};

constexpr GUID IID_IVUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

// Reference counting and QueryInterface for one interface `I` identified by `iid`.
template <typename I>
class TUnknownImpl : public I {
public:
    explicit TUnknownImpl(const GUID& iid) : m_iid(iid) {}
    HRESULT QueryInterface(const GUID& iid, void** out) override {
        if (!out) return E_POINTER;
        if (iid == m_iid || iid == IID_IVUnknown) {
            *out = static_cast<I*>(this);
            AddRef();
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++m_refs; }
    ULONG Release() override {
        ULONG left = --m_refs;
        if (left == 0) delete this;
        return left;
    }

protected:
    ~TUnknownImpl() override = default;

private:
    GUID m_iid;
    std::atomic<ULONG> m_refs{1};
};
