// What the user already had survives a failed or interrupted run: earlier
// outputs, the settings file, and settings changed by another process.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <nlohmann/json.hpp>
#include <thread>

#include "cli_runner.h"
#include "image_fixtures.h"
#include "support/temp_env.h"

extern char** environ;

namespace teskcolor::test {
namespace {

namespace fs = std::filesystem;

class CliFiles : public tesk::test::IsolatedTest {
protected:
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
    std::string SettingsFile() const { return env_.ConfigDir() + "/teskcolor/settings.json"; }
    nlohmann::json Settings() const {
        return nlohmann::json::parse(RunTeskcolor({"settings", "show", "--json"}).out, nullptr, false);
    }
    std::vector<std::string> Hidden(const std::string& folder) const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            if (entry.path().filename().string()[0] == '.') names.push_back(entry.path().filename().string());
        return names;
    }
};

TEST_F(CliFiles, PlatesThatCannotAllBeReplacedLeaveTheOldOnes) {
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "64", "--height", "48", Path("chart.tif")}).code, 0);
    for (const char* ink : {"cyan", "magenta", "yellow"})
        tesk::test::WriteBytes(Path(std::string("plates-") + ink + ".tif"), {'o', 'l', 'd'});
    fs::create_directory(Path("plates-black.tif"));  // cannot be replaced by a file

    const SRun run = RunTeskcolor({"separate", "--invert", Path("chart.tif"), Path("plates.tif")});
    EXPECT_EQ(run.code, 7) << run.err;
    for (const char* ink : {"cyan", "magenta", "yellow"})
        EXPECT_EQ(tesk::test::ReadBytes(Path(std::string("plates-") + ink + ".tif")), (std::vector<uint8_t>{'o', 'l', 'd'}));
    EXPECT_TRUE(Hidden(env_.Root()).empty());
}

TEST_F(CliFiles, SigtermDuringAWriteRemovesTheTemporaries) {
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "4000", "--height", "3000", Path("big.tif")}).code, 0);
    const std::string program = TESKCOLOR_EXE, input = Path("big.tif"), output = Path("out.tif");
    const char* argv[] = {program.c_str(), "separate", input.c_str(), output.c_str(), nullptr};
    pid_t pid = 0;
    ASSERT_EQ(posix_spawn(&pid, program.c_str(), nullptr, nullptr, const_cast<char**>(argv), environ), 0);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (Hidden(env_.Root()).empty() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_FALSE(Hidden(env_.Root()).empty()) << "no temporary output seen";
    kill(pid, SIGTERM);
    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
    EXPECT_TRUE(Hidden(env_.Root()).empty()) << Hidden(env_.Root())[0];
}

TEST_F(CliFiles, ImagesPastThePixelBudgetAreRefusedAndInfoReadsOnlyTheHeader) {
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "64", "--height", "48", Path("chart.png")}).code, 0);
    EXPECT_EQ(RunTeskcolor({"convert", "--max-pixels", "3000", Path("chart.png"), Path("out.png")}).code, 5);
    EXPECT_EQ(RunTeskcolor({"convert", "--max-pixels=4000", Path("chart.png"), Path("out.png")}).code, 0);
    EXPECT_EQ(RunTeskcolor({"convert", "--max-pixels", "many", Path("chart.png"), Path("out.png")}).code, 2);

    // A JPEG whose frame claims 16384 x 16384 pixels, in a few kilobytes.
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "64", "--height", "48", Path("chart.jpg")}).code, 0);
    std::vector<uint8_t> bytes = tesk::test::ReadBytes(Path("chart.jpg"));
    const uint8_t frame[] = {0xFF, 0xC0};
    const size_t at = size_t(std::search(bytes.begin(), bytes.end(), frame, frame + 2) - bytes.begin());
    ASSERT_LT(at + 9, bytes.size());
    bytes[at + 5] = bytes[at + 7] = 0x40, bytes[at + 6] = bytes[at + 8] = 0;
    tesk::test::WriteBytes(Path("bomb.jpg"), bytes);
    const SRun convert = RunTeskcolor({"convert", Path("bomb.jpg"), Path("out.tif")});
    EXPECT_EQ(convert.code, 5) << convert.err;
    const auto start = std::chrono::steady_clock::now();
    const SRun info = RunTeskcolor({"info", Path("bomb.jpg")});
    EXPECT_EQ(info.code, 0) << info.err;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(CliFiles, ProfilesTheModuleRefusesDoNotBecomeSettings) {
    std::vector<uint8_t> profile = SrgbProfileBytes();
    profile[0] = 0x7F, profile[1] = profile[2] = profile[3] = 0xFF;  // a header size of 2 GiB
    tesk::test::WriteBytes(Path("lying.icc"), profile);
    ASSERT_EQ(RunTeskcolor({"info", Path("lying.icc")}).code, 4);
    const SRun set = RunTeskcolor({"settings", "set", "working-space", Path("lying.icc")});
    EXPECT_EQ(set.code, 4) << set.err;
    EXPECT_EQ(RunTeskcolor({"profiles", "install", Path("lying.icc")}).code, 4);
    EXPECT_FALSE(fs::exists(env_.ColorDir() + "/lying.icc"));
}

