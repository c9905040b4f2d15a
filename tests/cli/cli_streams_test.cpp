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
    // info reads a piped image's embedded profile: the CMYK one, not the working space.
    EXPECT_EQ(Shell("$T info - < cmyk.tif | grep -q 'colour_space: *CMYK'"), 0);

    EXPECT_EQ(Shell("$T convert chart.png - > none.tif"), 2);  // no --format
    EXPECT_EQ(std::filesystem::file_size(Path("none.tif")), 0u);
}

TEST_F(CliStreams, ManyFilesGoOnPastABrokenOneAndNeverOverwriteAnInput) {
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "90", "--height", "60", Path("a.png")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "60", "--height", "40", Path("b.tif")}).code, 0);
    tesk::test::WriteBytes(Path("broken.jpg"), {0xFF, 0xD8, 0xFF, 0xE0});
    ASSERT_EQ(RunTeskcolor({"convert", Path("b.tif"), Path("b-single.tif")}).code, 0);

    const SRun run = RunTeskcolor(
        {"convert", Path("a.png"), Path("broken.jpg"), Path("b.tif"), "--output-dir", Path("out"), "--suffix", "_s"});
    EXPECT_EQ(run.code, 9) << run.err;
    EXPECT_NE(run.err.find("broken.jpg"), std::string::npos) << run.err;
    EXPECT_TRUE(std::filesystem::exists(Path("out/a_s.png")));
    EXPECT_EQ(ReadBytes(Path("out/b_s.tif")), ReadBytes(Path("b-single.tif")));
    EXPECT_FALSE(std::filesystem::exists(Path("out/broken_s.jpg")));

    std::filesystem::create_directory(Path("sub"));
    std::filesystem::copy_file(Path("b.tif"), Path("sub/b.tif"));
    EXPECT_EQ(RunTeskcolor({"convert", Path("b.tif"), Path("sub/b.tif"), "--output-dir", Path("two")}).code, 2);
    EXPECT_FALSE(std::filesystem::exists(Path("two")));
    const auto before = ReadBytes(Path("b.tif"));
    EXPECT_EQ(RunTeskcolor({"proof", Path("a.png"), Path("b.tif"), "--output-dir", env_.Root()}).code, 2);
    EXPECT_EQ(ReadBytes(Path("b.tif")), before);
}

// A file's intent conversion leaves the working space as it was for the next file.
TEST_F(CliStreams, EachFileOfAnIntentBatchIsConvertedAsAlone) {
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "60", "--height", "40", Path("chart.tif")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"make-profile", "--primaries", "adobe", Path("adobe.icc")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"convert", "--to", Path("adobe.icc"), Path("chart.tif"), Path("adobe.tif")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"convert", "--intent", "perceptual", Path("chart.tif"), Path("alone.tif")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"convert", "--intent", "perceptual", "--jobs", "1", "--output-dir", Path("out"),
                            Path("adobe.tif"), Path("chart.tif")})
                  .code,
              0);
    EXPECT_EQ(ReadBytes(Path("out/chart.tif")), ReadBytes(Path("alone.tif")));
}

}  // namespace
}  // namespace teskcolor::test
