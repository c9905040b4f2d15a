// An Xvfb server of the test's own, started on a free display number.
#pragma once
#include <sys/types.h>

#include <string>

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

}  // namespace tesk::test
