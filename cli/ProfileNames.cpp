#include "cli/ProfileNames.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "cli/Errors.h"

namespace teskcolor {

namespace fs = std::filesystem;

namespace {

bool IsControl(unsigned char c) { return c < 0x20 || c == 0x7F; }

bool HoldsExactly(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ifstream in(path, std::ios::binary);
    return in && std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {}) == bytes;
}

}  // namespace

void RequireSafeProfileName(const std::string& name) {
    const char* why = nullptr;
    if (name.empty()) why = "is empty";
    else if (name[0] == '.') why = "starts with a dot";
    else if (name.find('/') != std::string::npos || name.find('\\') != std::string::npos) why = "holds a path separator";
    else if (name.find("..") != std::string::npos) why = "holds '..'";
    for (unsigned char c : name)
        if (!why && IsControl(c)) why = "holds a control character";
    if (why) throw CCliError(EExit::Usage, "a profile name, not a path, is needed here: the name " + std::string(why));
}

std::string ProfileFileNameFrom(const std::string& description, const std::string& extension) {
    constexpr size_t kMaxStem = 100;
    std::string stem;
    for (unsigned char c : description) {
        const bool unsafe = IsControl(c) || c == '/' || c == '\\' || c == ':' || c == '*' || c == '?' || c == '"' ||
                            c == '<' || c == '>' || c == '|';
        stem += unsafe ? '_' : char(c);
    }
    while (stem.find("..") != std::string::npos) stem.replace(stem.find(".."), 2, "_");
    while (!stem.empty() && (stem.front() == '.' || stem.front() == ' ')) stem.erase(stem.begin());
    while (!stem.empty() && (stem.back() == '.' || stem.back() == ' ')) stem.pop_back();
    if (stem.size() > kMaxStem) {
        stem.resize(kMaxStem);
        while (!stem.empty() && (static_cast<unsigned char>(stem.back()) & 0xC0) == 0x80) stem.pop_back();
        if (!stem.empty() && static_cast<unsigned char>(stem.back()) >= 0xC0) stem.pop_back();  // a cut sequence's lead
    }
    if (stem.empty()) stem = "profile";
    return stem + extension;
}

std::string FreeProfilePath(const std::string& folder, const std::string& fileName, const std::vector<uint8_t>& bytes) {
    const fs::path name(fileName);
    std::error_code error;
    for (int number = 1;; ++number) {
        const std::string candidate =
            folder + "/" +
            (number == 1 ? fileName : name.stem().string() + " (" + std::to_string(number) + ")" + name.extension().string());
        if (!fs::exists(fs::symlink_status(candidate, error)) || HoldsExactly(candidate, bytes)) return candidate;
    }
}

}  // namespace teskcolor
