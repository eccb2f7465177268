// Stands in for libFuzzer's driver when the compiler has none (g++): every
// file named on the command line, or found directly inside a directory named
// there, is read and handed once to the target's LLVMFuzzerTestOneInput. The
// ctest of each target runs its seed corpus this way, so the entry points and
// their checks run in every ordinary build; a failed check aborts as it would
// under libFuzzer.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool ReadWhole(const std::filesystem::path& path, std::string& out) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    out.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::filesystem::path> inputs;
    for (int i = 1; i < argc; ++i) {
        std::filesystem::path arg(argv[i]);
        std::error_code ec;
        if (std::filesystem::is_directory(arg, ec)) {
            std::vector<std::filesystem::path> files;
            for (const auto& entry : std::filesystem::directory_iterator(arg, ec)) {
                if (entry.is_regular_file(ec)) files.push_back(entry.path());
            }
            std::sort(files.begin(), files.end());
            inputs.insert(inputs.end(), files.begin(), files.end());
        } else if (!arg.empty() && arg.native()[0] != '-') {
            inputs.push_back(arg);  // libFuzzer-style flags are ignored
        }
    }
    if (inputs.empty()) {
        std::fprintf(stderr, "usage: %s <input file or directory>...; no inputs found\n", argv[0]);
        return 2;
    }
    for (const auto& path : inputs) {
        std::string data;
        if (!ReadWhole(path, data)) {
            std::fprintf(stderr, "cannot read %s\n", path.c_str());
            return 2;
        }
        std::printf("Running: %s (%zu bytes)\n", path.c_str(), data.size());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(data.data()), data.size());
    }
    std::printf("Replayed %zu inputs\n", inputs.size());
    return 0;
}
