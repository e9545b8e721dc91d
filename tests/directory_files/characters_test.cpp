// Transfers and listings of names of many characters, in whatever ANSI code page the process runs
// in.
#include "directory_files/directory_world.h"
#include "fileops/depot_file.h"
#include "fileops/enumerate.h"
#include "fileops/numbered_copy.h"
#include "platform/system_code_page.h"
#include "store/folder_store.h"
#include "support/directory_transfer.h"
#include "support/page_names.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;
using test::kNo;
using test::MakeWideFile;
using test::Narrowed;
using test::WideBytes;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAreArray;

// Each file holds its own name in UTF-8. What the directory holds is written and looked at by
// another program, which knows nothing of code pages.
class TransferCharactersTest : public test::DirectoryWorldTest {
protected:
    TransferCharactersTest() { InstallSystemCodePage(); }

    static std::string Entry(const std::wstring& name) { return "cn=" + Narrowed(name); }
    std::string FolderDN() const { return DN(Entry(page_.folder)); }
    std::string SubfolderDN() const { return Entry(page_.subfolder) + "," + FolderDN(); }

    std::wstring Local(const std::wstring& name) const {
        return WideFromAnsi(world_.folder.Path()) + L"\\" + name;
    }
    void MakeLocal(const std::wstring& name) {
        MakeWideFile(Local(name), Utf8FromWide(name.substr(name.rfind(L'\\') + 1)));
    }
    // The folder, in it the subfolder, and in that all files.
    std::string MakeLocalTree() {
        CreateDirectoryW(Local(page_.folder).c_str(), nullptr);
        const std::wstring subfolder = page_.folder + L"\\" + page_.subfolder;
        CreateDirectoryW(Local(subfolder).c_str(), nullptr);
        for (const std::wstring& name : page_.files) MakeLocal(subfolder + L"\\" + name);
        return Narrowed(Local(page_.folder));
    }
    void ExpectLocalTree(const std::wstring& folder) const {
        for (const std::wstring& name : page_.files) {
            EXPECT_EQ(Utf8FromWide(name),
                      WideBytes(Local(folder + L"\\" + page_.subfolder + L"\\" + name)));
        }
    }

    void AddEntries(const std::vector<std::wstring>& names, const std::string& parent) {
        std::string ldif;
        for (const std::wstring& name : names) ldif += FileRecord(name, parent);
        if (!ldif.empty()) server_.Apply(ldif);
    }
    void AddEntryTree() {
        std::string ldif =
            FolderRecord(page_.folder, base_) + FolderRecord(page_.subfolder, FolderDN());
        for (const std::wstring& name : page_.files) ldif += FileRecord(name, SubfolderDN());
        server_.Apply(ldif);
    }
    static std::string FolderRecord(const std::wstring& name, const std::string& parent) {
        return Record(name, parent) + "objectClass: quillonFolder\n\n";
    }
    static std::string FileRecord(const std::wstring& name, const std::string& parent) {
        return Record(name, parent) +
               "objectClass: quillonFileBinary\nquillonFileContentsBinary: " + Utf8FromWide(name) +
               "\n\n";
    }
    static std::string Record(const std::wstring& name, const std::string& parent) {
        const std::string utf8 = Utf8FromWide(name);
        return "dn: cn=" + utf8 + "," + Utf8Of(parent) + "\ncn: " + utf8 + "\n";
    }

    // The entries below a name.
    std::size_t CountBelow(const std::string& dn) {
        const std::string found = "\n" + server_.Show(Utf8Of(dn), "sub", "1.1");
        std::size_t count = 0;
        for (std::size_t at = 0; (at = found.find("\ndn:", at)) != std::string::npos; ++at) ++count;
        return count - 1;
    }
    std::size_t CountOfTree() const { return page_.files.size() + 1; }
    void ExpectEntryTree(const std::string& dn) {
        EXPECT_EQ(CountOfTree(), CountBelow(dn));
        for (const std::wstring& name : page_.files) {
            const std::string file = Entry(name) + "," + Entry(page_.subfolder) + "," + dn;
            EXPECT_EQ(Utf8FromWide(name), Contents(file));
        }
    }
    // The names that a server takes and this code page does not; a fullwidth A is A to a server.
    std::vector<std::wstring> Unnameable() const {
        std::vector<std::wstring> names;
        for (const std::wstring& name : page_.refused) {
            if (name[0] != 0xD83D && name[0] != 0xFF21) names.push_back(name);
        }
        return names;
    }

