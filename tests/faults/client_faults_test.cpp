// The methods of the interface while system calls fail: each answers, nothing of the user's is
// lost, and nothing stays held.
#include "faults/faulty_client.h"
#include "support/results.h"

namespace depot::test {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::IsEmpty;

// What a client makes of a file that could not be fetched.
constexpr char kNewAlone[] = "[S]\r\nK=new\r\n";

using ClientFaultsTest = StoreFaultsTest;
using FaultyClientTest = StoreFaultsTest;

TEST_P(ClientFaultsTest, LoadWriteAndFlushLoseNothing) {
    const std::string path = Path("office.kra");
    bool written = false;
    RunWithFaults(
        {
            .prepare =
                [&] {
                    Forget();
                    Put(path, kOld);
                },
            .operate =
                [&] {
                    written = false;
                    const LONG_PTR handle = Load(path);
                    if (handle == 0) return;
                    EXPECT_THAT(ReadValue(handle), AnyOf(L"old", L"-", L"(null)"));
                    Succeeded(api_->DPSetProfileString(handle, Text("S"), Text("K"), Text("new")));
                    written = ReadValue(handle) == L"new";
                    Succeeded(api_->DPFlushFile(handle));
                    ReadValue(handle);
                    End(handle);
                },
            .verify =
                [&](std::optional<Fault> failing) {
                    const std::string stored = Get(path).value_or("(missing)");
                    if (!failing) {
                        EXPECT_EQ(kNew, stored);
                    }
                    EXPECT_THAT(stored, AnyOf(kOld, kNew, kNewAlone));
                    const std::string everywhere = stored + Kept();
                    EXPECT_THAT(everywhere, HasSubstr("L=keep"));
                    if (failing != FaultKind::kFile) ExpectNoNeedlessCopies(stored + Recovered());
                    if (written) {
                        EXPECT_THAT(everywhere, HasSubstr("K=new"));
                    }
                },
        },
        kManyRuns);
}

TEST_P(ClientFaultsTest, EndOfTheSessionLosesNothing) {
    const std::string path = Path("office.kra");
    LONG_PTR handle = 0;
    RunWithFaults({
                      .prepare =
                          [&] {
                              Forget();
                              Put(path, kOld);
                              handle = LoadEdited(path);
                          },
                      .operate = [&] { End(handle); },
                      .verify =
                          [&](std::optional<Fault> failing) {
                              const std::string stored = Get(path).value_or("(missing)");
                              if (!failing) {
                                  EXPECT_EQ(kNew, stored);
                              }
                              EXPECT_THAT(stored, AnyOf(kOld, kNew));
                              EXPECT_THAT(stored + Kept(), HasSubstr("K=new"));
                              if (failing != FaultKind::kFile)
                                  ExpectNoNeedlessCopies(stored + Recovered());
                          },
                  },
                  kManyRuns);
}

TEST_P(ClientFaultsTest, FlushThatFailsLosesNothingAndLeavesTheSessionUsable) {
    const std::string path = Path("office.kra");
    LONG_PTR handle = 0;
    bool flushed = false;
    RunWithFaults({
        .prepare =
            [&] {
                Forget();
                Put(path, kOld);
                handle = LoadEdited(path);
            },
        .operate =
            [&] {
                flushed = Succeeded(api_->DPFlushFile(handle));
                FaultLayer::Stop();
                EXPECT_THAT(ReadValue(handle), AnyOf(L"new", L"old", L"-", L"(null)"));
                End(handle);
            },
        .verify =
            [&](std::optional<Fault> failing) {
                const std::string stored = Get(path).value_or("(missing)");
                EXPECT_THAT(stored, AnyOf(kOld, kNew));
                EXPECT_THAT(stored + Kept(), HasSubstr("K=new"));
                if (failing != FaultKind::kFile) ExpectNoNeedlessCopies(stored + Recovered());
                if (!failing) {
                    EXPECT_TRUE(flushed);
                    EXPECT_EQ(kNew, stored);
                }
            },
    });
}

TEST_P(ClientFaultsTest, ListingsHoldOnlyWhatIsThere) {
    for (const char* const name : {"a.kra", "b.kra", "c.kra"}) Put(Path("list\\") + name, "x");
    std::vector<std::wstring> found;
    RunWithFaults({
        .prepare = [&] { Forget(); },
        .operate =
            [&] {
                found.clear();
                LONG_PTR handle = 0;
                LONG count = 0;
                Succeeded(api_->DPFindInit(&handle, Text(Path("list\\")), Text(".kra"), APP_SKEIN,
                                           &count));
                for (LONG index = 0; handle != 0 && index < count; ++index) {
                    OutText name;
                    if (Succeeded(api_->DPFindNext(handle, index, name)))
                        found.push_back(name.Value());
                }
                if (handle != 0) End(handle);
            },
        .verify =
            [&](std::optional<Fault> failing) {
                if (!failing) {
                    EXPECT_EQ(3u, found.size());
                }
                for (const std::wstring& name : found) {
                    EXPECT_THAT(name, AnyOf(Wide(Path("list\\a.kra")), Wide(Path("list\\b.kra")),
                                            Wide(Path("list\\c.kra"))));
                }
            },
    });
}

TEST_P(ClientFaultsTest, CopyToALocalFileLeavesTheSourceAlone) {
    const std::string path = Path("office.kra");
    const std::string copy = folder_.At("copy.kra");
    Put(path, kOld);
    bool copied = false;
    RunWithFaults({
        .prepare =
            [&] {
                Forget();
                DeleteFileA(copy.c_str());
            },
        .operate =
            [&] {
                LONG_PTR handle = 0;
                copied = false;
                if (Succeeded(api_->DPInitialize(&handle))) {
                    copied = Succeeded(
                        api_->DPCopyFileToLocalFS(handle, Text(path), Text(copy), VARIANT_TRUE));
                    End(handle);
                }
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_EQ(kOld, Get(path).value_or("(missing)"));
                if (!failing) {
                    EXPECT_EQ(kOld, FileBytes(copy));
                }
                // A source that cannot be read is copied as an empty file.
                if (copied) {
                    EXPECT_THAT(FileBytes(copy), AnyOf(kOld, ""));
                }
                EXPECT_THAT(RecoveredFiles(), IsEmpty());
            },
    });
}

TEST_P(ClientFaultsTest, NumberedCopyIsWholeOrNotThere) {
    const std::string path = Path("office.kra");
    const std::string copy = Path("office - copy.kra");
    Put(path, kOld);
    bool copied = false;
    int withoutText = 0;
    std::wstring name;
    RunWithFaults({
        .prepare =
            [&] {
                Forget();
                Remove(copy);
                Remove(Path("office - copy (2).kra"));
            },
        .operate =
            [&] {
                LONG_PTR handle = 0;
                copied = false;
                if (Succeeded(api_->DPInitialize(&handle))) {
                    OutText made;
                    copied = Succeeded(api_->DPMakeCopyFromSrcFile(handle, Text(path), made));
                    name = made.Value();
                    End(handle);
                }
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_EQ(kOld, Get(path).value_or("(missing)"));
                EXPECT_EQ(kOld, Get(copy).value_or(kOld));
                if (!failing) {
                    EXPECT_EQ(Wide(copy), name);
                }
                if (copied) {
                    EXPECT_EQ(kOld, Get(std::string(name.begin(), name.end())));
                }
                // A failed copy gives an empty text, unless memory runs out for that one itself.
                withoutText += failing && !failing->onwards && name == L"(null)" ? 1 : 0;
                EXPECT_LE(withoutText, 1);
            },
    });
}

TEST_P(ClientFaultsTest, NumberedCopyReplacesNoFile) {
    const std::string path = Path("office.kra");
    const std::string first = Path("office - copy.kra");
    const std::string second = Path("office - copy (2).kra");
    Put(path, kOld);
    Put(first, "first");
    RunWithFaults({
                      .prepare =
                          [&] {
                              Forget();
                              Remove(second);
                          },
                      .operate =
                          [&] {
                              LONG_PTR handle = 0;
                              if (!Succeeded(api_->DPInitialize(&handle))) return;
                              OutText made;
                              Succeeded(api_->DPMakeCopyFromSrcFile(handle, Text(path), made));
                              End(handle);
                          },
                      .verify =
                          [&](std::optional<Fault> failing) {
                              EXPECT_EQ("first", Get(first));
                              EXPECT_EQ(kOld, Get(second).value_or(failing ? kOld : "(missing)"));
                          },
                  },
                  kManyRuns);
}

TEST_P(ClientFaultsTest, RenameLeavesTheFileUnderOneOfItsNames) {
    const std::string path = Path("office.kra");
    const std::string other = Path("other.kra");
    bool renamed = false;
    RunWithFaults({
        .prepare =
            [&] {
                Forget();
                Remove(other);
                Put(path, kOld);
            },
        .operate =
            [&] {
                LONG_PTR handle = 0;
                renamed = false;
                if (Succeeded(api_->DPInitialize(&handle))) {
                    renamed = Succeeded(api_->DPRenameFile(handle, Text(path), Text(other)));
                    End(handle);
                }
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_NE(Get(path).has_value(), Get(other).has_value());
                EXPECT_EQ(kOld, Get(renamed ? other : path));
                EXPECT_TRUE(failing || renamed);
            },
    });
}

TEST_P(ClientFaultsTest, DeletionReportsWhetherTheFileIsGone) {
    const std::string path = Path("office.kra");
    bool deleted = false;
    RunWithFaults({
        .prepare =
            [&] {
                Forget();
                Put(path, kOld);
            },
        .operate =
            [&] {
                LONG_PTR handle = 0;
                deleted = false;
                if (Succeeded(api_->DPInitialize(&handle))) {
                    deleted = Succeeded(api_->DPDeleteFile(handle, Text(path)));
                    End(handle);
                }
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_EQ(deleted ? std::nullopt : Contents(kOld), Get(path));
                EXPECT_TRUE(failing || deleted);
            },
    });
}

TEST_P(ClientFaultsTest, PublishingLeavesTheClientsAloneAndTheirCopiesWhole) {
    const std::string profile = Path("out\\all.ske");
    const std::string source = Path("in\\one.kra");
    const std::string copy = Path("out\\one.kra");
    const std::string text = "[Skein]\r\nCount=1\r\n[Clients]\r\nC1=" + source + "\r\n";
    Put(source, kOld);
    bool published = false;
    RunWithFaults({
        .prepare =
            [&] {
                Forget();
                Remove(copy);
                Put(profile, text);
            },
        .operate =
            [&] {
                published = false;
                const LONG_PTR handle = Load(profile);
                if (handle == 0) return;
                published = Succeeded(api_->DPPublishSkesDepFiles(handle));
                End(handle);
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_EQ(kOld, Get(source).value_or("(missing)"));
                EXPECT_EQ(kOld, Get(copy).value_or(kOld));
                if (!failing) {
                    EXPECT_EQ(kOld, Get(copy).value_or("(missing)"));
                }
                EXPECT_THAT(Get(profile).value_or("(missing)") + Kept(), HasSubstr("Count=1"));
                EXPECT_TRUE(failing || published);
            },
    });
}

// A copy of the component, which has loaded nothing yet.
TEST_F(FaultyClientTest, DirectoryClientThatCouldNotBeLoadedIsLoadedTheNextTime) {
    Put("<Corp>\\office.kra", "[S]\r\nK=old\r\n");
    const Library copy(CopyComponent(folder_, "qdirsvc.dll"));
    const FaultLayer layer(copy.Module());
    const Com<IDepotIntrApi> api = copy.CreateApi();
    const auto read = [&] {
        LONG_PTR handle = 0;
        OutText value;
        api->DPLoadFile(&handle, Text("<Corp>\\office.kra"));
        api->DPGetProfileString(handle, Text("S"), Text("K"), Text("-"), value, 99);
        FaultLayer::Stop();
        EXPECT_THAT(api->DPUnInitialize(handle), IsOk());
        return value.Value();
    };
    FaultLayer::Fail(FaultKind::kFile, 1, 1 << 20);
    EXPECT_EQ(L"-", read());
    EXPECT_EQ(L"old", read());
}

INSTANTIATE_TEST_SUITE_P(Stores, ClientFaultsTest, testing::Values("Work", "Corp"),
                         [](const auto& store) { return std::string(store.param); });

}  // namespace
}  // namespace depot::test
