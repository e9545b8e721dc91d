// Runs a fuzz target once for every file of the folders that the command line names.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz_input.h"

namespace {

int ReplayFolder(const char* folder) {
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::printf("%s\n", entry.path().c_str());
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++files;
    }
    return files;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    int files = 0;
    for (int index = 1; index < argumentCount; ++index) files += ReplayFolder(arguments[index]);
    // A corpus that is not there would be a test of nothing.
    return files > 0 ? 0 : 1;
}
