// Test isolation: every test runs with its own configuration, data and colour
// folders, so nothing reads or writes the developer's real settings.
#pragma once
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tesk::test {

// Points XDG_CONFIG_HOME, XDG_DATA_HOME and TESK_COLOR_DIR at a fresh folder
// for the object's lifetime and removes the folder afterwards.
class TempEnvironment {
public:
    TempEnvironment();
    ~TempEnvironment();
    TempEnvironment(const TempEnvironment&) = delete;
    TempEnvironment& operator=(const TempEnvironment&) = delete;

    const std::string& Root() const { return root_; }
    std::string ConfigDir() const { return root_ + "/config"; }
    std::string ColorDir() const { return root_ + "/color"; }

private:
    std::string root_;
    std::vector<std::pair<std::string, std::string>> saved_;
};

class IsolatedTest : public ::testing::Test {
protected:
    TempEnvironment env_;
};

// A file of the source tree's data/ folder, e.g. "ColorProfile/ISO Coated (FOGRA39).icc".
std::string DataPath(const std::string& relative);
std::vector<uint8_t> ReadBytes(const std::string& path);
// The file's bytes as text; "" when it cannot be read.
std::string ReadText(const std::string& path);
void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes);

}  // namespace tesk::test
