#include "cli/imageio/TemporaryFiles.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <mutex>

namespace teskcolor {

namespace {

// Fixed slots, so that the handler neither allocates nor takes a lock: a
// slot's path is complete before it is marked in use, and unmarked before it
// is reused.
constexpr size_t kSlots = 64;
constexpr size_t kPathBytes = 4096;

struct SSlot {
    std::atomic<bool> used{false};
    char path[kPathBytes];
};

SSlot g_slots[kSlots];
std::mutex g_slotsMutex;

extern "C" void RemoveTemporariesAndStop(int signal) {
    for (SSlot& slot : g_slots)
        if (slot.used.load()) unlink(slot.path);
    struct sigaction fallback {};
    fallback.sa_handler = SIG_DFL;
    sigemptyset(&fallback.sa_mask);
    sigaction(signal, &fallback, nullptr);
    raise(signal);
}

void InstallHandlers() {
    static std::once_flag installed;
    std::call_once(installed, [] {
        for (int signal : {SIGINT, SIGTERM}) {
            struct sigaction previous {};
            sigaction(signal, nullptr, &previous);
            // A shell that started us with the signal ignored meant it.
            if (previous.sa_handler == SIG_IGN) continue;
            struct sigaction action {};
            action.sa_handler = RemoveTemporariesAndStop;
            sigemptyset(&action.sa_mask);
            sigaddset(&action.sa_mask, SIGINT);
            sigaddset(&action.sa_mask, SIGTERM);
            sigaction(signal, &action, nullptr);
        }
    });
}

}  // namespace

void RegisterTemporary(const std::string& path) {
    if (path.size() >= kPathBytes) return;
    InstallHandlers();
    std::lock_guard lock(g_slotsMutex);
    for (SSlot& slot : g_slots) {
        if (slot.used.load()) continue;
        std::memcpy(slot.path, path.c_str(), path.size() + 1);
        slot.used.store(true);
        return;
    }
}

void ForgetTemporary(const std::string& path) {
    std::lock_guard lock(g_slotsMutex);
    for (SSlot& slot : g_slots)
        if (slot.used.load() && path == slot.path) {
            slot.used.store(false);
            return;
        }
}

CSignalsHeld::CSignalsHeld() {
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, SIGINT);
    sigaddset(&held, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &held, &m_saved);
}

CSignalsHeld::~CSignalsHeld() { pthread_sigmask(SIG_SETMASK, &m_saved, nullptr); }

}  // namespace teskcolor
