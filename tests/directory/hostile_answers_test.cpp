// Answers that no directory server gives: the operations end, and nothing else happens.
//
// DEPOTINTR_FUZZ_ROUNDS is how many rounds are run instead of those of every day; --gtest_shuffle
// gives each run other answers, by the seed that the program prints.
#include <cstdlib>

#include "platform/handles.h"
#include "support/directory_fixture.h"
#include "support/hostile_server.h"
#include "support/random_text.h"

namespace depot {
namespace {

using test::HostileServer;
using test::LdapMessage;
using test::LdapOperation;

constexpr char kBase[] = "cn=Base,dc=farrow,dc=test";

std::string Ber(unsigned char tag, const std::string& contents) {
    std::string bytes(1, static_cast<char>(tag));
    const std::size_t size = contents.size();
    if (size < 0x80) return bytes + static_cast<char>(size) + contents;
    bytes += '\x84';
    for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>(size >> shift & 0xFF);
    return bytes + contents;
}

// Makes answers, from those that are nearly in order to mere bytes.
class Answers {
public:
    explicit Answers(std::uint32_t seed) : random_(seed) {}

    HostileServer::Answer To(const LdapMessage& request) {
        const bool isBind = request.operation == LdapOperation::kBind;
        // Most binds succeed, or nothing else would be seen.
        if (isBind && random_.Below(20) != 0) return {ResultMessage(request, 0).bytes, false};
        switch (random_.Below(8)) {
            case 0:
                return {random_.Bytes(300), true};
            case 1:
                return {Envelope(request.id, Ber(AnyTag(), random_.Bytes(200))), true};
            case 2:
                return {Mutated(Entries(request)), true};
            case 3:
                return {Envelope(AnyNumber(), Entry()) + Result(request), true};
            case 4:
                return {Nested(), true};
            case 5:
                return {ResultMessage(request, static_cast<int>(random_.Below(130))).bytes, false};
            case 6:
                return {Mutated(Result(request)), true};
            default:
                return {Entries(request), false};
        }
    }

private:
    unsigned char AnyTag() { return static_cast<unsigned char>(random_.Below(256)); }
    int AnyNumber() { return static_cast<int>(random_.Below(0x7FFFFFFF)); }

    static std::string Number(int number) {
        std::string bytes;
        for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>(number >> shift & 0xFF);
        return Ber(0x02, bytes);
    }
    static std::string Envelope(int id, const std::string& operation) {
        return Ber(0x30, Number(id) + operation);
    }

    std::string Result(const LdapMessage& request) {
        return ResultMessage(request, static_cast<int>(random_.Below(3)) * 4).bytes;
    }

    std::string Name() {
        static const std::vector<std::string> kPieces = {"a",
                                                         ".krc",
                                                         "..",
                                                         "\\",
                                                         "/",
                                                         ",",
                                                         "\\2C",
                                                         "=",
                                                         "cn=",
                                                         "%s",
                                                         "\"",
                                                         "\xC3\xA9",
                                                         "\xFF",
                                                         "\\C3\\A9",
                                                         " ",
                                                         "CON",
                                                         std::string(1, '\0'),
                                                         std::string(300, 'x'),
                                                         "~1",
                                                         ":",
                                                         "+"};
        return random_.Pieces(4, kPieces);
    }

    std::string Values() {
        std::string values;
        for (std::size_t count = random_.Below(4); count > 0; --count) {
            static const std::vector<std::string> kClasses = {"quillonFolder", "quillonFileBinary",
                                                              "top", ""};
            const bool isClass = random_.Below(2) == 0;
            values += Ber(0x04, isClass ? random_.Pieces(1, kClasses) : random_.Bytes(500));
        }
        return values;
    }

    std::string Entry() {
        static const std::vector<std::string> kAttributes = {
            "objectClass", "cn", "quillonFileContentsBinary", "supportedControl", "entryUUID", ""};
        const std::string dn = random_.Below(8) == 0
                                   ? random_.Bytes(100)
                                   : "cn=" + Name() + (random_.Below(4) == 0 ? "" : ",") + kBase;
        std::string attributes;
        for (std::size_t count = random_.Below(5); count > 0; --count) {
            attributes +=
                Ber(0x30, Ber(0x04, random_.Pieces(1, kAttributes)) + Ber(0x31, Values()));
        }
        return Ber(0x64, Ber(0x04, dn) + Ber(0x30, attributes));
    }

