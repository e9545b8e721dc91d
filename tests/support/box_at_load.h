// Reading and answering a message box that a call under test shows.
#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <thread>

#include "platform/win32.h"

namespace depot::test {

// What a box looked like.
struct SeenBox {
    std::string text;
    bool hasHandIcon = false;
    bool isTopmost = false;
    bool isForeground = false;
    bool hasOwner = false;
};

// Watches for message boxes of this process with a caption, from its construction on: its thread is
// running when the constructor returns, so that boxes shown while a library is loaded are seen too.
// Each box is read and confirmed.
class BoxWatcher {
public:
    explicit BoxWatcher(std::string caption);
    ~BoxWatcher();
    BoxWatcher(const BoxWatcher&) = delete;
    BoxWatcher& operator=(const BoxWatcher&) = delete;

    // Ends the watch. Returns the last box that was seen.
    std::optional<SeenBox> Finish();

    // How many boxes were seen. REQUIRES: the watch has ended.
    int Count() const { return count_; }

private:
    void Watch();
    void Answer(HWND window);

    std::string caption_;
    std::atomic<bool> running_{false};
    std::atomic<bool> finished_{false};
    std::optional<SeenBox> last_;
    int count_ = 0;
    HICON handIcon_ = nullptr;
    std::thread thread_;
};

}  // namespace depot::test
