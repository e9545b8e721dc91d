// Requests of work on several entries that are under way together: what comes of each, however the
// server answers them and wherever the connection ends.
#include <gmock/gmock.h>

#include "directory/connection_scope.h"
#include "support/directory_fixture.h"
#include "support/relay.h"

namespace depot {
namespace {

using testing::Each;
using testing::HasSubstr;

constexpr std::size_t kMany = EntryStore::kWindow + 8;

// All requests of a window are sent meanwhile, also on a busy machine.
constexpr std::chrono::milliseconds kLong(400);

FileBuffer BufferOf(const std::string& text) {
    FileBuffer buffer = {static_cast<std::uint32_t>(text.size()),
                         std::make_unique<std::uint8_t[]>(text.size() + kFileBufferReserve)};
    std::copy(text.begin(), text.end(), buffer.bytes.get());
    return buffer;
}

std::string TextOf(const FileBuffer& buffer) {
    return buffer.bytes
               ? std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length)
               : "(none)";
}

class TogetherTest : public test::DirectoryFixture {
protected:
    TogetherTest() {
        location_ = server_.Location(base_).Clone();
        location_->port = relay_.Port();
        test::ForgetServer(relay_.Port());
        items_ = std::make_unique<CLDAPItems>(location_.get());
        EXPECT_THAT(items_->ConnectLocation(nullptr), test::IsDone());
    }

    EntryStore& Entries() { return items_->Entries(); }
    static std::string Name(std::size_t number) { return "f" + std::to_string(number) + ".kra"; }

    void AddMany() {
        for (std::size_t number = 0; number < kMany; ++number) {
            server_.AddFile(Name(number), base_, std::to_string(number));
        }
    }
    std::vector<ContentsRead> Reads() const {
        std::vector<ContentsRead> reads;
        for (std::size_t number = 0; number < kMany; ++number) reads.push_back({Dn(Name(number))});
        return reads;
    }
    // Each file's contents are its number.
    std::vector<ContentsWrite> Writes() {
        for (std::size_t number = 0; number < kMany; ++number) {
            buffers_.push_back(BufferOf(std::to_string(number)));
        }
        std::vector<ContentsWrite> writes;
        for (std::size_t number = 0; number < kMany; ++number) {
            writes.push_back({Dn(Name(number)), Name(number), &buffers_[number]});
        }
        return writes;
    }
    static void ExpectAllRead(const std::vector<ContentsRead>& reads) {
        for (std::size_t number = 0; number < reads.size(); ++number) {
            EXPECT_TRUE(reads[number].result.IsDone()) << number;
            EXPECT_EQ(std::to_string(number), TextOf(reads[number].contents));
        }
    }

