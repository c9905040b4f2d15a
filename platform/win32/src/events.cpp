#include <windows.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <string>

// Named and unnamed events of the process. A name stays registered while any
// handle to its event is open, as on Windows.
namespace {

struct Event {
    bool manualReset = true;
    bool signalled = false;
    int handles = 0;
    std::wstring name;
};

struct EventTable {
    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::wstring, Event*> byName;
    std::set<Event*> live;
};

EventTable& Table() {
    static EventTable* table = new EventTable;  // outlives every static destructor
    return *table;
}

// The event behind `handle` while the table is locked; null, with
// ERROR_INVALID_HANDLE, for a closed or foreign handle.
Event* LiveEvent(EventTable& table, HANDLE handle) {
    auto* event = static_cast<Event*>(handle);
    if (table.live.count(event)) return event;
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

BOOL SetSignal(HANDLE handle, bool signalled) {
    EventTable& table = Table();
    std::lock_guard lock(table.mutex);
    Event* event = LiveEvent(table, handle);
    if (!event) return FALSE;
    event->signalled = signalled;
    if (signalled) table.changed.notify_all();
    return TRUE;
}

}  // namespace

TESK_WIN32_API HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initialState, LPCWSTR name) {
    EventTable& table = Table();
    std::lock_guard lock(table.mutex);
    if (name && *name) {
        auto found = table.byName.find(name);
        if (found != table.byName.end()) {
            ++found->second->handles;
            SetLastError(ERROR_ALREADY_EXISTS);
            return found->second;
        }
    }
    auto* event = new Event;
    event->manualReset = manualReset != FALSE;
    event->signalled = initialState != FALSE;
    event->handles = 1;
    if (name && *name) {
        event->name = name;
        table.byName[event->name] = event;
    }
    table.live.insert(event);
    SetLastError(ERROR_SUCCESS);
    return event;
}

TESK_WIN32_API HANDLE WINAPI OpenEventW(DWORD, BOOL, LPCWSTR name) {
    if (!name || !*name) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    EventTable& table = Table();
    std::lock_guard lock(table.mutex);
    auto found = table.byName.find(name);
    if (found == table.byName.end()) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    ++found->second->handles;
    return found->second;
}

TESK_WIN32_API BOOL WINAPI SetEvent(HANDLE handle) { return SetSignal(handle, true); }

TESK_WIN32_API BOOL WINAPI ResetEvent(HANDLE handle) { return SetSignal(handle, false); }

TESK_WIN32_API DWORD WINAPI WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    EventTable& table = Table();
    std::unique_lock lock(table.mutex);
    Event* event = LiveEvent(table, handle);
    if (!event) return WAIT_FAILED;
    auto ready = [&] { return !table.live.count(event) || event->signalled; };
    if (milliseconds == INFINITE)
        table.changed.wait(lock, ready);
    else
        table.changed.wait_for(lock, std::chrono::milliseconds(milliseconds), ready);
    if (!table.live.count(event) || !event->signalled) return WAIT_TIMEOUT;
    if (!event->manualReset) event->signalled = false;
    return WAIT_OBJECT_0;
}

TESK_WIN32_API BOOL WINAPI CloseHandle(HANDLE handle) {
    EventTable& table = Table();
    std::lock_guard lock(table.mutex);
    Event* event = LiveEvent(table, handle);
    if (!event) return FALSE;
    if (--event->handles == 0) {
        if (!event->name.empty()) table.byName.erase(event->name);
        table.live.erase(event);
        delete event;
        table.changed.notify_all();
    }
    return TRUE;
}
