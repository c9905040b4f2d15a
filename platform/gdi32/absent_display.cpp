// No display at all, for a process that must use the display server or
// nothing: there are no adapters, so no display device context can be made.
#include "display.h"

namespace tesk::display {
namespace {

class AbsentBackend final : public Backend {
public:
    std::vector<Adapter> Adapters() override { return {}; }
    bool GetGamma(size_t, GammaRamp&) override { return false; }
    bool SetGamma(size_t, const GammaRamp&) override { return false; }
    std::optional<std::string> Profile(size_t) override { return std::nullopt; }
    bool SetProfile(size_t, const std::string&) override {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    const char* Kind() const override { return "none"; }
};

}  // namespace

std::unique_ptr<Backend> MakeAbsentBackend() { return std::make_unique<AbsentBackend>(); }

}  // namespace tesk::display
