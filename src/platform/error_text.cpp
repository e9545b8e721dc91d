#include "platform/error_text.h"

#include <memory>

#include "platform/code_page.h"
#include "platform/text.h"
#include "platform/user_notice.h"

namespace depot {
namespace {

constexpr DWORD kSystemText =
    FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;

struct LocalTextFreer {
    void operator()(char* text) const { LocalFree(text); }
};
using UniqueLocalText = std::unique_ptr<char, LocalTextFreer>;

// Returns nothing when the system has no text for the code.
UniqueLocalText SystemText(DWORD error) {
    char* text = nullptr;
    // With this flag the call takes the address of a pointer where it says it takes a buffer.
    FormatMessageA(kSystemText, nullptr, error, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                   reinterpret_cast<char*>(&text), 0, nullptr);
    return UniqueLocalText(text);
}

std::string ComposeMessage(DWORD error, const std::string& lead) {
    if (error == 0) return lead.empty() ? "Unknown Error" : lead;
    const UniqueLocalText systemText = SystemText(error);
    if (!systemText) return lead;
    return Concatenate({lead, lead.empty() ? "" : "\n", systemText.get()});
}

void Deliver(const std::string& message, const char* title, std::string* text, HWND owner) {
    if (text != nullptr) {
        *text = message;
    } else {
        ShowNotice(message, title, owner);
    }
}

}  // namespace

void FormatErrorText(DWORD error, const char* lead, const char* title, std::string* text,
                     HWND owner) {
    const std::string message = ComposeMessage(error, lead != nullptr ? lead : "");
    Deliver(std::string(CutToBytes(message, kErrorTextBytes - 1)),
            title != nullptr ? title : "Error", text, owner);
}

void ReportErrorText(DWORD error, const char* lead, const char* title, std::string* text) {
    FormatErrorText(error, lead, title != nullptr ? title : kNoticeTitle, text, nullptr);
}

}  // namespace depot
