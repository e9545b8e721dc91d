// Watching a transfer: a bar on a terminal, and the end when the user wants it.
#pragma once

#include <cstdint>
#include <string>

#include "depotctl/terminal.h"
#include "fileops/transfer_progress.h"
#include "platform/not_copied.h"

namespace depot::ctl {

// While one of these lives, Ctrl+C and Ctrl+Break are noted and do not end the program.
class InterruptScope : NotCopied {
public:
    InterruptScope();
    ~InterruptScope();

    // Whether the user pressed one of them meanwhile.
    static bool WasInterrupted();
};

// Follows one transfer. Its bar is drawn on `stream` when that is a terminal, and wiped at the end.
class Progress : NotCopied {
public:
    explicit Progress(const OutputStream& stream) : stream_(stream), start_(GetTickCount64()) {}
    ~Progress();

    // What the transfer calls after each file.
    TransferWatcher Watcher() {
        return [this](const TransferProgress& state) { return Note(state); };
    }

    // The counts so far.
    std::uint32_t FilesDone() const { return last_.filesDone; }
    std::uint32_t FilesInAll() const { return last_.filesInAll; }
    std::uint64_t BytesDone() const { return last_.bytesDone; }

    // Returns how far the work was when the user stopped it, followed by `rest`, which says of what
    // and what stays; empty when it was not stopped. The second one ends the command with it.
    std::string StoppedText(const std::string& rest) const;
    void RefuseWhenStopped(const std::string& rest) const;

private:
    bool Note(const TransferProgress& state);
    void Draw();

    const OutputStream& stream_;
    const InterruptScope interrupts_;
    std::uint64_t start_;
    std::uint64_t drawn_ = 0;
    std::size_t shown_ = 0;  // the columns of the bar on the screen
    TransferProgress last_;
};

}  // namespace depot::ctl
