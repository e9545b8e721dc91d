#include "depotctl/progress.h"

#include <algorithm>
#include <atomic>

#include "depotctl/failure.h"
#include "depotctl/progress_line.h"

namespace depot::ctl {
namespace {

constexpr std::uint64_t kMillisecondsBetweenBars = 100;

// Set by the system's own thread.
std::atomic<bool> interrupted = false;

BOOL WINAPI NoteInterrupt(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
    interrupted = true;
    return TRUE;
}

}  // namespace

InterruptScope::InterruptScope() {
    interrupted = false;
    SetConsoleCtrlHandler(&NoteInterrupt, TRUE);
}

InterruptScope::~InterruptScope() {
    SetConsoleCtrlHandler(&NoteInterrupt, FALSE);
}

bool InterruptScope::WasInterrupted() {
    return interrupted;
}

Progress::~Progress() {
    if (shown_ == 0) return;
    try {
        stream_.Write("\r" + std::string(shown_, ' ') + "\r");
    } catch (...) {
        // A terminal that is gone needs no clean line.
    }
}

std::string Progress::StoppedText(const std::string& rest) const {
    if (!InterruptScope::WasInterrupted() || FilesDone() >= FilesInAll()) return {};
    return "stopped after " + std::to_string(FilesDone()) + " of " + std::to_string(FilesInAll()) +
           " " + rest;
}

void Progress::RefuseWhenStopped(const std::string& rest) const {
    const std::string text = StoppedText(rest);
    if (!text.empty()) Refuse(text);
}

bool Progress::Note(const TransferProgress& state) {
    last_ = state;
    const std::uint64_t now = GetTickCount64();
    if (stream_.IsTerminal() && now - drawn_ >= kMillisecondsBetweenBars) {
        drawn_ = now;
        Draw();
    }
    return !InterruptScope::WasInterrupted();
}

void Progress::Draw() {
    const std::size_t columns = std::max<std::size_t>(stream_.Columns(), 2) - 1;
    const double seconds = static_cast<double>(GetTickCount64() - start_) / 1000;
    const std::string line =
        ProgressLine({FilesDone(), FilesInAll(), BytesDone(), seconds}, columns);
    const std::size_t blanks = shown_ > line.size() ? shown_ - line.size() : 0;
    stream_.Write("\r" + line + std::string(blanks, ' '));
    shown_ = std::max(shown_, line.size());
}

}  // namespace depot::ctl