    std::vector<std::string> List(const std::string& folder) {
        CDepotItems items;
        const CDepotItem item(folder, work_);
        Enumerate(items, &item, ".kra", {}, false);
        std::vector<std::string> paths;
        for (std::size_t index = 0; index < items.Count(); ++index) {
            paths.push_back(items.At(index)->path);
        }
        unsafeNames_ = items.unsafeNames;
        return paths;
    }

    static std::string Utf8Of(const std::string& narrow) {
        return Utf8FromWide(WideFromAnsi(narrow));
    }

    const test::PageNames page_ = test::NamesOfThisPage();
    std::uint32_t unsafeNames_ = 0;
};

TEST_F(TransferCharactersTest, FilesAreUploadedAndDownloadedUnderTheirNames) {
    for (const std::wstring& name : page_.files) {
        SCOPED_TRACE(Narrowed(name));
        MakeLocal(name);
        EXPECT_THAT(Upload(Directory(), Narrowed(Local(name)), DN(Entry(name)),
                           ExistingEntries::kRefuse, &error_),
                    IsDone());
        EXPECT_THAT(server_.Show(Utf8Of(DN(Entry(name)))), HasSubstr("quillonFileContentsBinary"));
        const std::wstring back = Local(L"b" + name);
        EXPECT_THAT(Download(Directory(), DN(Entry(name)), Narrowed(back), &error_), IsDone());
        EXPECT_EQ(Utf8FromWide(name), WideBytes(back));
    }
    EXPECT_EQ(page_.files.size(), CountBelow(base_));
}

TEST_F(TransferCharactersTest, TreeIsUploadedAndDownloadedWhole) {
    EXPECT_THAT(Upload(Directory(), MakeLocalTree(), FolderDN(), ExistingEntries::kRefuse, &error_),
                IsDone())
        << error_;
    ExpectEntryTree(FolderDN());
    EXPECT_THAT(Download(Directory(), FolderDN(), Narrowed(Local(L"x" + page_.subfolder)), &error_),
                IsDone())
        << error_;
    ExpectLocalTree(L"x" + page_.subfolder);
}

TEST_F(TransferCharactersTest, TreeOfAnotherClientComesDownWhole) {
    AddEntryTree();
    const std::wstring out = page_.subfolder + L"\\" + page_.subfolder;
    EXPECT_THAT(Download(Directory(), FolderDN(), Narrowed(Local(out)), &error_), IsDone())
        << error_;
    ExpectLocalTree(out);
}

TEST_F(TransferCharactersTest, EntriesAreCopiedRenamedAndDeletedAloneByTheirNames) {
    AddEntries(page_.files, base_);
    std::size_t left = page_.files.size();
    for (const std::wstring& name : page_.files) {
        SCOPED_TRACE(Narrowed(name));
        EXPECT_THAT(CopyEntry(Directory(), DN(Entry(name)), Directory(), DN(Entry(L"c" + name)),
                              ExistingEntries::kRefuse, &error_),
                    IsDone());
        EXPECT_THAT(MoveEntry(Directory(), DN(Entry(L"c" + name)), DN(Entry(L"m" + name)), &error_),
                    IsDone());
        EXPECT_EQ(Utf8FromWide(name), Contents(DN(Entry(L"m" + name))));
        EXPECT_EQ(Utf8FromWide(name), Contents(DN(Entry(name))));
        EXPECT_THAT(RemoveEntry(Directory(), DN(Entry(name)), &error_), IsDone());
        EXPECT_EQ(kNo, EntryExists(Directory(), DN(Entry(name)), &error_));
        EXPECT_THAT(RemoveEntry(Directory(), DN(Entry(L"m" + name)), &error_), IsDone());
        EXPECT_EQ(--left, CountBelow(base_));
    }
}

TEST_F(TransferCharactersTest, TreeIsCopiedRenamedAndDeletedWhole) {
    AddEntryTree();
    const std::string copy = DN(Entry(page_.subfolder));
    EXPECT_THAT(
        CopyEntry(Directory(), FolderDN(), Directory(), copy, ExistingEntries::kRefuse, &error_),
        IsDone());
    ExpectEntryTree(copy);
    const std::string moved = DN(Entry(L"m" + page_.folder));
    EXPECT_THAT(MoveEntry(Directory(), copy, moved, &error_), IsDone());
    ExpectEntryTree(moved);
    EXPECT_THAT(RemoveEntry(Directory(), moved, &error_), IsDone());
    ExpectEntryTree(FolderDN());
    EXPECT_EQ(CountOfTree() + 1, CountBelow(base_));
}

