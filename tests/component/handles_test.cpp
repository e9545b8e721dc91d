// What each method does with a handle that names no session, and with missing pointers.
#include <functional>
#include <limits>
#include <vector>

#include "component/component.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr char kProfile[] = "[S]\r\nK=1\r\n";

// A method called with a handle and otherwise harmless arguments. It checks its own outputs.
struct Method {
    const char* name;
    std::function<HRESULT(IDepotIntrApi&, LONG_PTR)> call;
};

// Calls `body` with an output text, which has to be null afterwards.
template <class Body>
HRESULT ExpectNullText(const Body& body) {
    OutText text;
    const HRESULT result = body(text);
    EXPECT_TRUE(text.IsNull()) << "the output is not null";
    return result;
}

// These methods cannot do anything without a session.
const Method kSessionMethods[] = {
    {"DPBrowse",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return ExpectNullText([&](BSTR* text) {
             return api.DPBrowse(handle, APP_SKEIN, PROMPT_OPEN, VARIANT_FALSE, VARIANT_FALSE, 0, 0,
                                 text);
         });
     }},
    {"DPGetProfileString",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return ExpectNullText([&](BSTR* text) {
             return api.DPGetProfileString(handle, Text("S"), Text("K"), Text("D"), text, 100);
         });
     }},
    {"DPGetProfileInt",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         ULONG value = 4711;
         const HRESULT result = api.DPGetProfileInt(handle, Text("S"), Text("K"), 5, &value);
         EXPECT_EQ(4711u, value) << "the output was changed";
         return result;
     }},
    {"DPSetProfileString",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return api.DPSetProfileString(handle, Text("S"), Text("K"), Text("V"));
     }},
    {"DPPublishSkesDepFiles",
     [](IDepotIntrApi& api, LONG_PTR handle) { return api.DPPublishSkesDepFiles(handle); }},
    {"DPBrowseMultiSel",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return ExpectNullText([&](BSTR* text) {
             return api.DPBrowseMultiSel(handle, APP_SKEIN, VARIANT_FALSE, VARIANT_FALSE, 0, 0,
                                         text, 100);
         });
     }},
    {"DPRenameFile",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return api.DPRenameFile(handle, Text("<A>\\a.kra"), Text("<A>\\b.kra"));
     }},
    {"DPDeleteFile", [](IDepotIntrApi& api,
                        LONG_PTR handle) { return api.DPDeleteFile(handle, Text("<A>\\a.kra")); }},
    {"DPCopyFileToLocalFS",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return api.DPCopyFileToLocalFS(handle, Text("<A>\\a.kra"), Text("C:\\copy.kra"),
                                        VARIANT_TRUE);
     }},
    {"DPFlushFile", [](IDepotIntrApi& api, LONG_PTR handle) { return api.DPFlushFile(handle); }},
    {"DPFindNext",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return ExpectNullText([&](BSTR* text) { return api.DPFindNext(handle, 0, text); });
     }},
    {"DPIsPathWriteAble",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return api.DPIsPathWriteAble(handle, Text("<A>\\"));
     }},
    {"DPSetSelItemPath",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return api.DPSetSelItemPath(handle, Text("<A>\\a.kra"));
     }},
    {"DPMakeCopyFromSrcFile",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         OutText text;
         const HRESULT result = api.DPMakeCopyFromSrcFile(handle, Text("<A>\\a.kra"), text);
         EXPECT_TRUE(text.IsUntouched()) << "the output was changed";
         return result;
     }},
};

// These make a temporary session for handle 0, and nothing for any other handle without a session.
const Method kTemporaryMethods[] = {
    {"DPGetDepotDisplayPath",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return ExpectNullText([&](BSTR* text) {
             return api.DPGetDepotDisplayPath(handle, Text("<A>\\a.kra"), text);
         });
     }},
    {"DPFileExists", [](IDepotIntrApi& api,
                        LONG_PTR handle) { return api.DPFileExists(handle, Text("<A>\\a.kra")); }},
    {"DPGetPathFromDisplayName",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return ExpectNullText([&](BSTR* text) {
             return api.DPGetPathFromDisplayName(handle, Text("<Depot A>\\a.kra"), text);
         });
     }},
    {"DPGetDefaultDPPath",
     [](IDepotIntrApi& api, LONG_PTR handle) {
         return ExpectNullText([&](BSTR* text) { return api.DPGetDefaultDPPath(handle, text); });
     }},
};

