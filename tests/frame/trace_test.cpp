// The trace switch and line layout, observed from a fresh process each time.
#include <windows.h>

#include <cctype>
#include <string>

#include "support/programs.h"
#include "support/temp_env.h"

namespace {

struct ProbeOutput {
    std::string out, err;
};

// Runs the probe with the registry switch set to `registry` (unset when negative).
ProbeOutput RunProbe(int registry, const char* arguments = "") {
    tesk::test::TempEnvironment env;
    if (registry >= 0) {
        HKEY key = nullptr;
        DWORD value = DWORD(registry);
        EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Vesko\\Quenfold Pro\\X9\\Debug", 0, nullptr, 0,
                                  KEY_ALL_ACCESS, nullptr, &key, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueExW(key, L"Enable", 0, REG_DWORD, reinterpret_cast<BYTE*>(&value), sizeof value),
                  ERROR_SUCCESS);
        RegCloseKey(key);
    }
    const std::string errFile = env.Root() + "/stderr.txt";
    ProbeOutput result;
    result.out = tesk::test::RunShell(tesk::test::ShellQuote(TRACE_PROBE) + " " + arguments + " 2>" +
                                      tesk::test::ShellQuote(errFile)).out;
    result.err = tesk::test::ReadText(errFile);
    return result;
}

// Whether `text` holds a line "[<thread id>]" followed exactly by `rest`.
bool HasLine(const std::string& text, const std::string& rest) {
    for (size_t at = text.find('['); at != std::string::npos; at = text.find('[', at + 1)) {
        size_t digits = at + 1;
        while (digits < text.size() && std::isdigit(static_cast<unsigned char>(text[digits]))) ++digits;
        if (digits == at + 1 || digits >= text.size() || text[digits] != ']') continue;
        if (text.compare(digits + 1, rest.size(), rest) == 0) return true;
    }
    return false;
}

}  // namespace

TEST(TraceSwitch, RegistryOnPublishesTheDecisionAndWritesExactLines) {
    ProbeOutput probe = RunProbe(1);
    EXPECT_NE(probe.out.find("published=1 enabled=1"), std::string::npos) << probe.out;
    // Thread marker, tag, category, separator, message, with nothing in between.
    EXPECT_TRUE(HasLine(probe.err, "[QFXx64]\t[INFO]\t\t[DllMain]\t:\tTeskColorMgr.dll DllMain Enter \n")) << probe.err;
    // Loaded twice, entered once.
    const std::string attach = "[DllMain]\t:\tVCM.DLL Initializing \n";
    size_t first = probe.err.find(attach);
    EXPECT_NE(first, std::string::npos);
    EXPECT_EQ(probe.err.find(attach, first + 1), std::string::npos) << probe.err;
    EXPECT_TRUE(HasLine(probe.err, "[QFXx64]\t[INFO]\t\t[Probe]\t[probe.cpp(42)]:\tvalue 7 of seven\n")) << probe.err;
    // An empty tag is allowed and simply left out; a null one is not.
    EXPECT_TRUE(HasLine(probe.err, ":\tbare line\n")) << probe.err;
    EXPECT_EQ(probe.err.find("null tag line"), std::string::npos);
    EXPECT_EQ(probe.err.find("debug tag line"), std::string::npos);
}

TEST(TraceSwitch, OffWithoutOrWithZeroValueAndWhenAnUnsignalledEventCameFirst) {
    const std::pair<int, const char*> cases[] = {{-1, ""}, {0, ""}, {1, "--event-first"}};
    for (const auto& [registry, arguments] : cases) {
        SCOPED_TRACE(std::to_string(registry) + arguments);
        ProbeOutput probe = RunProbe(registry, arguments);
        EXPECT_NE(probe.out.find("published=0 enabled=0"), std::string::npos) << probe.out;
        EXPECT_EQ(probe.err, "");
    }
}
