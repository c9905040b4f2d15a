// Profiles by name: every name the lists print is accepted wherever a
// profile is asked for, and installing and uninstalling do what they say.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "cli_runner.h"
#include "support/temp_env.h"

namespace teskcolor::test {
namespace {

namespace fs = std::filesystem;

class CliProfiles : public tesk::test::IsolatedTest {
protected:
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
    // The profile names `profiles` prints, without its comment lines.
    static std::vector<std::string> Listed(const std::vector<std::string>& args) {
        std::vector<std::string> names;
        std::istringstream lines(RunTeskcolor(args).out);
        for (std::string line; std::getline(lines, line);)
            if (!line.empty() && line[0] != '#') names.push_back(line);
        return names;
    }
};

TEST_F(CliProfiles, EveryListedNameIsAcceptedAsAProfile) {
    const std::vector<std::string> cmyk = Listed({"profiles", "--cmyk"});
    const std::vector<std::string> rgb = Listed({"profiles"});
    ASSERT_FALSE(cmyk.empty());
    ASSERT_FALSE(rgb.empty());
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "32", "--height", "24", Path("c.tif")}).code, 0);
    for (const std::string& name : cmyk) {
        const SRun separated = RunTeskcolor({"separate", "--packed", "--cmyk", name, Path("c.tif"), Path("p.tif")});
        EXPECT_EQ(separated.code, 0) << name << ": " << separated.err;
    }
    for (const std::string& name : rgb) EXPECT_EQ(RunTeskcolor({"info", name}).code, 0) << name;
}

TEST_F(CliProfiles, UninstallTakesTheProfileOffTheList) {
    ASSERT_EQ(RunTeskcolor({"make-profile", "--gamma", "2.2", Path("Mine.icc")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"profiles", "install", Path("Mine.icc")}).code, 0);
    const SRun uninstalled = RunTeskcolor({"profiles", "uninstall", "Mine"});
    ASSERT_EQ(uninstalled.code, 0) << uninstalled.err;
    const std::vector<std::string> listed = Listed({"profiles"});
    EXPECT_EQ(std::count(listed.begin(), listed.end(), "Mine"), 0);
    EXPECT_EQ(RunTeskcolor({"profiles", "uninstall", "Mine.icc"}).code, 3);
}

TEST_F(CliProfiles, NamesAreNeverPaths) {
    fs::create_directories(env_.ColorDir());
    tesk::test::WriteBytes(Path("x.icc"), {1, 2, 3});
    tesk::test::WriteBytes(env_.ColorDir() + "/.hidden.icc", {1, 2, 3});
    for (const std::string& name : {std::string("../x.icc"), Path("x.icc"), std::string("..\\x.icc"),
                                    std::string(".hidden.icc"), std::string("a\x01b.icc")}) {
        const SRun run = RunTeskcolor({"profiles", "uninstall", name});
        EXPECT_EQ(run.code, 2) << name << ": " << run.err;
    }
    EXPECT_TRUE(fs::exists(Path("x.icc")));
    EXPECT_TRUE(fs::exists(env_.ColorDir() + "/.hidden.icc"));

    // A profile taken from an image is installed under a name made from its
    // description, beside, never over, another profile of that name.
    ASSERT_EQ(RunTeskcolor({"make-profile", "--gamma", "1.8", "--description", "../.evil/name", Path("evil.icc")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "32", "--height", "24", Path("c.tif")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"convert", "--to", Path("evil.icc"), Path("c.tif"), Path("tagged.png")}).code, 0);
    const std::string taken = env_.ColorDir() + "/__.evil_name.icc";
    tesk::test::WriteBytes(taken, {4, 5, 6});
    const SRun set = RunTeskcolor({"settings", "set", "working-space", Path("tagged.png")});
    ASSERT_EQ(set.code, 0) << set.err;
    EXPECT_NE(set.out.find("__.evil_name (2).icc"), std::string::npos) << set.out;
    EXPECT_EQ(tesk::test::ReadBytes(taken), (std::vector<uint8_t>{4, 5, 6}));
    EXPECT_FALSE(fs::exists(env_.Root() + "/.evil"));
    // Later runs find the working space.
    EXPECT_EQ(RunTeskcolor({"chart", "--width", "32", "--height", "24", Path("d.tif")}).code, 0);
}

}  // namespace
}  // namespace teskcolor::test
