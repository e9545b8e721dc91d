// Working copies of names of many characters, in whatever ANSI code page the process runs in.
#include "directory_depots/depot_fixture.h"
#include "manager/display_path.h"
#include "manager/writability.h"
#include "model/directory_trees.h"
#include "platform/paths.h"
#include "platform/system_code_page.h"
#include "support/page_names.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;
using test::kYes;
using test::MakeWideFile;
using test::Narrowed;
using test::WideBytes;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kOld[] = "[S]\r\nK=old\r\n";
constexpr char kNew[] = "[S]\r\nK=new\r\n";

// The depot "Work" is in a folder entry whose name has the characters of the code page.
class DepotCharactersTest : public test::DepotFixture {
protected:
    DepotCharactersTest() {
        InstallSystemCodePage();
        server_.AddFolder(Utf8FromWide(page_.folder), base_);
        server_.AddFolder(Utf8FromWide(page_.subfolder), Utf8Of(Root()));
        Define(server_.Port(), Root());
    }

    static std::string Utf8Of(const std::string& narrow) {
        return Utf8FromWide(WideFromAnsi(narrow));
    }
    static std::string Entry(const std::wstring& name) { return "cn=" + Narrowed(name); }
    std::string Root() const { return Entry(page_.folder) + "," + base_; }
    std::string SubfolderDN() const { return Entry(page_.subfolder) + "," + Root(); }

    // In the subfolder, as another client makes them.
    void AddFiles() {
        std::string ldif;
        for (const std::wstring& name : page_.files) {
            const std::string utf8 = Utf8FromWide(name);
            ldif += "dn: cn=" + utf8 + "," + Utf8Of(SubfolderDN()) +
                    "\nobjectClass: quillonFileBinary\ncn: " + utf8 +
                    "\nquillonFileContentsBinary:: W1NdDQpLPW9sZA0K\n\n";
        }
        server_.Apply(ldif);
    }
    std::string Stored(const std::wstring& name) {
        FileBuffer buffer;
        EXPECT_THAT(Connected().ReadFileContents(Entry(name) + "," + SubfolderDN(), buffer),
                    IsDone());
        return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
    }
    // A path in the depot, below the subfolder.
    std::string Below(const std::wstring& name) const {
        return Narrowed(page_.subfolder + L"\\" + name);
    }
    std::wstring Local(const std::wstring& name) const {
        return WideFromAnsi(folder_.Path()) + L"\\" + name;
    }

    const test::PageNames page_ = test::NamesOfThisPage();
    const test::ScratchFolder folder_;
    std::string error_ = "junk";
};

TEST_F(DepotCharactersTest, EditsReachTheEntryOfThatNameOnly) {
    AddFiles();
    for (const std::wstring& name : page_.files) {
        SCOPED_TRACE(Narrowed(name));
        const auto file = Load(Below(name));
        EXPECT_EQ("old", file->ReadString("S", "K", "", 100));
        file->WriteString("S", "K", "new");
        EXPECT_TRUE(file->Release());
        int changed = 0;
        for (const std::wstring& other : page_.files) changed += Stored(other) == kNew;
        EXPECT_EQ(1, changed);
        EXPECT_EQ(kNew, Stored(name));
        Connected().ReplaceFileContents(Entry(name) + "," + SubfolderDN(), kOld, sizeof(kOld) - 1);
    }
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
    EXPECT_THAT(test::RecoveredFiles(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(DepotCharactersTest, EditThatCannotBeStoredIsRecoveredUnderItsName) {
    AddFiles();
    for (const std::wstring& name : page_.files) {
        SCOPED_TRACE(Narrowed(name));
        const test::CleanWorkingFiles clean;
        const auto file = Load(Below(name));
        file->WriteString("S", "K", "new");
        ASSERT_THAT(Connected().DeleteTree(Entry(name) + "," + SubfolderDN(), nullptr), IsDone());
        EXPECT_FALSE(file->Release());
        ExpectRecovered(kNew);
        const std::vector<std::string> files = test::RecoveredFiles();
        ASSERT_EQ(1u, files.size());
        EXPECT_TRUE(NamePart(files[0]).starts_with(Narrowed(name.substr(0, name.size() - 4)) + " "))
            << files[0];
    }
}

TEST_F(DepotCharactersTest, DisplayPathsAndNamesOfEntriesAreOneAnother) {
    const std::string root = work_->paths->GetActivePath();
    EXPECT_EQ(Root() + "\\", root);
    for (const std::wstring& name : page_.files) {
        SCOPED_TRACE(Narrowed(name));
        const std::string dn =
            "CN=" + Narrowed(name) + ",CN=" + Narrowed(page_.subfolder) + "," + Root();
        EXPECT_EQ(dn, DisplayToStorage(*work_, "<Work>\\" + Below(name)));
        EXPECT_EQ("<Work>\\" + Below(name), StorageToDisplay(*work_, root + Below(name)));
        EXPECT_EQ(work_, FindDepotHolding(*depots_, root + Below(name)));
    }
}

TEST_F(DepotCharactersTest, PlacesAreTestedAndLeftAsTheyWere) {
    AddFiles();
    const std::string before = server_.Show(Utf8Of(Root()), "sub");
    for (const std::wstring& name : page_.files) {
        SCOPED_TRACE(Narrowed(name));
        for (const std::wstring& place :
             {name, L"n" + name, page_.subfolder + L"\\" + page_.folder + L"\\" + name}) {
            EXPECT_EQ(kYes, TestPathWritable(*work_, "<Work>\\" + Below(place), &error_));
        }
    }
    EXPECT_EQ(before, server_.Show(Utf8Of(Root()), "sub"));
}

TEST_F(DepotCharactersTest, NewFilesAreAddedUnderTheirOwnNames) {
    Choose();
    for (const std::wstring& name : page_.files) {
        SCOPED_TRACE(Narrowed(name));
        const std::string dn = Entry(name) + "," + SubfolderDN();
        MakeWideFile(Local(name), kOld);
        EXPECT_THAT(UploadNewFile(Directory(), Narrowed(Local(name)), SubfolderDN(), true, &error_),
                    IsDone());
        EXPECT_THAT(server_.Show(Utf8Of(dn)), HasSubstr("quillonFileContentsBinary"));
        EXPECT_THAT(UploadNewFile(Directory(), Narrowed(Local(name)), SubfolderDN(), true, &error_),
                    Fails());
        EXPECT_EQ(kOld, Stored(name));
    }
}

TEST_F(DepotCharactersTest, TreeIsDownloadedIntoOneFolderUnderItsNames) {
    AddFiles();
    EXPECT_THAT(DownloadTree(Connected(), Root(), Narrowed(Local(page_.folder)), false, &error_),
                IsDone());
    EXPECT_EQ("junk", error_);
    for (const std::wstring& name : page_.files) {
        EXPECT_EQ(kOld, WideBytes(Local(page_.folder + L"\\" + name))) << Narrowed(name);
    }
    EXPECT_TRUE(test::Exists(Narrowed(Local(page_.folder + L"\\" + page_.subfolder))));
}

}  // namespace
}  // namespace depot
