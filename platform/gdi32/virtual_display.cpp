// The display of a machine without a display server: one adapter with one
// monitor attached to the desktop, its gamma ramp and profile held in memory.
#include <mutex>

#include "display.h"

namespace tesk::display {
namespace {

class VirtualBackend final : public Backend {
public:
    VirtualBackend() : ramp_(3 * kGammaEntries) {
        for (size_t channel = 0; channel < 3; ++channel)
            for (size_t i = 0; i < kGammaEntries; ++i) ramp_[channel * kGammaEntries + i] = WORD(i * 257);
    }

    std::vector<Adapter> Adapters() override {
        Adapter adapter;
        adapter.name = L"\\\\.\\DISPLAY1";
        adapter.string = L"Tesk Virtual Display Adapter";
        adapter.id = L"VIRTUAL\\DISPLAY";
        adapter.key = L"\\Registry\\Machine\\System\\CurrentControlSet\\Control\\Video\\VIRTUAL\\0000";
        adapter.primary = true;
        adapter.bounds = RECT{0, 0, 1920, 1080};
        Monitor monitor;
        monitor.name = adapter.name + L"\\Monitor0";
        monitor.string = L"Generic PnP Monitor";
        monitor.id = L"MONITOR\\VIRTUAL\\{4d36e96e-e325-11ce-bfc1-08002be10318}\\0000";
        monitor.key = L"\\Registry\\Machine\\System\\CurrentControlSet\\Control\\Class\\"
                      L"{4d36e96e-e325-11ce-bfc1-08002be10318}\\0000";
        adapter.monitors.push_back(monitor);
        return {adapter};
    }

    bool GetGamma(size_t adapter, GammaRamp& ramp) override {
        if (adapter != 0) return false;
        std::lock_guard lock(mutex_);
        ramp = ramp_;
        return true;
    }

    bool SetGamma(size_t adapter, const GammaRamp& ramp) override {
        if (adapter != 0 || ramp.size() != ramp_.size()) return false;
        std::lock_guard lock(mutex_);
        ramp_ = ramp;
        return true;
    }

    std::optional<std::string> Profile(size_t adapter) override {
        std::lock_guard lock(mutex_);
        if (adapter != 0) return std::nullopt;
        return profile_;
    }

    bool SetProfile(size_t adapter, const std::string& nativePath) override {
        if (adapter != 0) return false;
        std::lock_guard lock(mutex_);
        profile_ = nativePath;
        return true;
    }

    const char* Kind() const override { return "virtual"; }

private:
    std::mutex mutex_;
    GammaRamp ramp_;
    std::optional<std::string> profile_;
};

}  // namespace

std::unique_ptr<Backend> MakeVirtualBackend() { return std::make_unique<VirtualBackend>(); }

}  // namespace tesk::display
