// Images through pipes ('-') and many files in one call, as a script runs them.
#include <gtest/gtest.h>

#include <filesystem>

#include "cli_runner.h"

namespace teskcolor::test {
namespace {

using tesk::test::ReadBytes;
using tesk::test::ShellQuote;

class CliStreams : public tesk::test::IsolatedTest {
protected:
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
    // A shell line, in the test's folder, with $T for the program.
    int Shell(const std::string& line) {
        return tesk::test::RunShell("cd " + ShellQuote(env_.Root()) + " && T=" + ShellQuote(TESKCOLOR_EXE) + " && (" +
                                    line + ") 2>/dev/null")
            .code;
    }
};

TEST_F(CliStreams, APipedRunWritesTheSameBytesAsTheFileRun) {
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "90", "--height", "60", Path("chart.png")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"convert", Path("chart.png"), Path("file.tif")}).code, 0);
    ASSERT_EQ(Shell("$T convert - - --format tiff < chart.png > piped.tif"), 0);
    EXPECT_EQ(ReadBytes(Path("piped.tif")), ReadBytes(Path("file.tif")));

    ASSERT_EQ(RunTeskcolor({"separate", "--packed", Path("chart.png"), Path("cmyk.tif")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"combine", Path("cmyk.tif"), Path("back.png")}).code, 0);
    ASSERT_EQ(Shell("$T separate --packed chart.png - --format tiff | $T combine - piped.png"), 0);
    EXPECT_EQ(ReadBytes(Path("piped.png")), ReadBytes(Path("back.png")));

    EXPECT_EQ(Shell("$T convert chart.png - > none.tif"), 2);  // no --format
    EXPECT_EQ(std::filesystem::file_size(Path("none.tif")), 0u);
}

}  // namespace
}  // namespace teskcolor::test
