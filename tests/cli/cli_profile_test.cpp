// profile extract/assign/strip on TIFF, checked with libtiff's own tools:
// tiffinfo for the embedded profile, tiffcmp for untouched pixels.
#include <gtest/gtest.h>

#include "cli_runner.h"
#include "support/temp_env.h"

namespace teskcolor::test {
namespace {

class CliProfile : public tesk::test::IsolatedTest {
protected:
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
};

TEST_F(CliProfile, AssignStripAndExtractKeepThePixels) {
    const std::string tiffinfo = tesk::test::FindTool("tiffinfo"), tiffcmp = tesk::test::FindTool("tiffcmp");
    if (tiffinfo.empty() || tiffcmp.empty()) GTEST_SKIP() << "libtiff-tools is not installed";
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "40", "--height", "30", Path("chart.tif")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"make-profile", "--gamma", "1.8", Path("mine.icc")}).code, 0);
    const std::vector<uint8_t> mine = tesk::test::ReadBytes(Path("mine.icc"));

    const SRun assigned = RunTeskcolor({"profile", "assign", Path("chart.tif"), Path("mine.icc"), Path("a.tif")});
    ASSERT_EQ(assigned.code, 0) << assigned.err;
    EXPECT_NE(tesk::test::RunShell(tesk::test::ShellQuote(tiffinfo) + " " + tesk::test::ShellQuote(Path("a.tif"))).out
                  .find("ICC Profile: <present>, " + std::to_string(mine.size()) + " bytes"),
              std::string::npos);
    ASSERT_EQ(RunTeskcolor({"profile", "extract", Path("a.tif"), Path("out.icc")}).code, 0);
    EXPECT_EQ(tesk::test::ReadBytes(Path("out.icc")), mine);

    ASSERT_EQ(RunTeskcolor({"profile", "strip", Path("a.tif"), Path("s.tif")}).code, 0);
    EXPECT_EQ(tesk::test::RunShell(tesk::test::ShellQuote(tiffinfo) + " " + tesk::test::ShellQuote(Path("s.tif"))).out.find("ICC Profile"), std::string::npos);
    EXPECT_EQ(tesk::test::RunShell(tesk::test::ShellQuote(tiffcmp) + " " + tesk::test::ShellQuote(Path("chart.tif")) + " " + tesk::test::ShellQuote(Path("s.tif")) + " 2>&1").out, "");

    // Nothing to extract, and a profile that does not fit the pixels: refused, no file left.
    EXPECT_EQ(RunTeskcolor({"profile", "extract", Path("s.tif"), Path("none.icc")}).code, 3);
    const std::string cmyk = tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc");
    EXPECT_EQ(RunTeskcolor({"profile", "assign", Path("s.tif"), cmyk, Path("w.tif")}).code, 6);
    EXPECT_FALSE(std::filesystem::exists(Path("none.icc")) || std::filesystem::exists(Path("w.tif")));
}

}  // namespace
}  // namespace teskcolor::test
