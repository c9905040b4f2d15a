// A display server seen without touching it: what is read comes from the
// server until this process sets its own ramp or profile, which then stays
// in this process. Nothing is drawn on the screen.
#include <map>
#include <mutex>

#include "display.h"

namespace tesk::display {
namespace {

class ReadOnlyBackend final : public Backend {
public:
    explicit ReadOnlyBackend(std::unique_ptr<Backend> server) : server_(std::move(server)) {}

    std::vector<Adapter> Adapters() override { return server_->Adapters(); }

    bool GetGamma(size_t adapter, GammaRamp& ramp) override {
        {
            std::lock_guard lock(mutex_);
            if (auto kept = ramps_.find(adapter); kept != ramps_.end()) {
                ramp = kept->second;
                return true;
            }
        }
        return server_->GetGamma(adapter, ramp);
    }

    bool SetGamma(size_t adapter, const GammaRamp& ramp) override {
        // Only where the server has a ramp to replace.
        GammaRamp current;
        if (ramp.size() != 3 * kGammaEntries || !GetGamma(adapter, current)) return false;
        std::lock_guard lock(mutex_);
        ramps_[adapter] = ramp;
        return true;
    }

    std::optional<std::string> Profile(size_t adapter) override {
        {
            std::lock_guard lock(mutex_);
            if (auto kept = profiles_.find(adapter); kept != profiles_.end()) return kept->second;
        }
        return server_->Profile(adapter);
    }

    bool SetProfile(size_t adapter, const std::string& nativePath) override {
        if (adapter >= server_->Adapters().size()) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return false;
        }
        std::lock_guard lock(mutex_);
        profiles_[adapter] = nativePath;
        return true;
    }

    std::optional<RECT> WindowRect(uintptr_t window) override { return server_->WindowRect(window); }

    const char* Kind() const override { return "read-only"; }

private:
    std::unique_ptr<Backend> server_;
    std::mutex mutex_;
    std::map<size_t, GammaRamp> ramps_;
    std::map<size_t, std::string> profiles_;
};

}  // namespace

std::unique_ptr<Backend> MakeReadOnlyBackend(std::unique_ptr<Backend> server) {
    return std::make_unique<ReadOnlyBackend>(std::move(server));
}

}  // namespace tesk::display
