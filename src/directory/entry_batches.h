// Work on several entries whose requests are under way together, for the sources of EntryStore.
#pragma once

#include <algorithm>
#include <vector>

#include "directory/entry_store.h"
#include "directory/request_batch.h"

namespace depot {

// Whether a server may refuse a request by this code only because others are under way.
inline bool IsOfTooMany(std::uint32_t code) {
    return code == LDAP_BUSY || code == LDAP_UNWILLING_TO_PERFORM ||
           code == LDAP_ADMIN_LIMIT_EXCEEDED;
}

template <class Send, class Take, class Alone>
void EntryStore::Together(std::size_t count, const Send& send, const Take& take,
                          const Alone& alone) {
    std::size_t window = Window();
    for (std::size_t first = 0; first < count;) {
        // What was sent since may have shown that the server takes one at a time.
        window = std::min(window, Window() > 1 ? kWidestWindow : 1);
        const std::size_t end = std::min(first + window, count);
        if (end - first == 1 || Prove() != LDAP_SUCCESS) {
            alone(first++);
            continue;
        }
        std::vector<std::size_t> refused;
        {
            RequestBatch batch(connection_);
            for (std::size_t index = first; index < end; ++index) send(batch, index);
            for (; first < end; ++first) {
                UniqueLdapMessage answer;
                const std::uint32_t code = batch.Await(answer);
                if (IsOfTooMany(code)) {
                    refused.push_back(first);
                } else {
                    take(first, code, answer.get());
                }
            }
        }
        // By itself each shows whether the server means it.
        takesOneAtATime_ = takesOneAtATime_ || !refused.empty();
        for (const std::size_t index : refused) alone(index);
        window *= 2;
    }
}

}  // namespace depot