// A depot with one file that every method could find.
class HandlesTest : public ComponentTest {
protected:
    void ExpectRefused(LONG_PTR handle) {
        SCOPED_TRACE("handle " + std::to_string(handle));
        for (const Method& method : kSessionMethods) {
            SCOPED_TRACE(method.name);
            EXPECT_THAT(method.call(*api_, handle), IsRefused());
        }
        if (handle == 0) return;
        for (const Method& method : kTemporaryMethods) {
            SCOPED_TRACE(method.name);
            EXPECT_THAT(method.call(*api_, handle), IsRefused());
        }
    }

    const std::string root_ = DefineDepot("A", "Depot A");
    const std::string file_ = folder_.MakeFile("A\\a.kra", kProfile);
};

TEST_F(HandlesTest, HandleZeroIsRefusedByMethodsThatNeedASession) {
    ExpectRefused(0);
    EXPECT_EQ(kProfile, FileBytes(file_));
}

TEST_F(HandlesTest, InventedHandlesAreRefused) {
    const Session live(*api_);
    for (const LONG_PTR handle :
         {LONG_PTR{1}, LONG_PTR{-1}, LONG_PTR{0x10000}, LONG_PTR{0x7FFFFFFF}, kJunkHandle, live + 1,
          live - 1, live + 8, (live + 8) | (LONG_PTR{1} << 32),
          std::numeric_limits<LONG_PTR>::min() + 1}) {
        ExpectRefused(handle);
        EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
    }
    EXPECT_EQ(kProfile, FileBytes(file_));
    EXPECT_THAT(api_->DPSetSelItemPath(live, Text("still alive")), IsOk());
}

TEST_F(HandlesTest, EndedHandleIsRefusedAndEndsWithoutHarmAgain) {
    LONG_PTR handle = 0;
    ASSERT_THAT(api_->DPLoadFile(&handle, Text(file_)), IsOk());
    ASSERT_THAT(api_->DPUnInitialize(handle), IsOk());
    ExpectRefused(handle);
    EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
    EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
    EXPECT_EQ(kProfile, FileBytes(file_));
}

TEST_F(HandlesTest, EndedHandleIsNotGivenToTheNextSession) {
    LONG_PTR ended = kJunkHandle;
    ASSERT_THAT(api_->DPInitialize(&ended), IsOk());
    ASSERT_THAT(api_->DPUnInitialize(ended), IsOk());
    for (int count = 0; count < 100; ++count) {
        const Session next(*api_);
        EXPECT_NE(ended, next);
    }
}

TEST_F(HandlesTest, EndingHandleZeroSucceedsAndDoesNothing) {
    const Session live(*api_);
    EXPECT_THAT(api_->DPUnInitialize(0), IsOk());
    EXPECT_THAT(api_->DPSetSelItemPath(live, Text("still alive")), IsOk());
}

TEST_F(HandlesTest, LoadingWithAHandleThatNamesNoSessionIsRefused) {
    LONG_PTR ended = kJunkHandle;
    ASSERT_THAT(api_->DPInitialize(&ended), IsOk());
    ASSERT_THAT(api_->DPUnInitialize(ended), IsOk());
    for (const LONG_PTR given : {ended, LONG_PTR{1}, kJunkHandle}) {
        LONG_PTR handle = given;
        EXPECT_THAT(api_->DPLoadFile(&handle, Text(file_)), IsRefused());
        EXPECT_EQ(0, handle);
    }
}

TEST_F(HandlesTest, LoadingTakesAHandleWhoseUpperHalfIsForeign) {
    Session session(*api_);
    LONG_PTR handle = session | (LONG_PTR{0x12345678} << 32);
    EXPECT_THAT(api_->DPLoadFile(&handle, Text(file_)), IsOk());
    EXPECT_EQ(session, handle);
    EXPECT_EQ(L"1", Read(session, L"S", L"K"));
}

