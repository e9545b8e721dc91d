// Directory messages as bytes on a connection: where each begins and ends, and whose it is.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace depot::test {

// The operations of a message, by the tags that they have on the connection.
enum class LdapOperation : unsigned char {
    kNone = 0,  // bytes that are no message, as an encrypted connection carries them
    kUnbind = 0x42,
    kDelete = 0x4A,
    kAbandon = 0x50,
    kBind = 0x60,
    kBindResult = 0x61,
    kSearch = 0x63,
    kSearchEntry = 0x64,
    kSearchResult = 0x65,
    kModify = 0x66,
    kAdd = 0x68,
    kRename = 0x6C,
    kCompare = 0x6E,
    kSearchReference = 0x73,
    kExtended = 0x77,
    kExtendedResult = 0x78,
    kIntermediate = 0x79,
};

struct LdapMessage {
    std::string bytes;
    int id = 0;
    LdapOperation operation = LdapOperation::kNone;
};

// Whether a server answers a request.
bool IsAnswered(LdapOperation request);

// Whether a message of a server is the last one that answers its request.
bool EndsAnswer(LdapOperation answer);

// Returns the message with which a server answers a request by a code alone.
LdapMessage ResultMessage(const LdapMessage& request, int code);

// Cuts what one side of a connection says into messages. From the first byte on that begins none,
// everything is passed on as it comes, without an operation.
class MessageSplitter {
public:
    void Add(std::string_view bytes) { bytes_.append(bytes); }

    // Returns the next whole message, or nothing as long as none is whole.
    std::optional<LdapMessage> Next();

private:
    bool plain_ = true;
    std::string bytes_;
};

}  // namespace depot::test
