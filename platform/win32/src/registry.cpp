#include <fcntl.h>
#include <sys/file.h>
#include <tesk/path.h>
#include <unistd.h>
#include <windows.h>

#include <cstring>
#include <cwctype>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

// The registry is a file of lines "key<TAB>value<TAB>type<TAB>hex bytes" in
// the user's configuration folder; a key line without a value marks a key
// that exists but holds nothing. Every call reads the file, and every change
// rewrites it under a lock, so separate processes see each other's values.
namespace {

struct Key {
    std::wstring path;  // "HKEY_CURRENT_USER\\Software\\..." in upper case
};

struct Value {
    DWORD type = REG_NONE;
    std::string bytes;
};

using Hive = std::map<std::wstring, std::map<std::wstring, Value>>;  // key -> value name -> value

std::mutex g_mutex;
std::set<Key*> g_openKeys;

std::string RegistryFile() { return tesk::path::ConfigDirectory() + "/registry"; }

std::wstring Upper(std::wstring text) {
    for (wchar_t& ch : text) ch = static_cast<wchar_t>(std::towupper(ch));
    return text;
}

std::string Hex(const std::string& bytes) {
    static const char* digits = "0123456789abcdef";
    std::string out;
    for (unsigned char b : bytes) {
        out += digits[b >> 4];
        out += digits[b & 15];
    }
    return out;
}

std::string Unhex(const std::string& text) {
    std::string out;
    for (size_t i = 0; i + 1 < text.size(); i += 2) out += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
    return out;
}

Hive Load() {
    Hive hive;
    std::ifstream in(RegistryFile());
    std::string line;
    while (std::getline(in, line)) {
        std::vector<std::string> fields;
        std::stringstream split(line);
        std::string field;
        while (std::getline(split, field, '\t')) fields.push_back(field);
        if (fields.empty()) continue;
        std::wstring key = tesk::path::Wide(fields[0]);
        auto& values = hive[key];
        if (fields.size() >= 3) {
            try {
                values[tesk::path::Wide(fields[1])] =
                    Value{static_cast<DWORD>(std::stoul(fields[2])), fields.size() > 3 ? Unhex(fields[3]) : ""};
            } catch (...) {
                // A damaged line is skipped; the rest of the registry stays usable.
            }
        }
    }
    return hive;
}

bool Save(const Hive& hive) {
    std::string text;
    for (const auto& [key, values] : hive) {
        text += tesk::path::Utf8(key) + "\n";
        for (const auto& [name, value] : values)
            text += tesk::path::Utf8(key) + "\t" + tesk::path::Utf8(name) + "\t" + std::to_string(value.type) + "\t" +
                    Hex(value.bytes) + "\n";
    }
    return tesk::path::WriteFileAtomically(RegistryFile(), text);
}

// Serialises read-modify-write cycles between processes.
class FileLock {
public:
    FileLock() : fd_(open((RegistryFile() + ".lock").c_str(), O_CREAT | O_RDWR, 0644)) {
        if (fd_ >= 0) flock(fd_, LOCK_EX);
    }
    ~FileLock() {
        if (fd_ >= 0) close(fd_);
    }

private:
    int fd_;
};

const wchar_t* RootName(HKEY root) {
    if (root == HKEY_CURRENT_USER) return L"HKEY_CURRENT_USER";
    if (root == HKEY_LOCAL_MACHINE) return L"HKEY_LOCAL_MACHINE";
    if (root == HKEY_CLASSES_ROOT) return L"HKEY_CLASSES_ROOT";
    if (root == HKEY_USERS) return L"HKEY_USERS";
    return nullptr;
}

// The full key path of `sub` under `parent`, or false for a bad parent.
bool FullPath(HKEY parent, LPCWSTR sub, std::wstring& path) {
    if (const wchar_t* root = RootName(parent)) {
        path = root;
    } else {
        auto* key = reinterpret_cast<Key*>(parent);
        if (!g_openKeys.count(key)) return false;
        path = key->path;
    }
    if (sub && *sub) {
        std::wstring tail = sub;
        while (!tail.empty() && tail.back() == L'\\') tail.pop_back();
        if (!tail.empty()) path += L"\\" + tail;
    }
    path = Upper(path);
    return true;
}

bool KeyExists(const Hive& hive, const std::wstring& path) {
    if (hive.count(path)) return true;
    std::wstring prefix = path + L"\\";
    auto next = hive.lower_bound(prefix);
    return next != hive.end() && next->first.compare(0, prefix.size(), prefix) == 0;
}

HKEY NewHandle(const std::wstring& path) {
    auto* key = new Key{path};
    g_openKeys.insert(key);
    return reinterpret_cast<HKEY>(key);
}

}  // namespace

