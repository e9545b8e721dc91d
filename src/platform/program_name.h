// The file name of the program that this process runs.
#pragma once

#include <iterator>
#include <string_view>

#include "platform/not_copied.h"
#include "platform/win32.h"

namespace depot {

// The name without its folder, found without memory; empty when the path is longer than any that
// programs are started by.
class ProgramName : NotCopied {
public:
    ProgramName() {
        const DWORD length =
            GetModuleFileNameW(nullptr, path_, static_cast<DWORD>(std::size(path_)));
        if (length >= std::size(path_)) return;
        name_ = std::wstring_view(path_, length).rfind(L'\\') + 1;
        length_ = length;
    }

    const wchar_t* Get() const { return length_ == 0 ? L"" : path_ + name_; }

private:
    wchar_t path_[1024] = {};
    std::size_t name_ = 0;
    std::size_t length_ = 0;
};

}  // namespace depot
