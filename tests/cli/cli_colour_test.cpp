// Single colours: teskcolor colour against lcms2's transicc on the same
// profiles, within one step of 8 bits.
#include <gtest/gtest.h>

#include <sstream>

#include "cli_runner.h"
#include "support/temp_env.h"

namespace teskcolor::test {
namespace {

std::vector<double> Numbers(const std::string& text) {
    std::vector<double> values;
    std::istringstream in(text);
    for (double value; in >> value;) values.push_back(value);
    return values;
}

// transicc's values for "R G B" lines, relative colorimetric.
std::vector<double> Transicc(const std::string& tool, const std::string& from, const std::string& to,
                             const std::string& lines) {
    const std::string command = "printf '" + lines + "' | " + tesk::test::ShellQuote(tool) + " -t1 -n -i " + tesk::test::ShellQuote(from) + " -o " +
                                tesk::test::ShellQuote(to) + " 2>/dev/null | grep -v -e LittleCMS -e Copyright";
    return Numbers(tesk::test::RunShell(command).out);
}

class CliColour : public tesk::test::IsolatedTest {};

TEST_F(CliColour, AgreesWithTransiccOnRGBAndCMYK) {
    const std::string transicc = tesk::test::FindTool("transicc");
    if (transicc.empty()) GTEST_SKIP() << "transicc is not installed";
    const std::string source = env_.Root() + "/source.icc", target = env_.Root() + "/target.icc";
    ASSERT_EQ(RunTeskcolor({"make-profile", source}).code, 0);
    ASSERT_EQ(RunTeskcolor({"make-profile", "--primaries", "adobe", "--gamma", "1.8", target}).code, 0);
    const std::string cmyk = tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc");
    const std::vector<std::string> colours = {"255,0,0", "#00ff80", "10,20,30", "200,180,40"};
    const std::string lines = "255 0 0\\n0 255 128\\n10 20 30\\n200 180 40\\n";

    struct SCase {
        std::vector<std::string> options;
        std::string to;
        double tolerance;  // one 8-bit step, in the units printed
    };
    for (const SCase& test : {SCase{{"--to", target}, target, 1.0}, SCase{{"--cmyk", cmyk}, cmyk, 100.0 / 255}}) {
        std::vector<std::string> args = {"colour", "--from", source};
        args.insert(args.end(), test.options.begin(), test.options.end());
        args.insert(args.end(), colours.begin(), colours.end());
        const SRun run = RunTeskcolor(args);
        ASSERT_EQ(run.code, 0) << run.err;
        const std::vector<double> ours = Numbers(run.out), theirs = Transicc(transicc, source, test.to, lines);
        ASSERT_EQ(ours.size(), theirs.size()) << run.out;
        for (size_t i = 0; i < ours.size(); ++i) EXPECT_NEAR(ours[i], theirs[i], test.tolerance) << test.to << " #" << i;
    }
    EXPECT_EQ(RunTeskcolor({"colour", "--from", source, "256,0,0"}).code, 2);
}

// 16-bit and Lab colours go another way than 8-bit ones; transicc takes RGB
// as 0..255 numbers with decimals, so 16-bit words are compared divided by 257.
TEST_F(CliColour, AgreesWithTransiccAt16BitsAndInLab) {
    const std::string transicc = tesk::test::FindTool("transicc");
    if (transicc.empty()) GTEST_SKIP() << "transicc is not installed";
    const std::string source = env_.Root() + "/source.icc", target = env_.Root() + "/target.icc";
    ASSERT_EQ(RunTeskcolor({"make-profile", source}).code, 0);
    ASSERT_EQ(RunTeskcolor({"make-profile", "--primaries", "adobe", "--gamma", "1.8", target}).code, 0);
    struct SCase {
        std::vector<std::string> args;
        std::string from, to, lines;
        double scale, tolerance;  // ours / scale against transicc's
    };
    const SCase cases[] = {
        // An eighth of an 8-bit step: an 8-bit detour would miss it.
        {{"--16bit", "--from", source, "--to", target, "65535,0,0", "1000,20000,40000"}, source, target,
         "255 0 0\\n3.8911 77.821 155.64\\n", 257, 32.0 / 257},
        {{"--from-lab", "--to", target, "50,-20,30", "70,10,10"}, "*Lab", target, "50 -20 30\\n70 10 10\\n", 1, 1},
        {{"--to-lab", "--from", source, "255,0,0", "10,200,30"}, source, "*Lab", "255 0 0\\n10 200 30\\n", 1, 0.1},
    };
    for (const SCase& test : cases) {
        std::vector<std::string> args = {"colour"};
        args.insert(args.end(), test.args.begin(), test.args.end());
        const SRun run = RunTeskcolor(args);
        ASSERT_EQ(run.code, 0) << run.err;
        const std::vector<double> ours = Numbers(run.out), theirs = Transicc(transicc, test.from, test.to, test.lines);
        ASSERT_EQ(ours.size(), theirs.size()) << run.out;
        for (size_t i = 0; i < ours.size(); ++i)
            EXPECT_NEAR(ours[i] / test.scale, theirs[i], test.tolerance) << test.args[0] << " #" << i;
    }
    EXPECT_EQ(RunTeskcolor({"colour", "--from-lab", "50,20,130"}).code, 2);
}

}  // namespace
}  // namespace teskcolor::test
