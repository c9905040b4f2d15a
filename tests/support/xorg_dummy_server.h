// An Xorg server of the test's own with the dummy video driver, on a free
// display number. Unlike Xvfb, its CRTC keeps the gamma ramp it is given and
// returns it, so it is the oracle for gamma ramps.
#pragma once
#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tesk::test {

class XorgDummyServer {
public:
    // One output showing `width` x `height` at depth 24.
    XorgDummyServer(int width, int height);
    ~XorgDummyServer();
    XorgDummyServer(const XorgDummyServer&) = delete;
    XorgDummyServer& operator=(const XorgDummyServer&) = delete;

    bool Running() const { return !name_.empty(); }
    const std::string& Name() const { return name_; }  // ":N"
    // Why it is not running, for the test's skip message.
    const std::string& Problem() const { return problem_; }

    // The server's own view, through a connection of the harness: the first
    // CRTC's gamma (red, green, blue; 256 values each on this driver), and
    // a root window property of 8-bit items (empty when it is not set).
    std::vector<uint16_t> CrtcRamp() const;
    void SetCrtcRamp(const std::vector<uint16_t>& ramp) const;
    std::vector<uint8_t> RootProperty(const char* name) const;

private:
    pid_t pid_ = -1;
    std::string folder_;
    std::string name_;
    std::string problem_;
};

}  // namespace tesk::test
