// A record of the message boxes that appear while a test runs, each confirmed at once.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/win32.h"

namespace depot::test {

// What one message box showed.
struct ShownBox {
    std::string caption;
    std::string text;
    bool hasErrorIcon = false;
    bool isTopmost = false;
    bool isForeground = false;
    HWND owner = nullptr;
    int buttons = 0;
};

// Watches from its construction to its end: no test hangs on a box. It is watching already when the
// constructor returns, so that boxes shown while a library is loaded are seen, too.
class BoxLog {
public:
    BoxLog();
    ~BoxLog();
    BoxLog(const BoxLog&) = delete;
    BoxLog& operator=(const BoxLog&) = delete;

    // The boxes so far, in the order of their appearance.
    std::vector<ShownBox> Boxes() const;
    std::vector<std::string> Texts() const;

private:
    void Watch();
    void Confirm(HWND box, HICON errorIcon);

    mutable std::mutex mutex_;
    std::vector<ShownBox> boxes_;
    std::atomic<bool> ending_ = false;
    std::atomic<bool> running_ = false;
    std::thread thread_;
};

}  // namespace depot::test
