#include "host/SettingsStore.h"

#include <tesk/file_lock.h>
#include <tesk/path.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/SingletonManager.h"

// The file holds one JSON object: key -> {"int": n} | {"text": s} | {"double": d}.
// The colour settings have named keys ("working-space"); other entries, and
// files written before the names, use "group/id", which is still read.
// A write takes an exclusive lock, reads what is on disk, changes its entries
// and replaces the file by rename, so concurrent writers lose nothing and a
// crash leaves either the old or the new file.
namespace {

using Json = nlohmann::json;

std::string NumberedKey(int group, int id) { return std::to_string(group) + "/" + std::to_string(id); }

std::string EntryKey(int group, int id) {
    struct SNamed {
        int id;
        const char* name;
    };
    static constexpr int kColourGroup = 169;
    static constexpr SNamed kColourKeys[] = {
        {170, "mode"},          {171, "proof"},        {172, "monitor-profile"}, {173, "printer-profile"},
        {174, "proof-profile"}, {175, "working-space"}, {176, "cmyk-profile"},   {177, "intent"},
        {178, "proof-intent"},  {179, "gamma-blue"},   {180, "gamma-green"},     {181, "gamma-red"},
        {182, "embedded"}};
    if (group == kColourGroup)
        for (const SNamed& key : kColourKeys)
            if (key.id == id) return key.name;
    return NumberedKey(group, id);
}

Json ReadFile(const std::string& path) {
    std::ifstream in(tesk::path::FileSystemPath(path));
    if (!in) return Json::object();
    std::stringstream text;
    text << in.rdbuf();
    Json parsed = Json::parse(text.str(), nullptr, false);
    return parsed.is_object() ? parsed : Json::object();
}

class CStoreError : public TUnknownImpl<IVError> {
public:
    explicit CStoreError(int code) : TUnknownImpl<IVError>(IID_IVUnknown), m_code(code) {}
    int GetCode() const override { return m_code; }

private:
    int m_code;
};

// The values as last read from or written to the file, shared by every group object.
class SettingsFile {
public:
    explicit SettingsFile(std::string path) : m_path(std::move(path)) {}

    void Reload() {
        std::lock_guard lock(m_mutex);
        m_values = ReadFile(m_path);
        m_loaded = true;
    }

    bool Get(int group, int id, const char* kind, Json& value) {
        std::lock_guard lock(m_mutex);
        if (!m_loaded) {
            m_values = ReadFile(m_path);
            m_loaded = true;
        }
        auto entry = m_values.find(EntryKey(group, id));
        if (entry == m_values.end()) entry = m_values.find(NumberedKey(group, id));
        if (entry == m_values.end() || !entry->is_object() || !entry->contains(kind)) return false;
        value = (*entry)[kind];
        return true;
    }

    bool Set(int group, int id, const char* kind, const Json& value) {
        return SetAll({{{group, id}, Json{{kind, value}}}});
    }

    // Entries (group, id) -> {kind: value}, written in one replacement of the file.
    bool SetAll(const std::map<std::pair<int, int>, Json>& entries) {
        std::lock_guard lock(m_mutex);
        tesk::ExclusiveFileLock fileLock(m_path);
        RemoveAbandonedTemporaries();
        Json merged = ReadFile(m_path);
        for (const auto& [key, entry] : entries) {
            merged.erase(NumberedKey(key.first, key.second));
            merged[EntryKey(key.first, key.second)] = entry;
        }
        m_values = merged;
        m_loaded = true;
        return tesk::path::WriteFileAtomically(m_path, merged.dump(1) + "\n");
    }

    bool Erase(int group, int id) {
        std::lock_guard lock(m_mutex);
        tesk::ExclusiveFileLock fileLock(m_path);
        RemoveAbandonedTemporaries();
        Json merged = ReadFile(m_path);
        bool existed = merged.erase(NumberedKey(group, id)) > 0;
        existed = merged.erase(EntryKey(group, id)) > 0 || existed;
        m_values = merged;
        m_loaded = true;
        return existed && tesk::path::WriteFileAtomically(m_path, merged.dump(1) + "\n");
    }

    const std::string& Path() const { return m_path; }

private:
    // Every writer holds the lock while its temporary exists, so under the
    // lock a temporary of the file belongs to a writer that was killed.
    void RemoveAbandonedTemporaries() const {
        const std::filesystem::path file = tesk::path::FileSystemPath(m_path);
        const std::string prefix = tesk::path::Utf8Path(file.filename()) + ".";
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(file.parent_path(), error)) {
            const std::string name = tesk::path::Utf8Path(entry.path().filename());
            // The atomic writer's temporaries: the name, a dot and six random characters.
            if (name.size() == prefix.size() + 6 && name.compare(0, prefix.size(), prefix) == 0 &&
                name.find('.', prefix.size()) == std::string::npos)
                std::filesystem::remove(entry.path(), error);
        }
    }

    std::mutex m_mutex;
    std::string m_path;
    Json m_values = Json::object();
    bool m_loaded = false;
};

class CIntWriter : public TUnknownImpl<IVSettingsIntWriter> {
public:
    CIntWriter(SettingsFile& file, int group) : TUnknownImpl(IID_IVSettingsIntWriter), m_file(file), m_group(group) {}
    IVError* Write(int id, int value, int) override {
        return m_file.Set(m_group, id, "int", value) ? nullptr : new CStoreError(ERROR_WRITE_FAULT);
    }

private:
    SettingsFile& m_file;
    int m_group;
};

