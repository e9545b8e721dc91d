#include "depotctl/key_argument.h"

#include "depotctl/utf8_text.h"
#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot::ctl {

std::string KeyArgument(std::string key) {
    if (!key.starts_with('<')) return key;
    if (EndsInAscii(key, '\\')) key.pop_back();
    if (EndsInAscii(key, '>')) return key.substr(1, key.size() - 2);
    return key;
}

bool SameKey(const std::string& left, const std::string& right) {
    return CompareStringOrdinal(WideFromUtf8(left).c_str(), -1, WideFromUtf8(right).c_str(), -1,
                                TRUE) == CSTR_EQUAL;
}

}  // namespace depot::ctl
