// An Xvfb server of the test's own, started on a free display number.
#pragma once
#include <sys/types.h>

#include <functional>
#include <string>
#include <thread>

namespace tesk::test {

class XvfbServer {
public:
    // Starts Xvfb with one screen of `width` x `height`; Running() tells
    // whether it came up (false when Xvfb is not installed).
    XvfbServer(int width, int height);
    ~XvfbServer();
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

    bool Running() const { return pid_ > 0 && !name_.empty(); }
    const std::string& Name() const { return name_; }  // ":N"

private:
    pid_t pid_ = -1;
    std::string name_;
};

bool HasXdotool();
// With xdotool: waits up to 20 s for a visible window titled `title`, focuses
// it, hands its id to `beforeKeys`, then types `keys` into it.
std::thread DriveWindow(const std::string& title, const std::string& keys,
                        std::function<void(unsigned long window)> beforeKeys = {});

// Process-long caches of GTK, fontconfig and their kin, which are not ours to free.
inline constexpr const char kGtkLeakSuppressions[] =
    "leak:libfontconfig.so\nleak:libgtk-3.so\nleak:libgdk-3.so\nleak:libglib-2.0.so\n"
    "leak:libgobject-2.0.so\nleak:libpango\nleak:libcairo.so\nleak:libharfbuzz.so\n";

}  // namespace tesk::test
