#include "support/results.h"

#include <cstddef>
#include <iomanip>
#include <sstream>

#ifdef _WIN32
#include "platform/directory_client.h"
#endif

namespace depot {

void PrintTo(Reason reason, std::ostream* stream) {
    static constexpr const char* kNames[] = {
        "kMissing",    "kExists",     "kChanged", "kNotEmpty",    "kUnseen",  "kBadName",
        "kSharedName", "kIncomplete", "kStopped", "kUnreachable", "kInvalid", "kRefused"};
    *stream << kNames[static_cast<std::size_t>(reason)];
}

void PrintTo(const Error& error, std::ostream* stream) {
    PrintTo(error.reason, stream);
    *stream << ", "
            << (error.kind == CodeKind::kDirectory ? test::DirectoryCodeName(error.code)
                                                   : "system error " + std::to_string(error.code))
            << ", \"" << error.text << '"';
}

void PrintTo(const Result& result, std::ostream* stream) {
    if (result.IsDone()) {
        *stream << "done";
    } else {
        PrintTo(result.Why(), stream);
    }
}

}  // namespace depot

namespace depot::test {
namespace {

struct CodeName {
    std::uint32_t code;
    const char* name;
};

#ifdef _WIN32
#define DEPOT_CODE(code) \
    { static_cast<std::uint32_t>(code), #code }
constexpr CodeName kDirectoryCodes[] = {
    DEPOT_CODE(LDAP_SUCCESS),
    DEPOT_CODE(LDAP_OPERATIONS_ERROR),
    DEPOT_CODE(LDAP_PROTOCOL_ERROR),
    DEPOT_CODE(LDAP_TIMELIMIT_EXCEEDED),
    DEPOT_CODE(LDAP_SIZELIMIT_EXCEEDED),
    DEPOT_CODE(LDAP_STRONG_AUTH_REQUIRED),
    DEPOT_CODE(LDAP_UNAVAILABLE_CRIT_EXTENSION),
    DEPOT_CODE(LDAP_NO_SUCH_ATTRIBUTE),
    DEPOT_CODE(LDAP_INVALID_SYNTAX),
    DEPOT_CODE(LDAP_NO_SUCH_OBJECT),
    DEPOT_CODE(LDAP_INVALID_DN_SYNTAX),
    DEPOT_CODE(LDAP_INAPPROPRIATE_AUTH),
    DEPOT_CODE(LDAP_INVALID_CREDENTIALS),
    DEPOT_CODE(LDAP_INSUFFICIENT_RIGHTS),
    DEPOT_CODE(LDAP_BUSY),
    DEPOT_CODE(LDAP_UNAVAILABLE),
    DEPOT_CODE(LDAP_UNWILLING_TO_PERFORM),
    DEPOT_CODE(LDAP_NAMING_VIOLATION),
    DEPOT_CODE(LDAP_NOT_ALLOWED_ON_NONLEAF),
    DEPOT_CODE(LDAP_ALREADY_EXISTS),
    DEPOT_CODE(LDAP_OTHER),
    DEPOT_CODE(LDAP_SERVER_DOWN),
    DEPOT_CODE(LDAP_LOCAL_ERROR),
    DEPOT_CODE(LDAP_TIMEOUT),
    DEPOT_CODE(LDAP_FILTER_ERROR),
    DEPOT_CODE(LDAP_USER_CANCELLED),
    DEPOT_CODE(LDAP_PARAM_ERROR),
    DEPOT_CODE(LDAP_NO_MEMORY),
    DEPOT_CODE(LDAP_CONNECT_ERROR),
    DEPOT_CODE(LDAP_NOT_SUPPORTED),
};
constexpr CodeName kHresults[] = {
    DEPOT_CODE(S_OK),
    DEPOT_CODE(S_FALSE),
    DEPOT_CODE(E_FAIL),
    DEPOT_CODE(E_INVALIDARG),
    DEPOT_CODE(E_NOINTERFACE),
    DEPOT_CODE(E_OUTOFMEMORY),
    DEPOT_CODE(E_POINTER),
    DEPOT_CODE(E_UNEXPECTED),
    DEPOT_CODE(CLASS_E_CLASSNOTAVAILABLE),
    DEPOT_CODE(CLASS_E_NOAGGREGATION),
    DEPOT_CODE(DISP_E_BADINDEX),
    DEPOT_CODE(DISP_E_BADPARAMCOUNT),
    DEPOT_CODE(DISP_E_EXCEPTION),
    DEPOT_CODE(DISP_E_MEMBERNOTFOUND),
    DEPOT_CODE(DISP_E_TYPEMISMATCH),
    DEPOT_CODE(DISP_E_UNKNOWNNAME),
    DEPOT_CODE(REGDB_E_CLASSNOTREG),
    DEPOT_CODE(TYPE_E_REGISTRYACCESS),
};
#undef DEPOT_CODE
#else
// The directory and COM are Windows' own.
constexpr CodeName kDirectoryCodes[] = {{0, "LDAP_SUCCESS"}};
constexpr CodeName kHresults[] = {{0, "S_OK"}};
#endif

template <std::size_t kCount>
std::string NameOf(std::uint32_t code, const CodeName (&names)[kCount]) {
    for (const CodeName& row : names) {
        if (row.code == code) return row.name;
    }
    return {};
}

}  // namespace

std::string DirectoryCodeName(std::uint32_t code) {
    const std::string name = NameOf(code, kDirectoryCodes);
    const std::string number = std::to_string(code);
    return name.empty() ? "directory code " + number : name + " (" + number + ")";
}

std::string HresultName(std::uint32_t code) {
    std::ostringstream text;
    text << NameOf(code, kHresults) << " (0x" << std::hex << std::setw(8) << std::setfill('0')
         << code << ")";
    return text.str();
}

Outcome OutcomeOf(const Result& result) {
    return {result.IsDone(), !result.IsDone(), result.IsDone() ? 0 : result.Why().code,
            testing::PrintToString(result)};
}

Outcome OutcomeOf(int flag) {
    return {flag == kDone, flag == kFailed, 0, flag == kDone ? "done" : "not done"};
}

Outcome OutcomeOf(std::uint32_t code) {
    return {code == 0, code != 0, code, DirectoryCodeName(code)};
}

Outcome OutcomeOf(unsigned long code) {
    return OutcomeOf(static_cast<std::uint32_t>(code));
}

Outcome OutcomeOf(long hresult) {
    const auto code = static_cast<std::uint32_t>(hresult);
    return {hresult == 0, hresult < 0, code, HresultName(code)};
}

void FailureMatcher::Describe(const char* verb, std::ostream* stream) const {
    *stream << verb;
    if (!code_) return;
    const bool isHresult = (*code_ & 0x80000000u) != 0;
    *stream << " with " << (isHresult ? HresultName(*code_) : DirectoryCodeName(*code_));
}

}  // namespace depot::test