    test::Relay relay_{server_.Port()};
    std::vector<FileBuffer> buffers_;
};

TEST_F(TogetherTest, WindowOfReadsIsOneRoundTrip) {
    AddMany();
    std::vector<ContentsRead> reads = Reads();
    relay_.HoldBack(kLong);
    relay_.Mark();
    Entries().ReadTogether(reads);
    const test::RelayCounts counts = relay_.Counts();
    ExpectAllRead(reads);
    EXPECT_EQ(static_cast<int>(kMany), counts.requests);
    EXPECT_EQ(EntryStore::kWindow, counts.mostUnderWay);
    EXPECT_EQ(2, counts.roundTrips);
}

TEST_F(TogetherTest, AnswersInAnotherOrderBelongToTheirRequests) {
    AddMany();
    std::vector<ContentsRead> reads = Reads();
    relay_.Disturb({.reversedAnswers = EntryStore::kWindow / 4});
    Entries().ReadTogether(reads);
    ExpectAllRead(reads);
}

TEST_F(TogetherTest, LateAnswerHoldsUpNothingButItself) {
    AddMany();
    std::vector<ContentsRead> reads = Reads();
    relay_.Disturb({.lateAnswer = 3, .lateness = std::chrono::milliseconds(300)});
    Entries().ReadTogether(reads);
    ExpectAllRead(reads);
}

TEST_F(TogetherTest, MissingEntryFailsByItself) {
    AddMany();
    std::vector<ContentsRead> reads = Reads();
    reads[5].dn = Dn("missing.kra");
    Entries().ReadTogether(reads);
    EXPECT_EQ(std::uint32_t{LDAP_NO_SUCH_OBJECT}, CodeOf(reads[5].result));
    EXPECT_TRUE(reads[6].result.IsDone());
}

TEST_F(TogetherTest, ServerThatTakesOneRequestAtATimeIsServedSo) {
    AddMany();
    for (const int code : {LDAP_BUSY, LDAP_UNWILLING_TO_PERFORM, LDAP_ADMIN_LIMIT_EXCEEDED}) {
        SCOPED_TRACE(code);
        relay_.Disturb({.limitUnderWay = 1, .codeOverLimit = code});
        std::vector<ContentsRead> reads = Reads();
        Entries().ReadTogether(reads);
        ExpectAllRead(reads);
        EXPECT_EQ(1u, Entries().Window());
    }
}

// Entries that are not there are deleted without any effect but the request.
std::vector<Removal> Removals(std::size_t count, const std::string& base) {
    std::vector<Removal> removals;
    for (std::size_t number = 0; number < count; ++number) {
        removals.push_back({"cn=missing" + std::to_string(number) + ".kra," + base});
    }
    return removals;
}

TEST_F(TogetherTest, ServerThatTakesAWindowGetsTwiceAsManyUpToTheWidest) {
    const std::size_t window = EntryStore::kWindow, widest = EntryStore::kWidestWindow;
    std::vector<Removal> removals = Removals(window + 2 * window + widest + 10, base_);
    relay_.HoldBack(kLong);
    relay_.Mark();
    Entries().RemoveTogether(removals);
    const test::RelayCounts counts = relay_.Counts();
    EXPECT_EQ(static_cast<int>(removals.size()), counts.requests);
    EXPECT_EQ(widest, counts.mostUnderWay);
    EXPECT_EQ(4, counts.roundTrips);
    for (const Removal& removal : removals) EXPECT_TRUE(removal.result.Is(Reason::kMissing));
}

TEST_F(TogetherTest, ServerThatTakesNoWiderWindowIsServedOneByOneFromThere) {
    std::vector<Removal> removals = Removals(2 * EntryStore::kWindow + 10, base_);
    relay_.HoldBack(kLong / 8);
    const std::size_t taken = EntryStore::kWindow;
    relay_.Disturb({.limitUnderWay = taken, .codeOverLimit = LDAP_BUSY});
    Entries().RemoveTogether(removals);
    EXPECT_EQ(1u, Entries().Window());
    for (const Removal& removal : removals) EXPECT_TRUE(removal.result.Is(Reason::kMissing));
}

TEST_F(TogetherTest, FilesAreAddedReplacedAndRemoved) {
    std::vector<ContentsWrite> writes = Writes();
    Entries().AddFilesTogether(writes);
    for (const ContentsWrite& write : writes) EXPECT_TRUE(write.result.IsDone());
    Entries().AddFilesTogether(writes);
    for (const ContentsWrite& write : writes) EXPECT_TRUE(write.result.Is(Reason::kExists));
    buffers_[7] = BufferOf("new");
    Entries().ReplaceTogether(writes);
    EXPECT_EQ("new", Contents(Dn(Name(7))));
    EXPECT_EQ("8", Contents(Dn(Name(8))));
    std::vector<Removal> removals;
    for (std::size_t number = 0; number < kMany; ++number) {
        removals.push_back({Dn(Name(number)), DigestOf(buffers_[number])});
    }
    removals[8].contents = DigestOf(buffers_[9]);
    Entries().RemoveTogether(removals);
    EXPECT_EQ(kContentsChanged, CodeOf(removals[8].result));
    EXPECT_EQ("8", Contents(Dn(Name(8))));
    removals[8].result = {};
    for (const Removal& removal : removals) EXPECT_TRUE(removal.result.IsDone());
    EXPECT_FALSE(server_.Holds(Dn(Name(7))));
}

TEST_F(TogetherTest, FolderThatExistsIsLeftAsItIs) {
    server_.AddFolder("d1", base_);
    std::vector<FolderAddition> folders = {{Dn("d0"), "d0"}, {Dn("d1"), "d1"}, {Dn("d2"), "d2"}};
    Entries().AddFoldersTogether(folders);
    for (const FolderAddition& folder : folders) EXPECT_TRUE(folder.result.IsDone()) << folder.dn;
    EXPECT_TRUE(server_.Holds(Dn("d2")));
}

TEST_F(TogetherTest, ListingsHaveTheirOwnChildren) {
    for (const char* folder : {"d0", "d1", "d2"}) {
        server_.AddFolder(folder, base_);
        server_.AddFile(std::string(folder) + ".kra", Dn(folder), "x");
    }
    std::vector<FolderListing> listings(4);
    listings[0].dn = Dn("d0");
    listings[1].dn = Dn("missing");
    listings[2].dn = Dn("d2");
    listings[3].dn = Dn("d1");
    Entries().ListTogether(listings);
    EXPECT_EQ(std::uint32_t{LDAP_NO_SUCH_OBJECT}, CodeOf(listings[1].result));
    EXPECT_EQ(0u, listings[1].items.Count());
    ASSERT_EQ(1u, listings[2].items.Count());
    EXPECT_THAT(listings[2].items.At(0).path, HasSubstr("d2.kra,cn=d2"));
    ASSERT_EQ(1u, listings[3].items.Count());
    EXPECT_THAT(listings[3].items.At(0).path, HasSubstr("d1.kra,cn=d1"));
}

// The window of requests is under way when an entry of it is deleted and another one changed.
TEST_F(TogetherTest, EntriesThatChangeWithinAWindowAreReadAsTheyAreByThen) {
    AddMany();
    std::vector<ContentsRead> reads = Reads();
    relay_.Disturb({.beforeRequest = [&](const test::RelayedRequest& request) {
        if (request.number != 5) return;
        server_.Apply("dn: " + Dn(Name(20)) + "\nchangetype: delete\n");
        server_.Apply("dn: " + Dn(Name(21)) +
                      "\nchangetype: modify\nreplace: quillonFileContentsBinary\n"
                      "quillonFileContentsBinary: changed\n");
    }});
    Entries().ReadTogether(reads);
    relay_.Disturb({});
    EXPECT_EQ(std::uint32_t{LDAP_NO_SUCH_OBJECT}, CodeOf(reads[20].result));
    EXPECT_EQ("changed", TextOf(reads[21].contents));
    for (const std::size_t number : {0, 4, 19, 22, 39}) {
        EXPECT_EQ(std::to_string(number), TextOf(reads[number].contents));
    }
}

// Of several listings that are under way together each shows for itself whether it passes the
// server's limit, and is repeated in pages then.
TEST_F(TogetherTest, ListingsAboveTheSizeLimitAreRepeatedInPages) {
    test::DirectoryServer limited(
        "database limits * size.soft=3 size.hard=3 size.prtotal=unlimited");
    test::ForgetServer(limited.Port());
    const std::unique_ptr<CDepotPath> location = limited.Location().Clone();
    CLDAPItems items(location.get());
    ASSERT_THAT(items.ConnectLocation(nullptr), test::IsDone());
    const std::vector<std::size_t> sizes = {2, 10, 0, 3, 4};
    std::vector<FolderListing> listings(sizes.size());
    for (std::size_t folder = 0; folder < sizes.size(); ++folder) {
        const std::string name = "d" + std::to_string(folder);
        limited.AddFolder(name, test::kSuffix);
        listings[folder].dn = "cn=" + name + "," + test::kSuffix;
        for (std::size_t file = 0; file < sizes[folder]; ++file) {
            limited.AddFile(Name(file), listings[folder].dn, "x");
        }
    }
    items.Entries().ListTogether(listings);
    for (std::size_t folder = 0; folder < sizes.size(); ++folder) {
        EXPECT_TRUE(listings[folder].result.IsDone()) << folder;
        EXPECT_EQ(sizes[folder], listings[folder].items.Count());
    }
}

// The server may have stored a file whose answer was lost, but none that is reported as done is
// missing, and none has other contents.
TEST_F(TogetherTest, ConnectionThatEndsAtAnyRequestLosesNoFileThatWasDone) {
    std::vector<ContentsWrite> writes = Writes();
    for (int position = 1; position <= static_cast<int>(EntryStore::kWindow); position += 3) {
        for (const bool before : {false, true}) {
            SCOPED_TRACE(position);
            relay_.Disturb({.dropBeforeRequest = before ? position : 0,
                            .dropAfterRequest = before ? 0 : position});
            Entries().AddFilesTogether(writes);
            relay_.Disturb({});
            items_->Close();
            ASSERT_THAT(items_->ConnectLocation(nullptr), test::IsDone());
            std::vector<ContentsRead> reads = Reads();
            Entries().ReadTogether(reads);
            std::size_t lost = 0;
            for (std::size_t number = 0; number < kMany; ++number) {
                if (writes[number].result) {
                    EXPECT_EQ(std::to_string(number), TextOf(reads[number].contents)) << number;
                } else {
                    lost += writes[number].result.Is(Reason::kUnreachable) ? 1 : 0;
                }
                if (!reads[number].result) continue;
                EXPECT_TRUE(Entries().Remove(reads[number].dn).IsDone());
            }
            EXPECT_GT(lost, 0u);
        }
    }
}

}  // namespace
}  // namespace depot
