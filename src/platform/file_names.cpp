#include "platform/file_names.h"

#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot {
namespace {

// Returns CSTR_LESS_THAN, CSTR_EQUAL or CSTR_GREATER_THAN.
int Compare(const std::string& left, const std::string& right) {
    const std::wstring wideLeft = WideFromAnsi(left), wideRight = WideFromAnsi(right);
    return CompareStringOrdinal(wideLeft.data(), static_cast<int>(wideLeft.size()),
                                wideRight.data(), static_cast<int>(wideRight.size()), TRUE);
}

}  // namespace

bool FileNameLess::operator()(const std::string& left, const std::string& right) const {
    return Compare(left, right) == CSTR_LESS_THAN;
}

bool IsSameFileName(const std::string& left, const std::string& right) {
    return Compare(left, right) == CSTR_EQUAL;
}

}  // namespace depot
