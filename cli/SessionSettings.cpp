#include "cli/SessionSettings.h"

#include <atomic>
#include <map>
#include <optional>
#include <vector>
#include <type_traits>
#include <string>
#include <utility>
#include <variant>

#include "cli/Errors.h"
#include "host/SettingsStore.h"
#include "host/SingletonManager.h"

namespace teskcolor {

namespace {

using Value = std::variant<int, std::wstring, double>;
using Key = std::pair<int, int>;

// Overrides of this run, shared by every group object.
struct SOverlay {
    bool active = false;
    std::map<Key, Value> values;
};

SOverlay& Overlay() {
    static SOverlay overlay;
    return overlay;
}

// The writes of a CSettingsChange and what they are compared with: the value
// the module restated, else the value first read from the file (nothing: it
// was not there).
struct SChange {
    bool active = false;
    bool baseline = false;
    std::map<Key, Value> writes;
    std::map<Key, Value> restated;
    std::map<Key, std::optional<Value>> firstRead;
};

SChange& Change() {
    static SChange change;
    return change;
}

template <typename T>
bool ReadOverride(int group, int id, T& out) {
    for (const auto* values : {&Overlay().values, &Change().writes}) {
        auto found = values->find({group, id});
        if (found == values->end()) continue;
        if (const T* value = std::get_if<T>(&found->second)) {
            out = *value;
            return true;
        }
    }
    return false;
}

template <typename T>
void NoteRead(int group, int id, bool found, const T& value) {
    auto& firstRead = Change().firstRead;
    if (!firstRead.count({group, id})) firstRead[{group, id}] = found ? std::optional<Value>(value) : std::nullopt;
}

// Held writes: true when the write is taken care of here.
bool HoldWrite(int group, int id, Value value) {
    if (Overlay().active) {
        Overlay().values[{group, id}] = std::move(value);
        return true;
    }
    SChange& change = Change();
    if (!change.active) return false;
    if (change.baseline)
        change.restated[{group, id}] = std::move(value);
    else
        change.writes[{group, id}] = std::move(value);
    return true;
}

class CGroup;

// One writer interface of a group; it lives as long as the group it came from.
template <typename Interface, typename T>
class CWriter : public TUnknownImpl<Interface> {
public:
    CWriter(const GUID& iid, CGroup* group);
    IVError* Write(int id, T value, int flags) override;

private:
    ~CWriter() override;
    CGroup* m_pGroup;
};

class CGroup : public IVSettingsGroup {
public:
    CGroup(int group, IVSettingsGroup* inner) : m_nGroup(group), m_pInner(inner) {}

    HRESULT QueryInterface(const GUID& iid, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (iid == IID_IVSettingsGroup || iid == IID_IVUnknown) {
            *out = static_cast<IVSettingsGroup*>(this);
            AddRef();
        } else if (iid == IID_IVSettingsIntWriter) {
            *out = static_cast<IVSettingsIntWriter*>(new CWriter<IVSettingsIntWriter, int>(iid, this));
        } else if (iid == IID_IVSettingsTextWriter) {
            *out = static_cast<IVSettingsTextWriter*>(new CWriter<IVSettingsTextWriter, const wchar_t*>(iid, this));
        }
        return *out ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++m_nRefs; }
    ULONG Release() override {
        ULONG left = --m_nRefs;
        if (left == 0) delete this;
        return left;
    }

    bool ReadInt(int id, int& value) override {
        if (ReadOverride(m_nGroup, id, value)) return true;
        const bool found = m_pInner && m_pInner->ReadInt(id, value);
        NoteRead(m_nGroup, id, found, value);
        return found;
    }
    bool ReadText(int id, CString& value) override {
        std::wstring text;
        if (ReadOverride(m_nGroup, id, text)) {
            value = text.c_str();
            return true;
        }
        const bool found = m_pInner && m_pInner->ReadText(id, value);
        NoteRead(m_nGroup, id, found, std::wstring(found ? value.Str() : std::wstring()));
        return found;
    }
    bool ReadDouble(int id, double& value) override {
        if (ReadOverride(m_nGroup, id, value)) return true;
        const bool found = m_pInner && m_pInner->ReadDouble(id, value);
        NoteRead(m_nGroup, id, found, value);
        return found;
    }
    IVError* WriteDouble(int id, double value, int flags) override {
        if (HoldWrite(m_nGroup, id, value)) return nullptr;
        return m_pInner ? m_pInner->WriteDouble(id, value, flags) : nullptr;
    }

    IVError* WriteInt(int id, int value, int flags) {
        if (HoldWrite(m_nGroup, id, value)) return nullptr;
        return ForwardWrite<IVSettingsIntWriter>(IID_IVSettingsIntWriter, id, value, flags);
    }
    IVError* WriteText(int id, const wchar_t* value, int flags) {
        if (HoldWrite(m_nGroup, id, std::wstring(value ? value : L""))) return nullptr;
        return ForwardWrite<IVSettingsTextWriter>(IID_IVSettingsTextWriter, id, value, flags);
    }

private:
    ~CGroup() {
        if (m_pInner) m_pInner->Release();
    }