TEST_F(TransferCharactersTest, TreeIsRenamedWholeByAServerThatRenamesOnlyLeaves) {
    AddEntryTree();
    test::RefuseTreeRenames(Directory());
    const std::string moved = DN(Entry(L"m" + page_.folder));
    EXPECT_THAT(MoveEntry(Directory(), FolderDN(), moved, &error_), IsDone()) << error_;
    ExpectEntryTree(moved);
    EXPECT_EQ(CountOfTree() + 1, CountBelow(base_));
}

TEST_F(TransferCharactersTest, FoldersAreListedUnderTheirDisplayPaths) {
    AddEntryTree();
    const std::string folder = "<Work>\\" + Narrowed(page_.folder);
    const std::string subfolder = folder + "\\" + Narrowed(page_.subfolder);
    std::vector<std::string> files;
    for (const std::wstring& name : page_.files) files.push_back(subfolder + "\\" + Narrowed(name));
    EXPECT_THAT(List("<Work>\\"), ElementsAre(folder));
    EXPECT_THAT(List(folder), ElementsAre(subfolder));
    EXPECT_THAT(List(subfolder + "\\"), UnorderedElementsAreArray(files));
}

TEST_F(TransferCharactersTest, NumberedCopiesTakeTheNamesOfTheirSources) {
    AddEntryTree();
    const std::string subfolder =
        "<Work>\\" + Narrowed(page_.folder) + "\\" + Narrowed(page_.subfolder) + "\\";
    for (const std::wstring& name : page_.files) {
        SCOPED_TRACE(Narrowed(name));
        const std::wstring copy = name.substr(0, name.size() - 4) + L" - copy.kra";
        EXPECT_EQ(
            subfolder + Narrowed(copy),
            MakeNumberedCopy(world_.depots, subfolder + Narrowed(name), CopyNameStyle::kDash));
        EXPECT_EQ(Utf8FromWide(name), Contents(Entry(copy) + "," + SubfolderDN()));
    }
    EXPECT_EQ(2 * page_.files.size(), CountBelow(SubfolderDN()));
}

TEST_F(TransferCharactersTest, EntriesThatCannotBeNamedAreCountedAndStay) {
    AddEntryTree();
    AddEntries(Unnameable(), SubfolderDN());
    const auto count = static_cast<std::uint32_t>(Unnameable().size());
    const std::size_t before = CountBelow(base_);
    const std::string folder = "<Work>\\" + Narrowed(page_.folder);
    EXPECT_EQ(page_.files.size(), List(folder + "\\" + Narrowed(page_.subfolder)).size());
    EXPECT_EQ(count, unsafeNames_);
    EXPECT_EQ(count == 0 ? 1 : 0, Download(Directory(), FolderDN(), At("out"), &error_));
    EXPECT_EQ(count == 0 ? "junk" : UnsafeNamesText(count), error_);
    ExpectLocalTree(L"out");
    EXPECT_EQ(count == 0 ? 1 : 0, Download(Directory(), FolderDN(), At("gone"), &error_, {},
                                           ExistingEntries::kReplace, SourceFate::kGoes));
    EXPECT_EQ(count == 0, test::Exists(At("gone")));
    EXPECT_EQ(before, CountBelow(base_));
}

TEST_F(TransferCharactersTest, LocalFilesThatCannotBeNamedAreCountedAndStay) {
    // The file system below the emulator takes no name that UTF-8 cannot hold.
    if (GetACP() == CP_UTF8) return;
    const std::string tree = MakeLocalTree();
    const std::wstring unnamed = page_.folder + L"\\" + page_.subfolder + L"\\" + Unnameable()[0];
    MakeLocal(unnamed);
    EXPECT_THAT(Upload(Directory(), tree, FolderDN(), ExistingEntries::kRefuse, &error_), Fails());
    EXPECT_EQ(UnsafeLocalNamesText(1), error_);
    ExpectEntryTree(FolderDN());
    EXPECT_EQ(Utf8FromWide(Unnameable()[0]), WideBytes(Local(unnamed)));
}

}  // namespace
}  // namespace depot
