#include "platform/environment.h"

#include "platform/win32.h"

namespace depot {
namespace {

constexpr DWORD kExpandedBytes = 520;

}  // namespace

std::string ExpandEnvironment(const std::string& text) {
    char expanded[kExpandedBytes] = {};
    // A result that does not fit is reported by its size and leaves a cut text in the buffer.
    const DWORD size = ExpandEnvironmentStringsA(text.c_str(), expanded, kExpandedBytes);
    const bool usable = size != 0 && size <= kExpandedBytes && *expanded != '\0';
    return usable ? expanded : text;
}

}  // namespace depot
