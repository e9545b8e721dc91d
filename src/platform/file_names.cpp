#include "platform/file_names.h"

#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot {
namespace {

// Returns CSTR_LESS_THAN, CSTR_EQUAL or CSTR_GREATER_THAN.
int Compare(const std::wstring& left, const std::wstring& right) {
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE);
}

}  // namespace

bool IsSameFileName(const std::string& left, const std::string& right) {
    return Compare(WideFromAnsi(left), WideFromAnsi(right)) == CSTR_EQUAL;
}

bool FileNameSet::Insert(const std::string& name) {
    return names_.insert(WideFromAnsi(name)).second;
}

bool FileNameSet::Less::operator()(const std::wstring& left, const std::wstring& right) const {
    return Compare(left, right) == CSTR_LESS_THAN;
}

}  // namespace depot
