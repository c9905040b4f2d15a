#include "support/cups_server.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

namespace tesk::test {
namespace {

void WriteText(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

int Run(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()); }

}  // namespace

CupsServer::CupsServer() {
    const char* exec = "/usr/lib/cups/daemon/cups-exec";
    if (access("/usr/sbin/cupsd", X_OK) != 0 || access("/usr/sbin/lpadmin", X_OK) != 0 || access(exec, X_OK) != 0)
        return;
    namespace fs = std::filesystem;
    std::string pattern = (fs::temp_directory_path() / "tesk-cups-XXXXXX").string();
    if (!mkdtemp(pattern.data())) return;
    folder_ = pattern;
    for (const char* sub : {"spool", "tmp", "cache", "state", "out", "ppd", "bin/filter", "bin/daemon"})
        fs::create_directories(folder_ + "/" + sub);
    // Filters run as an unprivileged user: the folders they touch are open to it.
    fs::permissions(folder_, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                                 fs::perms::others_read | fs::perms::others_exec);
    for (const char* sub : {"/out", "/tmp"}) fs::permissions(folder_ + sub, fs::perms::all);
    fs::create_symlink(exec, folder_ + "/bin/daemon/cups-exec");
    // The queues pass PDF through unchanged, so no CUPS filters are needed.
    WriteText(folder_ + "/bin/filter/passthrough", "#!/bin/sh\nif [ -n \"$6\" ]; then exec cat \"$6\"; else exec cat; fi\n");
    fs::permissions(folder_ + "/bin/filter/passthrough", fs::perms::owner_all | fs::perms::group_read |
                                                             fs::perms::group_exec | fs::perms::others_read |
                                                             fs::perms::others_exec);
    WriteText(folder_ + "/cupsd.conf", "Listen " + folder_ + "/cups.sock\nLogLevel warn\nDefaultPolicy default\n"
                                       "<Policy default>\n<Limit All>\nOrder deny,allow\n</Limit>\n</Policy>\n"
                                       "<Location />\nOrder allow,deny\nAllow all\n</Location>\n");
    WriteText(folder_ + "/cups-files.conf",
              "ServerRoot " + folder_ + "\nRequestRoot " + folder_ + "/spool\nTempDir " + folder_ +
                  "/tmp\nCacheDir " + folder_ + "/cache\nStateDir " + folder_ + "/state\nServerBin " + folder_ +
                  "/bin\nDataDir /usr/share/cups\nErrorLog " + folder_ + "/error_log\nAccessLog " + folder_ +
                  "/access_log\nPageLog " + folder_ + "/page_log\nFileDevice Yes\n");

    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);  // the server goes with the test, however it ends
        std::string conf = folder_ + "/cupsd.conf", files = folder_ + "/cups-files.conf";
        execl("/usr/sbin/cupsd", "cupsd", "-f", "-c", conf.c_str(), "-s", files.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    std::string socket = folder_ + "/cups.sock";
    for (int i = 0; i < 100 && pid_ > 0 && !fs::exists(socket); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    if (!fs::exists(socket)) {
        if (pid_ > 0) kill(pid_, SIGTERM), waitpid(pid_, nullptr, 0);
        pid_ = -1;
        return;
    }
    setenv("CUPS_SERVER", socket.c_str(), 1);
}

CupsServer::~CupsServer() {
    if (pid_ > 0) {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }
    unsetenv("CUPS_SERVER");
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
}

bool CupsServer::AddQueue(const std::string& name, const std::string& profile, bool makeDefault) {
    std::string ppd = folder_ + "/ppd/" + name + ".ppd";
    std::string text =
        "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*FileVersion: \"1.0\"\n*LanguageVersion: English\n"
        "*LanguageEncoding: ISOLatin1\n*PCFileName: \"TESKTEST.PPD\"\n*Manufacturer: \"Tesk\"\n"
        "*Product: \"(Tesk Test Printer)\"\n*ModelName: \"Tesk Test Printer\"\n*ShortNickName: \"Tesk Test Printer\"\n"
        "*NickName: \"Tesk Test Printer\"\n*PSVersion: \"(3010.000) 0\"\n*LanguageLevel: \"3\"\n*ColorDevice: True\n"
        "*DefaultColorSpace: RGB\n*FileSystem: False\n*Throughput: \"1\"\n*TTRasterizer: Type42\n"
        "*cupsFilter: \"application/pdf 0 passthrough\"\n*DefaultColorModel: RGB\n";
    if (!profile.empty()) text += "*cupsICCProfile Gray../Grey: \"/nonexistent/gray.icc\"\n"
                                  "*cupsICCProfile RGB../Colour: \"" + profile + "\"\n";
    text += "*OpenUI *PageSize/Media Size: PickOne\n*OrderDependency: 10 AnySetup *PageSize\n*DefaultPageSize: A4\n"
            "*PageSize A4/A4: \"<</PageSize[595 842]>>setpagedevice\"\n*CloseUI: *PageSize\n"
            "*DefaultImageableArea: A4\n*ImageableArea A4/A4: \"0 0 595 842\"\n*DefaultPaperDimension: A4\n"
            "*PaperDimension A4/A4: \"595 842\"\n";
    WriteText(ppd, text);
    if (Run("lpadmin -p '" + name + "' -E -v 'file://" + OutputOf(name) + "' -P '" + ppd + "'") != 0) return false;
    return !makeDefault || Run("lpadmin -d '" + name + "'") == 0;
}

}  // namespace tesk::test
