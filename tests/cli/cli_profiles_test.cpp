// Profiles by name: every name the lists print is accepted wherever a
// profile is asked for, and installing and uninstalling do what they say.
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace teskcolor::test