TESK_WIN32_API LSTATUS WINAPI RegOpenKeyExW(HKEY parent, LPCWSTR sub, DWORD, REGSAM, PHKEY result) {
    if (!result) return ERROR_INVALID_PARAMETER;
    std::lock_guard lock(g_mutex);
    std::wstring path;
    if (!FullPath(parent, sub, path)) return ERROR_INVALID_HANDLE;
    if (!KeyExists(Load(), path)) return ERROR_FILE_NOT_FOUND;
    *result = NewHandle(path);
    return ERROR_SUCCESS;
}

TESK_WIN32_API LSTATUS WINAPI RegOpenKeyW(HKEY parent, LPCWSTR sub, PHKEY result) {
    return RegOpenKeyExW(parent, sub, 0, KEY_ALL_ACCESS, result);
}

TESK_WIN32_API LSTATUS WINAPI RegCreateKeyExW(HKEY parent, LPCWSTR sub, DWORD, LPWSTR, DWORD, REGSAM,
                                              LPSECURITY_ATTRIBUTES, PHKEY result, LPDWORD disposition) {
    if (!result) return ERROR_INVALID_PARAMETER;
    std::lock_guard lock(g_mutex);
    std::wstring path;
    if (!FullPath(parent, sub, path)) return ERROR_INVALID_HANDLE;
    FileLock fileLock;
    Hive hive = Load();
    bool existed = KeyExists(hive, path);
    if (!existed) {
        hive[path];
        if (!Save(hive)) return ERROR_WRITE_FAULT;
    }
    if (disposition) *disposition = existed ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
    *result = NewHandle(path);
    return ERROR_SUCCESS;
}

TESK_WIN32_API LSTATUS WINAPI RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                               LPDWORD size) {
    if (reserved || (data && !size)) return ERROR_INVALID_PARAMETER;
    std::lock_guard lock(g_mutex);
    std::wstring path;
    if (!FullPath(key, nullptr, path)) return ERROR_INVALID_HANDLE;
    Hive hive = Load();
    auto values = hive.find(path);
    if (values == hive.end()) return ERROR_FILE_NOT_FOUND;
    auto value = values->second.find(Upper(name ? name : L""));
    if (value == values->second.end()) return ERROR_FILE_NOT_FOUND;
    if (type) *type = value->second.type;
    DWORD needed = static_cast<DWORD>(value->second.bytes.size());
    if (!size) return ERROR_SUCCESS;
    if (data) {
        if (*size < needed) {
            *size = needed;
            return ERROR_MORE_DATA;
        }
        std::memcpy(data, value->second.bytes.data(), needed);
    }
    *size = needed;
    return ERROR_SUCCESS;
}

TESK_WIN32_API LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD, DWORD type, const BYTE* data,
                                             DWORD size) {
    if (size && !data) return ERROR_INVALID_PARAMETER;
    std::lock_guard lock(g_mutex);
    std::wstring path;
    if (!FullPath(key, nullptr, path)) return ERROR_INVALID_HANDLE;
    FileLock fileLock;
    Hive hive = Load();
    hive[path][Upper(name ? name : L"")] = Value{type, std::string(reinterpret_cast<const char*>(data), size)};
    return Save(hive) ? ERROR_SUCCESS : ERROR_WRITE_FAULT;
}

TESK_WIN32_API LSTATUS WINAPI RegDeleteValueW(HKEY key, LPCWSTR name) {
    std::lock_guard lock(g_mutex);
    std::wstring path;
    if (!FullPath(key, nullptr, path)) return ERROR_INVALID_HANDLE;
    FileLock fileLock;
    Hive hive = Load();
    auto values = hive.find(path);
    if (values == hive.end() || !values->second.erase(Upper(name ? name : L""))) return ERROR_FILE_NOT_FOUND;
    return Save(hive) ? ERROR_SUCCESS : ERROR_WRITE_FAULT;
}

TESK_WIN32_API LSTATUS WINAPI RegCloseKey(HKEY key) {
    if (RootName(key)) return ERROR_SUCCESS;
    std::lock_guard lock(g_mutex);
    auto* handle = reinterpret_cast<Key*>(key);
    if (!g_openKeys.erase(handle)) return ERROR_INVALID_HANDLE;
    delete handle;
    return ERROR_SUCCESS;
}
