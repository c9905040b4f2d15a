#include "temp_env.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tesk::test {

namespace {
const char* const kVariables[] = {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "TESK_COLOR_DIR"};
}

TempEnvironment::TempEnvironment() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tesk-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    root_ = pattern;
    for (const char* name : kVariables) {
        const char* old = std::getenv(name);
        saved_.emplace_back(name, old ? std::string(old) : std::string("\x01"));
    }
    std::filesystem::create_directories(ConfigDir());
    std::filesystem::create_directories(root_ + "/data");
    setenv("XDG_CONFIG_HOME", ConfigDir().c_str(), 1);
    setenv("XDG_DATA_HOME", (root_ + "/data").c_str(), 1);
    setenv("TESK_COLOR_DIR", ColorDir().c_str(), 1);
}

TempEnvironment::~TempEnvironment() {
    for (const auto& [name, value] : saved_) {
        if (value == "\x01")
            unsetenv(name.c_str());
        else
            setenv(name.c_str(), value.c_str(), 1);
    }
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

std::string DataPath(const std::string& relative) { return std::string(TESK_SOURCE_DIR) + "/data/" + relative; }

std::vector<uint8_t> ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw std::runtime_error("cannot write " + path);
}

}  // namespace tesk::test
