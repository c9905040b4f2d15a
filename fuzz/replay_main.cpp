// Replays a fuzz target's corpus without libFuzzer: every file under the
// folders (or the files) named on the command line goes once through
// LLVMFuzzerTestOneInput, so an input that once crashed keeps being run by
// the ordinary build and its sanitizer build.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

bool CollectInputs(const fs::path& argument, std::vector<fs::path>& inputs) {
    std::error_code error;
    if (fs::is_regular_file(argument, error)) {
        inputs.push_back(argument);
        return true;
    }
    if (!fs::is_directory(argument, error)) return false;
    for (const auto& entry : fs::recursive_directory_iterator(argument, error))
        if (entry.is_regular_file(error)) inputs.push_back(entry.path());
    return !error;
}

bool ReadInput(const fs::path& path, std::vector<uint8_t>& bytes) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    bytes.assign(std::istreambuf_iterator<char>(in), {});
    return !in.bad();
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        if (!CollectInputs(argv[i], inputs)) {
            std::fprintf(stderr, "%s: not a file or folder\n", argv[i]);
            return 2;
        }
    }
    // An empty corpus would make this run prove nothing.
    if (inputs.empty()) {
        std::fprintf(stderr, "usage: %s CORPUS_DIR_OR_FILE... (no inputs found)\n", argv[0]);
        return 2;
    }
    std::sort(inputs.begin(), inputs.end());
    std::vector<uint8_t> bytes;
    for (const fs::path& input : inputs) {
        if (!ReadInput(input, bytes)) {
            std::fprintf(stderr, "%s: cannot read\n", input.c_str());
            return 2;
        }
        // A copy of exactly the input's size, so that a read past its end is
        // caught by the sanitizers as it would be under libFuzzer.
        // (new[] of zero bytes still gives a pointer, as libFuzzer does).
        std::unique_ptr<uint8_t[]> exact(new uint8_t[bytes.size()]);
        std::copy(bytes.begin(), bytes.end(), exact.get());
        LLVMFuzzerTestOneInput(exact.get(), bytes.size());
    }
    std::printf("%zu inputs replayed\n", inputs.size());
    return 0;
}