    std::string Entries(const LdapMessage& request) {
        std::string bytes;
        if (request.operation == LdapOperation::kSearch) {
            for (std::size_t count = random_.Below(6); count > 0; --count) {
                // Wine's client ends the process over a reference in front of an entry.
                const bool isReference = !bytes.empty() && random_.Below(10) == 0;
                bytes += Envelope(request.id,
                                  isReference ? Ber(0x73, Ber(0x04, "ldap://" + Name())) : Entry());
            }
        }
        return bytes + Result(request);
    }

    static char NoReference(char tag) { return tag == '\x73' ? '\x72' : tag; }

    std::string Mutated(std::string bytes) {
        for (std::size_t count = 1 + random_.Below(4); count > 0 && !bytes.empty(); --count) {
            const std::size_t at = random_.Below(bytes.size());
            switch (random_.Below(3)) {
                case 0:
                    bytes[at] = NoReference(static_cast<char>(random_.Below(256)));
                    break;
                case 1:
                    bytes.erase(at, 1 + random_.Below(8));
                    break;
                default:
                    bytes.insert(at, random_.Bytes(8));
            }
        }
        return bytes;
    }

    std::string Nested() {
        std::string bytes;
        for (std::size_t depth = random_.Below(2000); depth > 0; --depth) bytes += "\x30\x80";
        return bytes;
    }

    test::RandomTexts random_;
};

int Rounds() {
    constexpr int kEveryDay = 60;
    const char* const given = std::getenv("DEPOTINTR_FUZZ_ROUNDS");
    return given != nullptr ? std::atoi(given) : kEveryDay;
}

class HostileAnswersTest : public testing::Test {
protected:
    std::unique_ptr<CDepotPath> Location() const {
        CDepotPath location(nullptr);
        location.type = kDirectoryLocation;
        location.host = "127.0.0.1";
        location.port = server_.Port();
        location.path = kBase;
        location.authentication = kAnonymousAuthentication;
        return location.Clone();
    }

    // Every operation, each with an object of its own: a failed one serves no more.
    void TryEverything() {
        const std::string dn = std::string("cn=file.krc,") + kBase;
        const auto with = [this](auto operation) {
            const std::unique_ptr<CDepotPath> location = Location();
            CLDAPItems items(location.get());
            items.Connection().SetPrompt(nullptr);
            if (items.ConnectQuietly() != 0) operation(items);
        };
        with([&](CLDAPItems& items) { static_cast<void>(items.Entries().Find(dn)); });
        with([&](CLDAPItems& items) {
            LdapItemList found;
            items.ListChildren(kBase, found);
        });
        with([&](CLDAPItems& items) {
            FileBuffer buffer;
            items.ReadFileContents(dn, buffer);
        });
        with([&](CLDAPItems& items) { items.AddFileEntry(dn, "file.krc", "abc", 3); });
        with([&](CLDAPItems& items) { items.ReplaceFileContents(dn, "abc", 3); });
        with([&](CLDAPItems& items) {
            items.RenameEntry(dn, "cn=b.krc," + std::string(kBase), {});
        });
        with([&](CLDAPItems& items) { items.DeleteTree(kBase, nullptr); });
        with([&](CLDAPItems& items) { items.EnsureFolderPath(kBase, false, nullptr); });
    }

    Answers answers_{20};
    HostileServer server_{[this](const LdapMessage& request) { return answers_.To(request); }};
    // Without a shared block: each access to one keeps a handle, and there are many here.
    const UniqueHandle noBlock_{CreateEventA(
        nullptr, TRUE, FALSE,
        ("Quillon - Depot - LDAP Info - " + ServerKey("127.0.0.1", server_.Port())).c_str())};
    test::BoxLog boxes_;
};

TEST_F(HostileAnswersTest, EveryOperationEnds) {
    const int rounds = Rounds();
    for (int round = 0; round < rounds; ++round) TryEverything();
    RecordProperty("requests", server_.Requests());
    EXPECT_LE(rounds * 8, server_.Requests());
    std::printf("%d rounds of 8 operations, %d requests answered\n", rounds, server_.Requests());
}

}  // namespace
}  // namespace depot
