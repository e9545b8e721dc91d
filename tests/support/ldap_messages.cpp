#include "support/ldap_messages.h"

#include <utility>

namespace depot::test {
namespace {

constexpr unsigned char kSequence = 0x30;
constexpr unsigned char kInteger = 0x02;
constexpr unsigned char kEnumerated = 0x0A;
constexpr unsigned char kOctets = 0x04;

// The head of one element of a message.
struct Element {
    unsigned char tag = 0;
    std::size_t begin = 0;  // of what it holds
    std::size_t length = 0;
};

unsigned char ByteAt(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

// Returns nothing as long as the head is not whole.
std::optional<Element> ElementAt(std::string_view bytes, std::size_t at) {
    if (bytes.size() < at + 2) return std::nullopt;
    Element element = {ByteAt(bytes, at), at + 2, ByteAt(bytes, at + 1)};
    if (element.length < 0x80) return element;
    const std::size_t count = element.length & 0x7F;
    if (bytes.size() < element.begin + count) return std::nullopt;
    element.length = 0;
    for (std::size_t index = 0; index < count; ++index) {
        element.length = element.length << 8 | ByteAt(bytes, element.begin + index);
    }
    element.begin += count;
    return element;
}

int NumberIn(std::string_view bytes, const Element& element) {
    int number = 0;
    for (std::size_t index = 0; index < element.length; ++index) {
        number = number << 8 | ByteAt(bytes, element.begin + index);
    }
    return number;
}

// REQUIRES: less than 128 bytes of contents.
std::string Encoded(unsigned char tag, const std::string& contents) {
    return std::string{static_cast<char>(tag), static_cast<char>(contents.size())} + contents;
}

std::string EncodedNumber(unsigned char tag, int number) {
    std::string digits;
    do {
        digits.insert(digits.begin(), static_cast<char>(number & 0xFF));
        number >>= 8;
    } while (number != 0);
    // A first bit that is set would make the number negative.
    if (ByteAt(digits, 0) >= 0x80) digits.insert(digits.begin(), '\0');
    return Encoded(tag, digits);
}

unsigned char AnswerTo(LdapOperation request) {
    switch (request) {
        case LdapOperation::kSearch:
            return static_cast<unsigned char>(LdapOperation::kSearchResult);
        case LdapOperation::kDelete:
            return 0x6B;  // the request has a bit less, because it is a bare name
        default:
            return static_cast<unsigned char>(static_cast<unsigned char>(request) + 1);
    }
}

}  // namespace

bool IsAnswered(LdapOperation request) {
    return request != LdapOperation::kUnbind && request != LdapOperation::kAbandon &&
           request != LdapOperation::kNone;
}

bool EndsAnswer(LdapOperation answer) {
    return answer != LdapOperation::kSearchEntry && answer != LdapOperation::kSearchReference &&
           answer != LdapOperation::kIntermediate && answer != LdapOperation::kNone;
}

LdapMessage ResultMessage(const LdapMessage& request, int code) {
    const std::string noText = Encoded(kOctets, {});
    const std::string result = EncodedNumber(kEnumerated, code) + noText + noText;
    const unsigned char tag = AnswerTo(request.operation);
    return {Encoded(kSequence, EncodedNumber(kInteger, request.id) + Encoded(tag, result)),
            request.id, static_cast<LdapOperation>(tag)};
}

std::optional<LdapMessage> MessageSplitter::Next() {
    if (bytes_.empty()) return std::nullopt;
    plain_ = plain_ && ByteAt(bytes_, 0) == kSequence;
    if (!plain_) return LdapMessage{std::exchange(bytes_, {})};
    const std::optional<Element> whole = ElementAt(bytes_, 0);
    if (!whole || bytes_.size() < whole->begin + whole->length) return std::nullopt;
    LdapMessage message;
    message.bytes = bytes_.substr(0, whole->begin + whole->length);
    bytes_.erase(0, message.bytes.size());
    if (const std::optional<Element> id = ElementAt(message.bytes, whole->begin)) {
        message.id = NumberIn(message.bytes, *id);
        const std::size_t operation = id->begin + id->length;
        if (operation < message.bytes.size()) {
            message.operation = static_cast<LdapOperation>(ByteAt(message.bytes, operation));
        }
    }
    return message;
}

}  // namespace depot::test
