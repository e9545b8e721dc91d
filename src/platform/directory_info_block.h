// What all processes know together about one directory server.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/not_copied.h"
#include "platform/shared_block.h"

namespace depot {

// The block's layout, which every process that opens it must agree on.
struct DirectoryInfo {
    static constexpr std::size_t kTextBytes = 260;

    char userName[kTextBytes];  // last given, NUL-terminated
    char password[kTextBytes];  // last given, NUL-terminated plain text
    std::uint32_t lastError;    // the last directory result code that any process saw
    std::uint32_t noPrompt;     // 1 while no process may ask for credentials
};
static_assert(sizeof(DirectoryInfo) == 528);
static_assert(offsetof(DirectoryInfo, password) == 260);
static_assert(offsetof(DirectoryInfo, lastError) == 520);
static_assert(offsetof(DirectoryInfo, noPrompt) == 524);

// The way to one server's block, "Quillon - Depot - LDAP Info - <key>". Nothing is open until the
// first access.
class DirectoryInfoBlock : NotCopied {
public:
    explicit DirectoryInfoBlock(std::string key) { link_.key = std::move(key); }
    // Closes the last handle and the last view.
    ~DirectoryInfoBlock() { CloseSharedBlock(link_); }

    // Opens the block afresh and returns its contents, shared with all processes; null when it
    // cannot be had. The result stays valid until this object is destroyed.
    //
    // Kept: each access adds one handle and one view to the process, and only the last pair is
    // closed with this object.
    // Relied on by: other processes, for which the block stays alive as long as this process runs.
    DirectoryInfo* Access();

    // Returns the contents as the last access opened them; null when nothing is open.
    const DirectoryInfo* Present() const {
        return static_cast<const DirectoryInfo*>(link_.view.get());
    }

    const std::string& Key() const { return link_.key; }

private:
    SharedBlockLink link_;
};

}  // namespace depot
