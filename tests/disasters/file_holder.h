// A virus scanner, an indexer or a backup that opens whatever it finds, and keeps it for a moment.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace depot::test {

// Holds one file after another, of these folders and their subfolders, for so long that nobody else
// can open it meanwhile. Works from its construction to its end.
class FileHolder {
public:
    FileHolder(std::vector<std::string> folders, unsigned milliseconds, unsigned seed);
    ~FileHolder();
    FileHolder(const FileHolder&) = delete;
    FileHolder& operator=(const FileHolder&) = delete;

    // While this lives, nothing is held.
    std::unique_lock<std::mutex> Rest() { return std::unique_lock(mutex_); }
    int Count() const { return count_; }

private:
    void Work(unsigned seed);

    const std::vector<std::string> folders_;
    const unsigned milliseconds_;
    std::mutex mutex_;
    std::atomic<bool> isEnding_ = false;
    std::atomic<int> count_ = 0;
    std::thread thread_;
};

}  // namespace depot::test