TEST_F(HandlesTest, EveryMethodTakesAHandleWhoseUpperHalfIsForeign) {
    for (const LONG_PTR foreign : {LONG_PTR{0x12345678}, LONG_PTR{-1}, LONG_PTR{1}}) {
        SCOPED_TRACE(foreign);
        LONG_PTR made = 0;
        ASSERT_THAT(api_->DPLoadFile(&made, Text(file_)), IsOk());
        const LONG_PTR handle = made | (foreign << 32);
        OutText path;
        EXPECT_THAT(api_->DPGetDepotDisplayPath(handle, Text("<A>\\a.kra"), path), IsOk());
        EXPECT_THAT(api_->DPGetPathFromDisplayName(handle, Text("<Depot A>\\a.kra"), path), IsOk());
        EXPECT_THAT(api_->DPGetDefaultDPPath(handle, path), IsOk());
        EXPECT_THAT(api_->DPFileExists(handle, Text("<A>\\a.kra")), IsOk());
        EXPECT_THAT(api_->DPSetProfileString(handle, Text("S"), Text("L"), Text("2")), IsOk());
        EXPECT_EQ(L"2", Read(handle, L"S", L"L"));
        ULONG number = 0;
        EXPECT_THAT(api_->DPGetProfileInt(handle, Text("S"), Text("L"), 5, &number), IsOk());
        EXPECT_THAT(api_->DPFlushFile(handle), IsOk());
        EXPECT_THAT(api_->DPPublishSkesDepFiles(handle), IsOk());
        EXPECT_THAT(api_->DPIsPathWriteAble(handle, Text("<A>\\")), IsOk());
        EXPECT_THAT(api_->DPSetSelItemPath(handle, Text("x")), IsOk());
        OutText copy;
        EXPECT_THAT(api_->DPMakeCopyFromSrcFile(handle, Text("<A>\\a.kra"), copy), IsOk());
        EXPECT_THAT(api_->DPRenameFile(handle, Text("<A>\\a - copy.kra"), Text("<A>\\b.kra")),
                    IsOk());
        EXPECT_THAT(api_->DPDeleteFile(handle, Text("<A>\\b.kra")), IsOk());
        EXPECT_THAT(api_->DPCopyFileToLocalFS(handle, Text("<A>\\a.kra"),
                                              Text(folder_.At("out.kra")), VARIANT_FALSE),
                    IsOk());
        EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
        EXPECT_THAT(api_->DPSetSelItemPath(made, Text("x")), IsRefused())
            << "the session was not ended";
    }
}

TEST_F(HandlesTest, ListingTakesAHandleWhoseUpperHalfIsForeign) {
    LONG_PTR list = 0;
    LONG count = 0;
    ASSERT_THAT(api_->DPFindInit(&list, Text("<A>\\"), Text(".kra"), APP_SKEIN, &count), IsOk());
    OutText found;
    EXPECT_THAT(api_->DPFindNext(list | (LONG_PTR{7} << 32), 0, found), IsOk());
    EXPECT_EQ(L"<A>\\a.kra", found.Value());
    EXPECT_THAT(api_->DPUnInitialize(list | (LONG_PTR{7} << 32)), IsOk());
}

TEST_F(HandlesTest, ZeroWhoseUpperHalfIsForeignIsHandleZero) {
    const LONG_PTR zero = LONG_PTR{0x12345678} << 32;
    for (const Method& method : kSessionMethods) {
        SCOPED_TRACE(method.name);
        EXPECT_THAT(method.call(*api_, zero), IsRefused());
    }
    OutText path;
    EXPECT_THAT(api_->DPGetDepotDisplayPath(zero, Text("<A>\\a.kra"), path), IsOk());
    EXPECT_THAT(api_->DPFileExists(zero, Text("<A>\\a.kra")), IsOk());
    EXPECT_THAT(api_->DPGetPathFromDisplayName(zero, Text("<Depot A>\\a.kra"), path), IsOk());
    EXPECT_THAT(api_->DPGetDefaultDPPath(zero, path), IsOk());
    EXPECT_THAT(api_->DPUnInitialize(zero), IsOk());
    EXPECT_EQ(kProfile, FileBytes(file_));
}

TEST_F(HandlesTest, MissingOutputsAreRefused) {
    Session session(*api_);
    ASSERT_THAT(api_->DPLoadFile(session.Address(), Text(file_)), IsOk());
    EXPECT_THAT(api_->DPInitialize(nullptr), IsRefused());
    EXPECT_THAT(api_->DPLoadFile(nullptr, Text(file_)), IsRefused());
    EXPECT_THAT(api_->DPGetProfileString(session, Text("S"), Text("K"), Text("D"), nullptr, 100),
                IsRefused());
    EXPECT_THAT(api_->DPGetProfileInt(session, Text("S"), Text("K"), 5, nullptr), IsRefused());
    EXPECT_THAT(api_->DPGetDepotDisplayPath(session, Text("<A>\\a.kra"), nullptr), IsRefused());
    EXPECT_THAT(api_->DPGetPathFromDisplayName(session, Text("<Depot A>\\a"), nullptr),
                IsRefused());
    EXPECT_THAT(api_->DPGetDefaultDPPath(session, nullptr), IsRefused());
    EXPECT_THAT(api_->DPPathConvertDPtoFS(Text("<A>\\a.kra"), nullptr), IsRefused());
    EXPECT_THAT(api_->DPBrowse(session, APP_SKEIN, PROMPT_OPEN, 0, 0, 0, 0, nullptr), IsRefused());
    EXPECT_THAT(api_->DPBrowseMultiSel(session, APP_SKEIN, 0, 0, 0, 0, nullptr, 0), IsRefused());
    EXPECT_THAT(api_->DPFindNext(session, 0, nullptr), IsRefused());
    EXPECT_THAT(api_->DPMakeCopyFromSrcFile(session, Text("<A>\\a.kra"), nullptr), IsRefused());
    LONG_PTR none = 0;
    EXPECT_THAT(api_->DPFindInit(nullptr, Text("<A>\\"), Text(""), APP_SKEIN, nullptr),
                IsRefused());
    EXPECT_THAT(api_->DPFindInit(&none, Text("<A>\\"), Text(""), APP_SKEIN, nullptr), IsRefused());
}