class CTextWriter : public TUnknownImpl<IVSettingsTextWriter> {
public:
    CTextWriter(SettingsFile& file, int group) : TUnknownImpl(IID_IVSettingsTextWriter), m_file(file), m_group(group) {}
    IVError* Write(int id, const wchar_t* value, int) override {
        if (!value) return new CStoreError(ERROR_INVALID_PARAMETER);
        return m_file.Set(m_group, id, "text", tesk::path::Utf8(value)) ? nullptr : new CStoreError(ERROR_WRITE_FAULT);
    }

private:
    SettingsFile& m_file;
    int m_group;
};

class CSettingsGroup : public TUnknownImpl<IVSettingsGroup> {
public:
    CSettingsGroup(SettingsFile& file, int group) : TUnknownImpl(IID_IVSettingsGroup), m_file(file), m_group(group) {}

    HRESULT QueryInterface(const GUID& iid, void** out) override {
        if (!out) return E_POINTER;
        if (iid == IID_IVSettingsIntWriter) {
            *out = static_cast<IVSettingsIntWriter*>(new CIntWriter(m_file, m_group));
            return S_OK;
        }
        if (iid == IID_IVSettingsTextWriter) {
            *out = static_cast<IVSettingsTextWriter*>(new CTextWriter(m_file, m_group));
            return S_OK;
        }
        return TUnknownImpl::QueryInterface(iid, out);
    }

    bool ReadInt(int id, int& value) override {
        Json json;
        if (!m_file.Get(m_group, id, "int", json) || !json.is_number_integer()) return false;
        value = json.get<int>();
        return true;
    }
    bool ReadText(int id, CString& value) override {
        Json json;
        if (!m_file.Get(m_group, id, "text", json) || !json.is_string()) return false;
        value = CString(json.get<std::string>().c_str());
        return true;
    }
    bool ReadDouble(int id, double& value) override {
        Json json;
        if (!m_file.Get(m_group, id, "double", json) || !json.is_number()) return false;
        value = json.get<double>();
        return true;
    }
    IVError* WriteDouble(int id, double value, int) override {
        return m_file.Set(m_group, id, "double", value) ? nullptr : new CStoreError(ERROR_WRITE_FAULT);
    }

private:
    SettingsFile& m_file;
    int m_group;
};

class CMerge : public TUnknownImpl<IVSettingsMerge> {
public:
    // Holds a reference to `owner`, the store whose file it writes.
    CMerge(IVSettingsStore* owner, SettingsFile& file) : TUnknownImpl(IID_IVSettingsMerge), m_owner(owner), m_file(file) {
        m_owner->AddRef();
    }
    IVError* WriteTogether(const SSettingsEntry* entries, size_t count) override {
        if (!entries && count) return new CStoreError(ERROR_INVALID_PARAMETER);
        std::map<std::pair<int, int>, Json> all;
        for (size_t i = 0; i < count; ++i) {
            const SSettingsEntry& entry = entries[i];
            Json value;
            if (const int* number = std::get_if<int>(&entry.value))
                value = Json{{"int", *number}};
            else if (const double* real = std::get_if<double>(&entry.value))
                value = Json{{"double", *real}};
            else
                value = Json{{"text", tesk::path::Utf8(std::get<std::wstring>(entry.value))}};
            all[{entry.group, entry.id}] = value;
        }
        return m_file.SetAll(all) ? nullptr : new CStoreError(ERROR_WRITE_FAULT);
    }

private:
    ~CMerge() override { m_owner->Release(); }
    IVSettingsStore* m_owner;
    SettingsFile& m_file;
};

class CFileSettingsStore : public TUnknownImpl<IVSettingsStore> {
public:
    CFileSettingsStore() : TUnknownImpl(IID_IVSettingsStore), m_file(SettingsFilePath()) {}
    HRESULT QueryInterface(const GUID& iid, void** out) override {
        if (out && iid == IID_IVSettingsMerge) {
            *out = static_cast<IVSettingsMerge*>(new CMerge(this, m_file));
            return S_OK;
        }
        return TUnknownImpl::QueryInterface(iid, out);
    }
    IVError* Prepare() override {
        m_file.Reload();
        return nullptr;
    }
    IVError* OpenGroup(int group, IVSettingsGroup** out) override {
        if (!out) return new CStoreError(ERROR_INVALID_PARAMETER);
        *out = new CSettingsGroup(m_file, group);
        return nullptr;
    }

private:
    SettingsFile m_file;
};

void ReleaseStore(void* store) { static_cast<IVSettingsStore*>(store)->Release(); }

}  // namespace

std::string SettingsFilePath() { return tesk::path::ConfigDirectory() + "/settings.json"; }

IVSettingsStore* CreateFileSettingsStore() { return new CFileSettingsStore; }

IVSettingsStore* RegisterSettingsStoreService() {
    CSingletonManager& manager = CSingletonManager::Instance();
    if (void* existing = manager.GetInstanceVoid(kSettingsStoreGUID)) return static_cast<IVSettingsStore*>(existing);
    IVSettingsStore* store = CreateFileSettingsStore();
    if (!manager.AddVoid(kSettingsStoreGUID, store, ReleaseStore)) {
        store->Release();
        return static_cast<IVSettingsStore*>(manager.GetInstanceVoid(kSettingsStoreGUID));
    }
    return store;
}
