#include "disasters/file_holder.h"

#include <random>

#include "platform/handles.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

void CollectFiles(const std::string& folder, std::vector<std::string>& files) {
    for (const std::string& path : FilesIn(folder, "*")) {
        const DWORD attributes = GetFileAttributesA(path.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) continue;
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            CollectFiles(path, files);
        } else {
            files.push_back(path);
        }
    }
}

}  // namespace

FileHolder::FileHolder(std::vector<std::string> folders, unsigned milliseconds, unsigned seed)
    : folders_(std::move(folders)),
      milliseconds_(milliseconds),
      thread_([this, seed] { Work(seed); }) {}

FileHolder::~FileHolder() {
    isEnding_ = true;
    thread_.join();
}

void FileHolder::Work(unsigned seed) {
    std::mt19937 random(seed);
    while (!isEnding_) {
        {
            const auto lock = Rest();
            std::vector<std::string> files;
            for (const std::string& folder : folders_) CollectFiles(folder, files);
            UniqueHandle held;
            if (!files.empty()) {
                const std::string& path = files[random() % files.size()];
                // Most read along with others; some want the file for themselves.
                const DWORD sharing = random() % 2 == 0 ? FILE_SHARE_READ : 0;
                held = OwnFile(CreateFileA(path.c_str(), GENERIC_READ, sharing, nullptr,
                                           OPEN_EXISTING, 0, nullptr));
            }
            if (held) {
                ++count_;
                Sleep(random() % milliseconds_);
            }
        }
        Sleep(1);
    }
}

}  // namespace depot::test
