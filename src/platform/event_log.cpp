#include "platform/event_log.h"

#include <iterator>
#include <memory>
#include <mutex>

#include "platform/event_text.h"
#include "platform/lock.h"
#include "platform/program_name.h"
#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

struct SourceCloser {
    void operator()(HANDLE source) const { DeregisterEventSource(source); }
};
using UniqueSource = std::unique_ptr<void, SourceCloser>;

// No character takes more bytes of a code page than this.
constexpr std::size_t kBytesOfACharacter = 4;

bool TakeEntry() {
    static Lock lock;
    static EntryBudget budget;
    const std::lock_guard guard(lock);
    return budget.Take(GetTickCount64());
}

WORD TypeOf(LogMessage message) {
    return message == LogMessage::kNoticeNotShown ? EVENTLOG_ERROR_TYPE : EVENTLOG_WARNING_TYPE;
}

}  // namespace

bool WriteToEventLog(LogMessage message, const std::string& text) {
    if (!TakeEntry()) return false;
    const ProgramName program;
    const std::wstring programText = EventText(program.Get());
    const std::wstring eventText = EventText(
        WideFromAnsi(CutToBytes(UpToNul(text), (kEventTextLimit + 1) * kBytesOfACharacter)));
    const wchar_t* values[] = {programText.c_str(), eventText.c_str()};
    const UniqueSource source(RegisterEventSourceW(nullptr, kEventSource));
    return source &&
           ReportEventW(source.get(), TypeOf(message), 0, static_cast<DWORD>(message), nullptr,
                        static_cast<WORD>(std::size(values)), 0, values, nullptr) != FALSE;
}

}  // namespace depot
