#include "depotbrowser/prompt_text.h"

#include "platform/module_state.h"

namespace depot {

std::wstring PromptText(UINT id) {
    // With no room given, the call hands out the text in place, which has no terminating NUL.
    const wchar_t* text = nullptr;
    const int length = LoadStringW(OwnModule(), id, reinterpret_cast<wchar_t*>(&text), 0);
    return length > 0 ? std::wstring(text, static_cast<std::size_t>(length)) : std::wstring();
}

}  // namespace depot
