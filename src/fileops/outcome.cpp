#include "fileops/outcome.h"

namespace depot {
namespace {

bool HasOwnCodes(const StorePath& place) {
    return !place.store->IsLocal();
}

// The directory's code by which a copy is reported; that of an entry that is not there depends on
// what was looking for it.
std::uint32_t ReportedCode(const CopyRequest& request, const CopyOutcome& outcome) {
    const Error& why = outcome.result.Why();
    const bool isMissing = why.reason == Reason::kMissing;
    const bool betweenEntries = HasOwnCodes(request.from) && HasOwnCodes(request.to);
    switch (outcome.stage) {
        case CopyStage::kSource:
            if (!isMissing) return why.code;
            return betweenEntries ? LDAP_PARAM_ERROR : LDAP_INVALID_DN_SYNTAX;
        case CopyStage::kTree:
            return isMissing ? std::uint32_t{LDAP_INVALID_DN_SYNTAX} : why.code;
        case CopyStage::kTarget:
            if (!betweenEntries || !outcome.isFile || why.reason == Reason::kExists ||
                why.reason == Reason::kUnseen) {
                return why.code;
            }
            return LDAP_PARAM_ERROR;
        default:
            return why.code;
    }
}

// What a rename reports for an entry that it cannot look up.
Error UnknownAsParameterError(Error error) {
    if (error.code == LDAP_INVALID_DN_SYNTAX || error.code == LDAP_NO_SUCH_OBJECT) {
        error.code = LDAP_PARAM_ERROR;
        error.text.clear();
    }
    return error;
}

}  // namespace

Result Reported(Store& store, Result result) {
    return result ? std::move(result) : store.Keep(result.Why());
}

Result ReportedCopy(const CopyRequest& request, const CopyOutcome& outcome) {
    if (outcome.result) return {};
    Error error = outcome.result.Why();
    if (error.kind == CodeKind::kDirectory) {
        const std::uint32_t code = ReportedCode(request, outcome);
        if (code != error.code) error.text.clear();
        error.code = code;
    }
    return HasOwnCodes(request.from) ? request.from.store->Keep(std::move(error))
                                     : request.to.store->Keep(std::move(error));
}

Result ReportedMove(Store& store, Result moved) {
    return moved ? std::move(moved) : store.Keep(UnknownAsParameterError(moved.Why()));
}

}  // namespace depot
