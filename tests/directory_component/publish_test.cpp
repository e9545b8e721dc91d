// Publishing a Skein profile with the files that it depends on, into depots of either kind.
#include <chrono>

#include "directory_component/stores_fixture.h"
#include "support/results.h"

namespace depot::test {
namespace {

using PublishStoresTest = StoresTest;

TEST_P(PublishStoresTest, ClientsOfEveryStoreAreCopiedBesideTheProfile) {
    work_.MakeFile("w.cfg", "one");
    corp_.MakeFile("deep\\c.cfg", "two");
    const std::string plain = folder_.MakeFile("p.cfg", "three");
    Publish(3, "C1=<Work>\\w.cfg\r\nC2=<Corp>\\deep\\c.cfg\r\nC3=" + plain + "\r\n");
    EXPECT_EQ("one", store_.Bytes("Sub\\w.cfg"));
    EXPECT_EQ("two", store_.Bytes("Sub\\c.cfg"));
    EXPECT_EQ("three", store_.Bytes("Sub\\p.cfg"));
    EXPECT_EQ(WidePath("Sub\\w.cfg"), Entry(L"C1"));
    EXPECT_EQ(WidePath("Sub\\c.cfg"), Entry(L"C2"));
    EXPECT_EQ(WidePath("Sub\\p.cfg"), Entry(L"C3"));
    EXPECT_EQ(L"(default)", Value(L"Server", L"Configuration File"));
    EXPECT_EQ(L"1", Value(L"Server", L"Other"));
    // The sources stay.
    EXPECT_EQ("one", work_.Bytes("w.cfg"));
    EXPECT_EQ("two", corp_.Bytes("deep\\c.cfg"));
    EXPECT_EQ("three", FileBytes(plain));
}

TEST_P(PublishStoresTest, ProfileReachesADirectoryOnlyWhenItIsFlushedOrReleased) {
    Publish(1, "C1=u:c.cfg\r\n");
    const auto isStored = [&] {
        return store_.Bytes("Sub\\p.kra").find("C1=c.cfg\r\n") != std::string::npos;
    };
    EXPECT_EQ(!InDirectory(), isStored());
    EXPECT_THAT(api_->DPFlushFile(Client()), IsOk());
    EXPECT_TRUE(isStored());
    EXPECT_EQ(std::string::npos, store_.Bytes("Sub\\p.kra").find("Configuration File"));
    EXPECT_EQ(L"c.cfg", Entry(L"C1"));

    Publish(1, "C1=u:other.cfg\r\n");
    session_.reset();
    EXPECT_NE(std::string::npos, store_.Bytes("Sub\\p.kra").find("C1=other.cfg\r\n"));
}

TEST_P(PublishStoresTest, EntriesOfTheResourceFolderKeepTheirNamesAndCopyNothing) {
    Publish(6,
            "C1=u:c2.cfg\r\nC2=u\r\nC3=u:\r\nC4=user.cfg\r\nC5=u:Sub\\x.cfg\r\n"
            "C6=U:x.cfg\r\n");
    EXPECT_EQ(L"c2.cfg", Entry(L"C1"));
    EXPECT_EQ(L"(default)", Entry(L"C2"));
    EXPECT_EQ(L"(default)", Entry(L"C3"));
    EXPECT_EQ(L"er.cfg", Entry(L"C4"));
    EXPECT_EQ(L"Sub\\x.cfg", Entry(L"C5"));
    // Only the small letter stands for the resource folder.
    EXPECT_EQ(WidePath("Sub\\U:x.cfg"), Entry(L"C6"));
    EXPECT_EQ(1u, store_.Contents("Sub").size());
}

TEST_P(PublishStoresTest, MissingAndEmptyEntriesAreRewrittenAndCopyNothing) {
    Publish(3, "C1=<Work>\\none.cfg\r\nC3=<Nowhere>\\x.cfg\r\n");
    EXPECT_EQ(WidePath("Sub\\none.cfg"), Entry(L"C1"));
    EXPECT_EQ(WidePath("Sub\\"), Entry(L"C2"));
    EXPECT_EQ(WidePath("Sub\\x.cfg"), Entry(L"C3"));
    EXPECT_EQ(1u, store_.Contents("Sub").size());
}

TEST_P(PublishStoresTest, EntriesAreReadUpTo259Characters) {
    std::string folder = folder_.MakeFolder("long");
    folder += "\\" + std::string(259 - folder.size() - 1 - 60, 'd');
    CreateDirectoryA(folder.c_str(), nullptr);
    const std::string name259(259 - folder.size() - 1, 'n');
    const std::string path259 = folder + "\\" + name259;
    ASSERT_EQ(259u, path259.size());
    LocalTestFolder(folder, {}).MakeFile(name259, "259");
    // The second one is cut by one character, to a file that is there or is not.
    for (const bool cutNameExists : {true, false}) {
        SCOPED_TRACE(cutNameExists);
        if (!cutNameExists) DeleteFileA(path259.c_str());
        Publish(2, "C1=" + path259 + "\r\nC2=" + path259 + "x\r\n");
        EXPECT_EQ(WidePath("Sub\\" + name259), Entry(L"C1"));
        EXPECT_EQ(WidePath("Sub\\" + name259), Entry(L"C2"));
        EXPECT_EQ("259", store_.Bytes("Sub\\" + name259));
        EXPECT_FALSE(store_.Holds("Sub\\" + name259 + "x"));
        EXPECT_EQ(2u, store_.Contents("Sub").size());
    }
}

TEST_P(PublishStoresTest, FolderThatAProfileNamesIsNotCopied) {
    folder_.MakeFolder("private");
    const std::string secret = folder_.MakeFile("private\\key.pem", "k");
    work_.MakeFile("private.kra\\a.txt", "a");
    corp_.MakeFile("private.krx\\b.txt", "b");
    folder_.MakeFolder("empty");
    Publish(6, "C1=" + folder_.At("private") + "\r\nC2=" + folder_.At("private") +
                   "\\\r\nC3=<Work>\\private.kra\r\nC4=<Corp>\\private.krx\r\nC5=" +
                   folder_.At("empty") + "\r\nC6=" + folder_.At("private") + "\\*.*\r\n");
    EXPECT_EQ(1u, store_.Contents("Sub").size());
    // The entry is rewritten all the same.
    EXPECT_EQ(WidePath("Sub\\private"), Entry(L"C1"));
    // Whatever its extension, a file is copied.
    Publish(1, "C1=" + secret + "\r\n");
    EXPECT_EQ("k", store_.Bytes("Sub\\key.pem"));
}

TEST_P(PublishStoresTest, NamesThatLookLikeFormatsAreCopied) {
    std::string clients;
    const std::vector<std::string> names = {"%s.cfg",     "%n",       "%99999d.cfg",
                                            "trailing %", "((3).cfg", "(99999999999).cfg"};
    int count = 0;
    for (const std::string& name : names) {
        folder_.MakeFile(name, name);
        clients += "C" + std::to_string(++count) + "=" + folder_.At(name) + "\r\n";
    }
    Publish(count, clients);
    for (const std::string& name : names) EXPECT_EQ(name, store_.Bytes("Sub\\" + name));
}

TEST_P(PublishStoresTest, EntriesWithHostileNamesNeverBecomeLocalFiles) {
    for (const char* name : {"CON", "C:x.cfg", "a?.cfg"}) server_.AddFile(name, base_, "x");
    const StoreContents before = LocalTestFolder(folder_.Path(), {}).Contents();
    Publish(3, "C1=<Corp>\\CON\r\nC2=<Corp>\\C:x.cfg\r\nC3=<Corp>\\a?.cfg\r\n");
    StoreContents after = LocalTestFolder(folder_.Path(), {}).Contents();
    after.erase("Work\\Sub\\p.kra");
    EXPECT_EQ(before, after);
    // Within a directory such a name is one like any other.
    EXPECT_EQ(InDirectory() ? "x" : kMissing, corp_.Bytes("Sub\\CON"));
}

TEST_P(PublishStoresTest, EntryThatHasAnotherFilesShortNameDoesNotReplaceThat) {
    work_.MakeFile("Sub\\a long file name.cfg", "mine");
    const std::string name = ShortNameOf(work_.At("Sub\\a long file name.cfg"));
    server_.AddFile(name, base_, "x");
    Publish(1, "C1=<Corp>\\" + name + "\r\n");
    EXPECT_EQ("mine", work_.Bytes("Sub\\a long file name.cfg"));
    EXPECT_EQ(InDirectory() ? "x" : kMissing, corp_.Bytes("Sub\\" + name));
}

TEST_P(PublishStoresTest, PublishingAgainBringsTheCopiesUpToDate) {
    for (const char* bytes : {"one", "changed"}) {
        const std::string client = folder_.MakeFile("c.cfg", bytes);
        Publish(1, "C1=" + client + "\r\n");
        EXPECT_EQ(bytes, store_.Bytes("Sub\\c.cfg"));
    }
}

TEST_P(PublishStoresTest, OfClientsWithOneNameTheLastIsWhatStays) {
    work_.MakeFile("w\\a.cfg", "one");
    corp_.MakeFile("x\\a.cfg", "two");
    corp_.MakeFile("y\\a.cfg", "three");
    corp_.MakeFile("y\\b.cfg", "b");
    // Those between are read and written with others, or fail.
    Publish(6,
            "C1=<Work>\\w\\a.cfg\r\nC2=<Corp>\\x\\a.cfg\r\nC3=<Corp>\\y\\b.cfg\r\n"
            "C4=<Corp>\\y\\none.cfg\r\nC5=<Corp>\\y\\a.cfg\r\nC6=" +
                Path("Sub\\a.cfg") + "\r\n");
    EXPECT_EQ("three", store_.Bytes("Sub\\a.cfg"));
    EXPECT_EQ("b", store_.Bytes("Sub\\b.cfg"));
    EXPECT_FALSE(store_.Holds("Sub\\none.cfg"));
    EXPECT_EQ(3u, store_.Contents("Sub").size());
}

TEST_P(PublishStoresTest, PublishedProfilePublishedAgainStaysAsItIs) {
    const std::string client = folder_.MakeFile("c.cfg", "one");
    Publish(1, "C1=" + client + "\r\n");
    EXPECT_THAT(api_->DPFlushFile(Client()), IsOk());
    const StoreContents before = store_.Contents();
    EXPECT_THAT(api_->DPPublishSkesDepFiles(Client()), IsOk());
    EXPECT_THAT(api_->DPFlushFile(Client()), IsOk());
    EXPECT_EQ(before, store_.Contents());
}

TEST_P(PublishStoresTest, WithoutClientsOnlyTheServersEntryIsWritten) {
    for (const int count : {0, -1, -2'000'000'000}) {
        SCOPED_TRACE(count);
        Publish(count, "C1=x.cfg\r\n");
        EXPECT_EQ(L"x.cfg", Entry(L"C1"));
        EXPECT_EQ(L"(default)", Value(L"Server", L"Configuration File"));
    }
    EXPECT_EQ(1u, store_.Contents("Sub").size());
}

// The file cannot be written meanwhile: rewriting it ten thousand times would take a minute.
TEST_P(PublishStoresTest, TwoThousandMillionClientsEndAtTenThousand) {
    const std::string last = folder_.MakeFile("last.cfg", "1");
    const std::string beyond = folder_.MakeFile("beyond.cfg", "1");
    LoadProfile(2'000'000'000, "C10000=" + last + "\r\nC10001=" + beyond + "\r\n");
    const std::vector<std::string> copies = WorkingCopies();
    ASSERT_EQ(InDirectory() ? 1u : 0u, copies.size());
    const std::string file = InDirectory() ? copies.front() : work_.At("Sub\\p.kra");
    const HANDLE reader = CreateFileA(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, reader);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(api_->DPPublishSkesDepFiles(Client()), IsOk());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(1));
    CloseHandle(reader);
    EXPECT_EQ("1", store_.Bytes("Sub\\last.cfg"));
    EXPECT_FALSE(store_.Holds("Sub\\beyond.cfg"));
}

TEST_P(PublishStoresTest, WithoutASessionNothingIsDone) {
    LoadProfile(1, "C1=u:c.cfg\r\n");
    EXPECT_THAT(api_->DPPublishSkesDepFiles(0), IsRefused());
    EXPECT_EQ(L"u:c.cfg", Entry(L"C1"));
}

INSTANTIATE_TEST_SUITE_P(EveryDepot, PublishStoresTest,
                         testing::Values(DepotKind::kFolder, DepotKind::kDirectory), DepotKindName);

}  // namespace
}  // namespace depot::test
