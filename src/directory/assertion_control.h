// The assertion control as the client library takes it.
#pragma once

#include <string>

#include "directory/assertion.h"
#include "directory/entry_store.h"
#include "platform/not_copied.h"

namespace depot {

// The condition that an entry's contents are what `present` says, for one request.
class ContentsAssertion : NotCopied {
public:
    ContentsAssertion(const std::string& attribute, const FileBuffer& present)
        : filter_(present.bytes ? AssertEquals(attribute, BytesOf(present))
                                : AssertAbsent(attribute)) {
        control_.ldctl_oid = name_.data();
        control_.ldctl_value = {static_cast<ULONG>(filter_.size()),
                                reinterpret_cast<char*>(filter_.data())};
        // A server that does not know the control after all must not leave the condition out.
        control_.ldctl_iscritical = TRUE;
    }

    LDAPControlA** Controls() { return controls_; }

private:
    static std::string_view BytesOf(const FileBuffer& present) {
        return {reinterpret_cast<const char*>(present.bytes.get()), present.length};
    }

    std::string name_ = kAssertionControl;
    std::vector<std::uint8_t> filter_;
    LDAPControlA control_ = {};
    LDAPControlA* controls_[2] = {&control_, nullptr};
};

}  // namespace depot