// An input pointer that is null and one to a null BSTR both stand for the empty text.
class NullInputsTest : public ComponentTest, public testing::WithParamInterface<bool> {
protected:
    BSTR* Null() { return GetParam() ? &nothing_ : nullptr; }

    const std::string root_ = DefineDepot("A", "Depot A");
    const std::string file_ = folder_.MakeFile("A\\a.kra", kProfile);
    BSTR nothing_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(, NullInputsTest, testing::Bool(), [](const auto& parameter) {
    return parameter.param ? "NullText" : "NullPointer";
});

TEST_P(NullInputsTest, DefaultCountsAsEmpty) {
    Session session(*api_);
    ASSERT_THAT(api_->DPLoadFile(session.Address(), Text(file_)), IsOk());
    OutText value;
    EXPECT_THAT(api_->DPGetProfileString(session, Text("S"), Text("Absent"), Null(), value, 100),
                IsOk());
    EXPECT_EQ(L"", value.Value());
    EXPECT_FALSE(value.IsNull());
}

TEST_P(NullInputsTest, SectionAndKeyNeverListNames) {
    Session session(*api_);
    ASSERT_THAT(api_->DPLoadFile(session.Address(), Text(file_)), IsOk());
    OutText keys;
    EXPECT_THAT(api_->DPGetProfileString(session, Text("S"), Null(), Text("D"), keys, 100), IsOk());
    EXPECT_EQ(L"D", keys.Value());
    OutText sections;
    EXPECT_THAT(api_->DPGetProfileString(session, Null(), Null(), Text("D"), sections, 100),
                IsOk());
    EXPECT_EQ(L"D", sections.Value());
    ULONG number = 4711;
    EXPECT_THAT(api_->DPGetProfileInt(session, Text("S"), Null(), 7, &number), IsOk());
    EXPECT_EQ(7u, number);
}

TEST_P(NullInputsTest, ValueCountsAsEmptyAndDeletesTheKey) {
    Session session(*api_);
    ASSERT_THAT(api_->DPLoadFile(session.Address(), Text(file_)), IsOk());
    EXPECT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Null()), IsOk());
    EXPECT_EQ(L"(default)", Read(session, L"S", L"K"));
}

TEST_P(NullInputsTest, PathsCountAsEmpty) {
    Session session(*api_);
    EXPECT_THAT(api_->DPLoadFile(session.Address(), Null()), IsOk());
    EXPECT_EQ(L"(default)", Read(session, L"S", L"K"));
    EXPECT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Text("lost")), IsOk());
    EXPECT_THAT(api_->DPSetSelItemPath(session, Null()), IsOk());
    EXPECT_THAT(api_->DPFileExists(session, Null()), IsRefused());
    OutText path;
    EXPECT_THAT(api_->DPGetDepotDisplayPath(session, Null(), path), IsRefused());
    EXPECT_TRUE(path.IsNull());
    EXPECT_THAT(api_->DPGetPathFromDisplayName(session, Null(), path), IsRefused());
    EXPECT_TRUE(path.IsNull());
    EXPECT_THAT(api_->DPPathConvertDPtoFS(Null(), path), IsRefused());
    EXPECT_TRUE(path.IsNull());
    EXPECT_EQ(kProfile, FileBytes(file_));
}

TEST_P(NullInputsTest, LaterMethodsDoNotCrash) {
    const Session session(*api_);
    OutText text;
    LONG_PTR found = 0;
    LONG count = 0;
    EXPECT_THAT(api_->DPRenameFile(session, Null(), Null()), IsRefused());
    EXPECT_THAT(api_->DPDeleteFile(session, Null()), IsRefused());
    EXPECT_THAT(api_->DPIsPathWriteAble(session, Null()), IsRefused());
    EXPECT_THAT(api_->DPMakeCopyFromSrcFile(session, Null(), text), IsRefused());
    api_->DPCopyFileToLocalFS(session, Null(), Null(), VARIANT_FALSE);
    api_->DPFindInit(&found, Null(), Null(), APP_SKEIN, &count);
    api_->DPUnInitialize(found);
    EXPECT_EQ(kProfile, FileBytes(file_));
}

}  // namespace
}  // namespace depot::test
