#include "offline/offline_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "platform/local_file.h"
#include "support/offline_files.h"

namespace depot {
namespace {

using test::FilesIn;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kPlace[] = "ldap.test:389";
constexpr std::uint64_t kPlenty = 1024 * 1024;

OfflineRecord Record(OfflineKind kind, const std::string& name, const std::string& text) {
    return {.kind = kind, .dn = "cn=" + name + ",dc=test", .bytes = {text.begin(), text.end()}};
}

std::string TextOf(const std::optional<OfflineRecord>& record) {
    return record ? std::string(record->bytes.begin(), record->bytes.end()) : "(nothing)";
}

class OfflineFolderTest : public testing::Test {
protected:
    std::string Read(OfflineKind kind, const std::string& name) {
        return TextOf(folder_.Read(kind, "cn=" + name + ",dc=test"));
    }
    bool Holds(const OfflineRecord& record) { return folder_.Holds(record, ContentsOf(record)); }
    void Damage(const std::string& path) { ASSERT_TRUE(WriteLocalFile(path, "damaged", 7)); }

    test::CleanOfflineFiles clean_;
    OfflineFolder folder_{kPlace, kPlenty};
};

TEST_F(OfflineFolderTest, RecordsComeBackByKindAndName) {
    EXPECT_TRUE(folder_.Write(Record(OfflineKind::kFile, "a.kra", "fetched")));
    EXPECT_TRUE(folder_.Write(Record(OfflineKind::kEdit, "a.kra", "edited")));
    EXPECT_EQ("fetched", Read(OfflineKind::kFile, "a.kra"));
    EXPECT_EQ("edited", Read(OfflineKind::kEdit, "a.kra"));
    EXPECT_EQ("(nothing)", Read(OfflineKind::kFolder, "a.kra"));
    EXPECT_EQ("(nothing)", Read(OfflineKind::kFile, "b.kra"));
    // One entry has several spellings.
    EXPECT_EQ("fetched", TextOf(folder_.Read(OfflineKind::kFile, "CN=A.KRA, DC=test")));
}

TEST_F(OfflineFolderTest, NothingIsReadableOnTheDisk) {
    folder_.Write(Record(OfflineKind::kFile, "secret.kra", "password"));
    const auto files = FilesIn(folder_.Path(), "*.file");
    ASSERT_EQ(1u, files.size());
    const auto bytes = ReadLocalFile(files.front());
    const std::string text(bytes->begin(), bytes->end());
    EXPECT_THAT(text, testing::Not(testing::HasSubstr("password")));
    EXPECT_THAT(files.front(), testing::Not(testing::HasSubstr("secret")));
}

TEST_F(OfflineFolderTest, ADamagedFileIsSetAsideAndNamedOnce) {
    folder_.Write(Record(OfflineKind::kEdit, "a.kra", "edited"));
    Damage(FilesIn(folder_.Path(), "*.edit").front());
    EXPECT_EQ("(nothing)", Read(OfflineKind::kEdit, "a.kra"));
    EXPECT_FALSE(folder_.HasEdits());
    const auto aside = FilesIn(folder_.Path(), "*.damaged");
    ASSERT_EQ(1u, aside.size());
    EXPECT_THAT(folder_.TakeDamaged(), ElementsAre(aside.front()));
    EXPECT_THAT(folder_.TakeDamaged(), IsEmpty());
}

TEST_F(OfflineFolderTest, ARecordOfAnotherPlaceOrEntryIsSetAside) {
    OfflineFolder other("other.test:389", kPlenty);
    other.Write(Record(OfflineKind::kFile, "a.kra", "foreign"));
    folder_.Write(Record(OfflineKind::kFile, "a.kra", "own"));
    folder_.Write(Record(OfflineKind::kFile, "b.kra", "own"));
    const std::string own = FilesIn(folder_.Path(), "*.file").front();
    const std::string foreign = FilesIn(other.Path(), "*.file").front();
    ASSERT_TRUE(CopyFileA(foreign.c_str(), own.c_str(), FALSE));
    EXPECT_THAT((std::vector{Read(OfflineKind::kFile, "a.kra"), Read(OfflineKind::kFile, "b.kra")}),
                testing::UnorderedElementsAre("(nothing)", "own"));
    EXPECT_EQ(1u, folder_.TakeDamaged().size());
}

TEST_F(OfflineFolderTest, TheOldestFetchedFilesGiveWayAndEditsStay) {
    OfflineFolder small(kPlace, 8000);
    EXPECT_TRUE(small.Write(Record(OfflineKind::kEdit, "edit.kra", std::string(9000, 'e'))));
    for (int number = 0; number < 6; ++number) {
        EXPECT_TRUE(small.Write(
            Record(OfflineKind::kFile, std::to_string(number) + ".kra", std::string(2000, 'f'))));
        Sleep(20);
    }
    EXPECT_EQ("(nothing)", Read(OfflineKind::kFile, "0.kra"));
    EXPECT_EQ(std::string(2000, 'f'), Read(OfflineKind::kFile, "5.kra"));
    EXPECT_EQ(std::string(9000, 'e'), Read(OfflineKind::kEdit, "edit.kra"));
    EXPECT_FALSE(small.Write(Record(OfflineKind::kFile, "5.kra", std::string(9000, 'f'))));
    EXPECT_EQ("(nothing)", Read(OfflineKind::kFile, "5.kra"));
}

TEST_F(OfflineFolderTest, AReplacedFileTakesNoRoomAnyMore) {
    OfflineFolder small(kPlace, 6000);
    EXPECT_TRUE(small.Write(Record(OfflineKind::kFile, "older.kra", std::string(2000, 'o'))));
    for (const char contents : {'a', 'b', 'c', 'd'}) {
        Sleep(20);
        EXPECT_TRUE(small.Write(Record(OfflineKind::kFile, "a.kra", std::string(2000, contents))));
    }
    EXPECT_EQ(std::string(2000, 'o'), Read(OfflineKind::kFile, "older.kra"));
    EXPECT_EQ(std::string(2000, 'd'), Read(OfflineKind::kFile, "a.kra"));
}

TEST_F(OfflineFolderTest, EditsComeInTheOrderOfTheirNumbersWhateverTheClockSays) {
    ASSERT_TRUE(folder_.Prepare());
    for (const char* const name : {"c.kra", "a.kra", "b.kra"}) {
        const EditsLock lock(folder_.Path(), 0);
        ASSERT_TRUE(lock);
        OfflineRecord edit = Record(OfflineKind::kEdit, name, name);
        edit.number = lock.TakeNumber();
        EXPECT_TRUE(folder_.Write(edit));
    }
    std::vector<std::string> names;
    for (const OfflineRecord& edit : folder_.Edits()) {
        names.emplace_back(edit.bytes.begin(), edit.bytes.end());
    }
    EXPECT_THAT(names, ElementsAre("c.kra", "a.kra", "b.kra"));
}

TEST_F(OfflineFolderTest, OneProcessAtATimeHoldsTheEdits) {
    ASSERT_TRUE(folder_.Prepare());
    {
        const EditsLock first(folder_.Path(), 0);
        ASSERT_TRUE(first);
        EXPECT_FALSE(EditsLock(folder_.Path(), 0));
    }
    EXPECT_TRUE(EditsLock(folder_.Path(), 0));
    EXPECT_FALSE(EditsLock("", 0));
}

TEST_F(OfflineFolderTest, AWaiterGetsTheEditsWhenTheyAreFree) {
    ASSERT_TRUE(folder_.Prepare());
    auto first = std::make_unique<EditsLock>(folder_.Path(), 0);
    std::thread waiter([&] { EXPECT_TRUE(EditsLock(folder_.Path(), 60'000)); });
    Sleep(50);
    first.reset();
    waiter.join();
}

TEST_F(OfflineFolderTest, NamesOutsideOfAsciiComeBack) {
    // A letter that every code page of the tests has.
    for (const std::string& name : {std::string("plain.kra"), test::LetterOfCodePage() + ".kra"}) {
        EXPECT_TRUE(folder_.Write(Record(OfflineKind::kFile, name, "x")));
        const auto record = folder_.Read(OfflineKind::kFile, "cn=" + name + ",dc=test");
        ASSERT_TRUE(record) << name;
        EXPECT_EQ("cn=" + name + ",dc=test", record->dn);
    }
}

TEST_F(OfflineFolderTest, AWriteThatCannotBeMadeLeavesTheEarlierRecord) {
    folder_.Write(Record(OfflineKind::kEdit, "a.kra", "first"));
    const std::string path = FilesIn(folder_.Path(), "*.edit").front();
    const test::OpenFile held(path);
    EXPECT_FALSE(folder_.Write(Record(OfflineKind::kEdit, "a.kra", "second")));
    held.Close();
    EXPECT_EQ("first", Read(OfflineKind::kEdit, "a.kra"));
}

// Gives the only file that matches a time of its last write, in seconds before now.
void SetAge(const OfflineFolder& folder, std::uint64_t seconds,
            const std::string& pattern = "*.file") {
    const auto files = FilesIn(folder.Path(), pattern);
    ASSERT_EQ(1u, files.size());
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    const std::uint64_t time =
        (std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime) - seconds * 10'000'000;
    const FILETIME written = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    const UniqueHandle file =
        OwnFile(CreateFileA(files.front().c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(SetFileTime(file.get(), nullptr, nullptr, &written));
}

TEST_F(OfflineFolderTest, NewFilesThatNeverTookTheirPlaceAreDeletedLater) {
    ASSERT_TRUE(folder_.Prepare());
    Damage(folder_.Path() + "\\lda0001.tmp");
    SetAge(folder_, 2 * 3600, "*.tmp");
    // It may still be in use.
    Damage(folder_.Path() + "\\lda0002.tmp");
    EXPECT_TRUE(folder_.Write(Record(OfflineKind::kFile, "a.kra", "fetched")));
    EXPECT_THAT(FilesIn(folder_.Path(), "*.tmp"), ElementsAre(testing::EndsWith("\\lda0002.tmp")));
}

TEST_F(OfflineFolderTest, WhatWasComparedOnceIsNotOpenedAgain) {
    const OfflineRecord record = Record(OfflineKind::kFile, "a.kra", "fetched");
    EXPECT_FALSE(Holds(record));
    folder_.Write(record);
    SetAge(folder_, 60);
    EXPECT_TRUE(Holds(record));
    const test::OpenFile held(FilesIn(folder_.Path(), "*.file").front());
    EXPECT_TRUE(Holds(record));
    EXPECT_FALSE(Holds(Record(OfflineKind::kFile, "a.kra", "changed")));
}

TEST_F(OfflineFolderTest, WhatThisProcessWroteIsNotOpened) {
    const OfflineRecord record = Record(OfflineKind::kFile, "a.kra", "fetched");
    folder_.Write(record);
    const test::OpenFile held(FilesIn(folder_.Path(), "*.file").front());
    EXPECT_TRUE(Holds(record));
    EXPECT_FALSE(Holds(Record(OfflineKind::kFile, "a.kra", "changed")));
}

TEST_F(OfflineFolderTest, AnotherFileInThePlaceOfAComparedOneIsRead) {
    const OfflineRecord first = Record(OfflineKind::kFile, "a.kra", "first");
    const OfflineRecord other = Record(OfflineKind::kFile, "a.kra", "other");
    folder_.Write(first);
    SetAge(folder_, 60);
    EXPECT_TRUE(Holds(first));
    folder_.Write(other);
    SetAge(folder_, 30);
    EXPECT_FALSE(Holds(first));
    EXPECT_TRUE(Holds(other));
    folder_.Remove(OfflineKind::kFile, "cn=a.kra,dc=test");
    EXPECT_FALSE(Holds(other));
}

// Its next writer may leave a file of the same length and time.
TEST_F(OfflineFolderTest, AYoungFileIsReadEachTime) {
    const OfflineRecord first = Record(OfflineKind::kFile, "a.kra", "first");
    folder_.Write(first);
    SetAge(folder_, 0);
    EXPECT_TRUE(Holds(first));
    // So is one whose clock runs ahead.
    Damage(FilesIn(folder_.Path(), "*.file").front());
    EXPECT_FALSE(Holds(first));
    folder_.Write(first);
    SetAge(folder_, static_cast<std::uint64_t>(-60));
    EXPECT_TRUE(Holds(first));
    Damage(FilesIn(folder_.Path(), "*.file").front());
    EXPECT_FALSE(Holds(first));
}

TEST_F(OfflineFolderTest, ListingsAreComparedByTheirChildren) {
    OfflineRecord folder = Record(OfflineKind::kFolder, "ou", "");
    folder.children = {{"cn=a.kra,dc=test", false}, {"ou=b,dc=test", true}};
    folder_.Write(folder);
    EXPECT_TRUE(Holds(folder));
    folder.children[0].isFolder = true;
    EXPECT_FALSE(Holds(folder));
}

}  // namespace
}  // namespace depot