// Rewrites of the settings file while `args` runs, counted by the temporaries
// made for them (identical rename events would be merged by inotify).
int ReplacementsDuring(const std::string& file, const std::vector<std::string>& args) {
    const int watch = inotify_init1(IN_NONBLOCK);
    inotify_add_watch(watch, fs::path(file).parent_path().c_str(), IN_CREATE);
    const std::string temporary = fs::path(file).filename().string() + ".";
    EXPECT_EQ(RunTeskcolor(args).code, 0);
    int renames = 0;
    alignas(inotify_event) char events[4096];
    for (ssize_t got; (got = read(watch, events, sizeof events)) > 0;)
        for (char* at = events; at < events + got;) {
            auto* event = reinterpret_cast<inotify_event*>(at);
            const std::string name = event->len ? event->name : "";
            renames += name.rfind(temporary, 0) == 0 && name.size() == temporary.size() + 6;
            at += sizeof(inotify_event) + event->len;
        }
    close(watch);
    return renames;
}

TEST_F(CliFiles, ASettingOfSeveralValuesIsOneReplacementOfTheFile) {
    ASSERT_EQ(RunTeskcolor({"settings", "set", "intent", "0"}).code, 0);
    // Whatever the module itself writes when it starts, the change adds one rewrite.
    const int starting = ReplacementsDuring(SettingsFile(), {"settings", "show"});
    EXPECT_EQ(ReplacementsDuring(SettingsFile(), {"settings", "set", "gamma", "1.8", "2.0", "2.2"}), starting + 1);
    EXPECT_EQ(Settings()["gamma"], nlohmann::json::array({1.8, 2.0, 2.2}));
}

// How `settings show --json` names an intent: "relative (1)".
std::string IntentShown(int intent) {
    static const char* const names[4] = {"perceptual", "relative", "saturation", "absolute"};
    return std::string(names[intent]) + " (" + std::to_string(intent) + ")";
}

TEST_F(CliFiles, ConcurrentChangesOfDifferentSettingsAreBothKept) {
    ASSERT_EQ(RunTeskcolor({"settings", "set", "intent", "0"}).code, 0);
    // A killed writer's temporary, which the next change clears away.
    tesk::test::WriteBytes(SettingsFile() + ".Ab3dEf", {'{'});
    for (int round = 1; round <= 8; ++round) {
        const std::string intent = std::to_string(round % 4), proofIntent = std::to_string((round + 1) % 4);
        auto first = std::async(std::launch::async, [&] { return RunTeskcolor({"settings", "set", "intent", intent}); });
        const SRun second = RunTeskcolor({"settings", "set", "proof-intent", proofIntent});
        ASSERT_EQ(first.get().code, 0);
        ASSERT_EQ(second.code, 0) << second.err;
        const nlohmann::json now = Settings();
        EXPECT_EQ(now["intent"], IntentShown(round % 4)) << "round " << round;
        EXPECT_EQ(now["proof-intent"], IntentShown((round + 1) % 4)) << "round " << round;
    }
    EXPECT_FALSE(fs::exists(SettingsFile() + ".Ab3dEf"));
}

}  // namespace
}  // namespace teskcolor::test
