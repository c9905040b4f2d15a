#include "support/xvfb_server.h"

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace tesk::test {

XvfbServer::XvfbServer(int width, int height) {
    if (access("/usr/bin/Xvfb", X_OK) != 0) return;
    int fds[2];
    if (pipe(fds) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
        close(fds[0]);
        prctl(PR_SET_PDEATHSIG, SIGTERM);  // the server goes with the test, however it ends
        std::string screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
        std::string fd = std::to_string(fds[1]);
        // -noreset keeps the server's state (gamma, properties) between our connections.
        execl("/usr/bin/Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-noreset", "-nolisten", "tcp", "-screen", "0",
              screen.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    close(fds[1]);
    if (pid_ < 0) {
        close(fds[0]);
        return;
    }
    // Xvfb writes its display number once it accepts connections.
    std::string number;
    pollfd waiting{fds[0], POLLIN, 0};
    while (poll(&waiting, 1, 10000) > 0) {
        char c = 0;
        if (read(fds[0], &c, 1) != 1 || c == '\n') break;
        number += c;
    }
    close(fds[0]);
    if (!number.empty()) name_ = ":" + number;
}

XvfbServer::~XvfbServer() {
    if (pid_ > 0) {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }
}

bool HasXdotool() { return std::system("command -v xdotool >/dev/null 2>&1") == 0; }

std::thread DriveWindow(const std::string& title, const std::string& keys,
                        std::function<void(unsigned long window)> beforeKeys) {
    return std::thread([title, keys, beforeKeys] {
        std::string window;
        const std::string find = "timeout 20 xdotool search --sync --onlyvisible --name '" + title + "' | head -1";
        if (FILE* pipe = popen(find.c_str(), "r")) {
            char buffer[64] = {};
            if (fgets(buffer, sizeof buffer, pipe)) window = buffer;
            pclose(pipe);
        }
        while (!window.empty() && (window.back() == '\n' || window.back() == ' ')) window.pop_back();
        if (window.empty()) return;
        std::system(("xdotool windowfocus --sync " + window + " >/dev/null 2>&1").c_str());
        if (beforeKeys) beforeKeys(std::stoul(window));
        std::system(("xdotool key --delay 100 " + keys + " >/dev/null 2>&1").c_str());
    });
}

}  // namespace tesk::test
