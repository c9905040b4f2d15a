#include "xorg_dummy_server.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>

namespace tesk::test {
namespace {

constexpr const char* kXorg = "/usr/bin/Xorg";
constexpr const char* kDummyDriver = "/usr/lib/xorg/modules/drivers/dummy_drv.so";

// One screen on the dummy driver at 60 Hz, and no input devices: a server
// started as root must not take the machine's keyboard and mouse.
std::string Configuration(int width, int height) {
    const int hTotal = width + 160, vTotal = height + 30;
    const double clockMHz = double(hTotal) * vTotal * 60 / 1e6;
    const long videoRamKiB = std::max(16384L, 2L * width * height * 4 / 1024);
    std::ostringstream text;
    text << "Section \"ServerFlags\"\n  Option \"AutoAddDevices\" \"false\"\n  Option \"AutoAddGPU\" \"false\"\n"
         << "EndSection\n"
         << "Section \"Device\"\n  Identifier \"card\"\n  Driver \"dummy\"\n  VideoRam " << videoRamKiB
         << "\nEndSection\n"
         << "Section \"Monitor\"\n  Identifier \"monitor\"\n  HorizSync 5.0 - 1000.0\n  VertRefresh 5.0 - 200.0\n"
         << "  Modeline \"test\" " << clockMHz << " " << width << " " << width + 16 << " " << width + 48 << " "
         << hTotal << " " << height << " " << height + 3 << " " << height + 7 << " " << vTotal << "\nEndSection\n"
         << "Section \"Screen\"\n  Identifier \"screen\"\n  Device \"card\"\n  Monitor \"monitor\"\n"
         << "  DefaultDepth 24\n  SubSection \"Display\"\n    Depth 24\n    Modes \"test\"\n  EndSubSection\n"
         << "EndSection\n";
    return text.str();
}

// The reason Xorg gives in its log for stopping.
std::string FatalError(const std::string& log) {
    std::ifstream in(log);
    std::string line, reason;
    bool fatal = false;
    while (std::getline(in, line)) {
        if (line.find("Fatal server error") != std::string::npos) fatal = true;
        else if (fatal && line.find("(EE) ") != std::string::npos && line.size() > line.find("(EE) ") + 5) {
            reason = line.substr(line.find("(EE) ") + 5);
            break;
        }
    }
    return reason.empty() ? "no reason in " + log : reason;
}

// A connection of the harness's own and the first CRTC's gamma on it.
struct Connection {
    explicit Connection(const std::string& name) : display(XOpenDisplay(name.c_str())) {
        if (!display) return;
        XRRScreenResources* resources = XRRGetScreenResourcesCurrent(display, DefaultRootWindow(display));
        if (resources && resources->ncrtc > 0) crtc = resources->crtcs[0];
        if (resources) XRRFreeScreenResources(resources);
        if (crtc) size = XRRGetCrtcGammaSize(display, crtc);
    }
    ~Connection() {
        if (display) XCloseDisplay(display);
    }
    ::Display* display;
    RRCrtc crtc = 0;
    int size = 0;
};

}  // namespace

std::vector<uint16_t> XorgDummyServer::CrtcRamp() const {
    Connection x(name_);
    XRRCrtcGamma* gamma = x.size > 0 ? XRRGetCrtcGamma(x.display, x.crtc) : nullptr;
    if (!gamma) return {};
    std::vector<uint16_t> ramp(gamma->red, gamma->red + x.size);
    ramp.insert(ramp.end(), gamma->green, gamma->green + x.size);
    ramp.insert(ramp.end(), gamma->blue, gamma->blue + x.size);
    XRRFreeGamma(gamma);
    return ramp;
}

void XorgDummyServer::SetCrtcRamp(const std::vector<uint16_t>& ramp) const {
    Connection x(name_);
    if (x.size <= 0 || ramp.size() != 3 * size_t(x.size)) return;
    XRRCrtcGamma* gamma = XRRAllocGamma(x.size);
    std::copy_n(ramp.begin(), x.size, gamma->red);
    std::copy_n(ramp.begin() + x.size, x.size, gamma->green);
    std::copy_n(ramp.begin() + 2 * x.size, x.size, gamma->blue);
    XRRSetCrtcGamma(x.display, x.crtc, gamma);
    XRRFreeGamma(gamma);
    XSync(x.display, False);
}

std::vector<uint8_t> XorgDummyServer::RootProperty(const char* name) const {
    Connection x(name_);
    Atom atom = x.display ? XInternAtom(x.display, name, True) : 0, type = 0;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    if (atom)
        XGetWindowProperty(x.display, DefaultRootWindow(x.display), atom, 0, 1 << 22, False, AnyPropertyType, &type,
                           &format, &count, &after, &data);
    std::vector<uint8_t> bytes;
    if (data && format == 8) bytes.assign(data, data + count);
    if (data) XFree(data);
    return bytes;
}

XorgDummyServer::XorgDummyServer(int width, int height) {
    if (access(kXorg, X_OK) != 0 || access(kDummyDriver, R_OK) != 0) {
        problem_ = "Xorg with the dummy video driver is not installed (xserver-xorg-core, xserver-xorg-video-dummy)";
        return;
    }
    std::string folder = (std::filesystem::temp_directory_path() / "tesk-xorg-XXXXXX").string();
    if (!mkdtemp(folder.data())) {
        problem_ = "no temporary folder for Xorg";
        return;
    }
    folder_ = folder;
    std::filesystem::create_directories(folder_ + "/conf.d");
    // Xorg refuses an empty configuration folder and would then read the system's.
    std::ofstream(folder_ + "/conf.d/empty.conf") << "# nothing: the test's xorg.conf says it all\n";
    std::ofstream(folder_ + "/xorg.conf") << Configuration(width, height);
    const std::string log = folder_ + "/Xorg.log";

    int fds[2];
    const int devNull = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (pipe(fds) != 0) {
        if (devNull >= 0) close(devNull);
        problem_ = "no pipe for Xorg";
        return;
    }
    const std::string fd = std::to_string(fds[1]);
    pid_ = fork();
    if (pid_ == 0) {
        close(fds[0]);
        prctl(PR_SET_PDEATHSIG, SIGTERM);  // the server goes with the test, however it ends
        // Paths relative to the working folder are the ones Xorg accepts from a user other than root.
        if (chdir(folder_.c_str()) != 0) _exit(127);
        if (devNull >= 0) dup2(devNull, STDERR_FILENO);  // its log is in the folder
        // -noreset keeps the server's state (gamma, properties) between our connections.
        execl(kXorg, "Xorg", "-config", "xorg.conf", "-configdir", "conf.d", "-logfile", log.c_str(), "-displayfd",
              fd.c_str(), "-noreset", "-nolisten", "tcp", "-novtswitch", "+extension", "RANDR",
              static_cast<char*>(nullptr));
        _exit(127);
    }
    close(fds[1]);
    if (devNull >= 0) close(devNull);
    if (pid_ < 0) {
        close(fds[0]);
        problem_ = "Xorg could not be started";
        return;
    }
    // Xorg writes its display number once it accepts connections.
    std::string number;
    pollfd waiting{fds[0], POLLIN, 0};
    while (poll(&waiting, 1, 20000) > 0) {
        char c = 0;
        if (read(fds[0], &c, 1) != 1 || c == '\n') break;
        number += c;
    }
    close(fds[0]);
    if (!number.empty()) name_ = ":" + number;
    else problem_ = "Xorg did not start: " + FatalError(log);
}

XorgDummyServer::~XorgDummyServer() {
    if (pid_ > 0) {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
}

}  // namespace tesk::test