    template <typename Interface, typename T>
    IVError* ForwardWrite(const GUID& iid, int id, T value, int flags) {
        Interface* writer = nullptr;
        if (!m_pInner || m_pInner->QueryInterface(iid, reinterpret_cast<void**>(&writer)) != S_OK || !writer)
            return nullptr;
        IVError* error = writer->Write(id, value, flags);
        writer->Release();
        return error;
    }

    int m_nGroup;
    IVSettingsGroup* m_pInner;
    std::atomic<ULONG> m_nRefs{1};
};

template <typename Interface, typename T>
CWriter<Interface, T>::CWriter(const GUID& iid, CGroup* group) : TUnknownImpl<Interface>(iid), m_pGroup(group) {
    m_pGroup->AddRef();
}

template <typename Interface, typename T>
CWriter<Interface, T>::~CWriter() {
    m_pGroup->Release();
}

template <typename Interface, typename T>
IVError* CWriter<Interface, T>::Write(int id, T value, int flags) {
    if constexpr (std::is_same_v<T, int>)
        return m_pGroup->WriteInt(id, value, flags);
    else
        return m_pGroup->WriteText(id, value, flags);
}

class CStore : public TUnknownImpl<IVSettingsStore> {
public:
    CStore() : TUnknownImpl<IVSettingsStore>(IID_IVSettingsStore), m_pInner(CreateFileSettingsStore()) {}

    IVError* Prepare() override { return m_pInner->Prepare(); }
    HRESULT QueryInterface(const GUID& iid, void** out) override {
        if (iid == IID_IVSettingsMerge) return m_pInner->QueryInterface(iid, out);
        return TUnknownImpl::QueryInterface(iid, out);
    }
    IVError* OpenGroup(int group, IVSettingsGroup** out) override {
        if (!out) return nullptr;
        IVSettingsGroup* inner = nullptr;
        IVError* error = m_pInner->OpenGroup(group, &inner);
        *out = new CGroup(group, inner);
        return error;
    }

private:
    ~CStore() override { m_pInner->Release(); }
    IVSettingsStore* m_pInner;
};

void ReleaseStore(void* object) { static_cast<IVSettingsStore*>(object)->Release(); }

}  // namespace

void RegisterSessionSettingsStore() {
    CSingletonManager& singletons = CSingletonManager::Instance();
    if (singletons.GetInstanceVoid(kSettingsStoreGUID)) return;
    auto* store = new CStore();
    // The manager finds the store as an IVSettingsStore pointer.
    if (!singletons.AddVoid(kSettingsStoreGUID, static_cast<IVSettingsStore*>(store), ReleaseStore)) store->Release();
}

void KeepWritesForThisRun() { Overlay().active = true; }

namespace {
// What was read stays: it is this process's view of the file.
void EndChange(SChange& change) {
    change.active = change.baseline = false;
    change.writes.clear();
    change.restated.clear();
}
}  // namespace

CSettingsChange::CSettingsChange() {
    EndChange(Change());
    Change().active = true;
}

CSettingsChange::~CSettingsChange() { EndChange(Change()); }

void CSettingsChange::SetRecordingBaseline(bool on) { Change().baseline = on; }

void CSettingsChange::Commit() {
    SChange& change = Change();
    std::vector<SSettingsEntry> changed;
    for (const auto& [key, value] : change.writes) {
        std::optional<Value> before;
        if (auto restated = change.restated.find(key); restated != change.restated.end())
            before = restated->second;
        else if (auto read = change.firstRead.find(key); read != change.firstRead.end())
            before = read->second;
        if (before != value) changed.push_back({key.first, key.second, value});
    }
    EndChange(change);
    if (changed.empty()) return;
    RegisterSessionSettingsStore();
    auto* store = static_cast<IVSettingsStore*>(CSingletonManager::Instance().GetInstanceVoid(kSettingsStoreGUID));
    IVSettingsMerge* merge = nullptr;
    if (!store || store->QueryInterface(IID_IVSettingsMerge, reinterpret_cast<void**>(&merge)) != S_OK || !merge)
        throw CCliError(EExit::WriteFailed, "the settings cannot be written");
    IVError* error = merge->WriteTogether(changed.data(), changed.size());
    merge->Release();
    if (error) {
        error->Release();
        throw CCliError(EExit::WriteFailed, "cannot write the settings file " + SettingsFilePath());
    }
}

void SetForThisRun(int group, int id, int value) {
    KeepWritesForThisRun();
    Overlay().values[{group, id}] = value;
}

std::optional<int> StoredInt(int group, int id) {
    RegisterSessionSettingsStore();
    auto* store = static_cast<IVSettingsStore*>(CSingletonManager::Instance().GetInstanceVoid(kSettingsStoreGUID));
    if (!store) return std::nullopt;
    if (IVError* error = store->Prepare()) error->Release();
    IVSettingsGroup* opened = nullptr;
    if (IVError* error = store->OpenGroup(group, &opened)) error->Release();
    if (!opened) return std::nullopt;
    int value = 0;
    const bool read = opened->ReadInt(id, value);
    opened->Release();
    return read ? std::optional<int>(value) : std::nullopt;
}

}  // namespace teskcolor
