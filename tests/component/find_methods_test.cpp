// Listing the files of a folder.
#include <algorithm>
#include <climits>

#include "component/component.h"
#include "support/results.h"

namespace depot::test {
namespace {

// The result of one listing, whose session ends with it.
class Listing {
public:
    Listing(IDepotIntrApi& api, const char* path, const char* extension, APP_TYPE type = APP_SKEIN)
        : api_(api) {
        result = api.DPFindInit(&handle, Text(path), Text(extension), type, &count);
    }
    ~Listing() {
        if (handle != 0) {
            EXPECT_THAT(api_.DPUnInitialize(handle), IsOk());
        }
    }
    Listing(const Listing&) = delete;
    Listing& operator=(const Listing&) = delete;

    // The path at an index; the text "(failed)" when there is none.
    std::wstring At(LONG index) {
        OutText path;
        if (api_.DPFindNext(handle, index, path) == S_OK) return path.Value();
        EXPECT_TRUE(path.IsNull());
        return L"(failed)";
    }

    HRESULT result = E_UNEXPECTED;
    LONG_PTR handle = kJunkHandle;
    LONG count = 4711;

private:
    IDepotIntrApi& api_;
};

class FindMethodsTest : public ComponentTest {
protected:
    FindMethodsTest() { DefineDepot("Work"); }
};

TEST_F(FindMethodsTest, FoldersProfilesAreHandedOutByIndexInAnyOrder) {
    folder_.MakeFile("Work\\a.kra", "");
    folder_.MakeFile("Work\\b.kra", "");
    folder_.MakeFile("Work\\c.krv", "");
    Listing found(*api_, "<Work>\\", ".kra");
    ASSERT_THAT(found.result, IsOk());
    ASSERT_EQ(2, found.count);
    const std::wstring first = found.At(0), second = found.At(1);
    EXPECT_EQ(L"<Work>\\a.kra", std::min(first, second));
    EXPECT_EQ(L"<Work>\\b.kra", std::max(first, second));
    EXPECT_EQ(second, found.At(1));
    EXPECT_EQ(first, found.At(0));
}

TEST_F(FindMethodsTest, IndexOutsideTheListIsRefused) {
    folder_.MakeFile("Work\\a.kra", "");
    Listing found(*api_, "<Work>\\", ".kra");
    ASSERT_EQ(1, found.count);
    for (const LONG index : {1L, 2L, -1L, LONG_MAX, LONG_MIN}) {
        SCOPED_TRACE(index);
        EXPECT_EQ(L"(failed)", found.At(index));
    }
}

TEST_F(FindMethodsTest, PathMayHoldTheFilter) {
    folder_.MakeFile("Work\\a.kra", "");
    folder_.MakeFile("Work\\b.krv", "");
    Listing found(*api_, "<Work>\\*.kra", "");
    EXPECT_EQ(1, found.count);
    EXPECT_EQ(L"<Work>\\a.kra", found.At(0));
}

TEST_F(FindMethodsTest, BareNameOfADepotListsItsRoot) {
    folder_.MakeFile("Work\\a.kra", "");
    for (const char* path : {"<Work>", "<WORK>"}) {
        SCOPED_TRACE(path);
        Listing found(*api_, path, ".kra");
        EXPECT_THAT(found.result, IsOk());
        EXPECT_EQ(1, found.count);
        EXPECT_EQ(L"<Work>\\a.kra", found.At(0));
    }
}

TEST_F(FindMethodsTest, ApplicationChoosesTheFileType) {
    folder_.MakeFile("Work\\a.krv", "");
    Listing kickoff(*api_, "<Work>\\", ".*", APP_KICKOFF);
    EXPECT_EQ(1, kickoff.count);
    Listing skein(*api_, "<Work>\\", ".*", APP_SKEIN);
    EXPECT_EQ(0, skein.count);
}

TEST_F(FindMethodsTest, OfTwoNeighboursOfAWrongTypeTheSecondStays) {
    folder_.MakeFile("Work\\1.krv", "");
    folder_.MakeFile("Work\\2.krv", "");
    Listing found(*api_, "<Work>\\", ".*");
    EXPECT_EQ(1, found.count);
}

TEST_F(FindMethodsTest, OfTwoOfAWrongTypeBeforeARightOneTheSecondStays) {
    DefineDepot("Team");
    folder_.MakeFile("Team\\1.krv", "");
    folder_.MakeFile("Team\\2.krv", "");
    folder_.MakeFile("Team\\3.kra", "");
    Listing found(*api_, "<Team>\\", ".*");
    EXPECT_EQ(2, found.count);
}

TEST_F(FindMethodsTest, AnyOtherApplicationIsRefusedWithoutASession) {
    for (const int type : {0, 3, -1}) {
        SCOPED_TRACE(type);
        Listing found(*api_, "<Work>\\", ".*", static_cast<APP_TYPE>(type));
        EXPECT_THAT(found.result, IsRefused());
        EXPECT_EQ(0, found.handle);
        EXPECT_EQ(4711, found.count);
    }
}

TEST_F(FindMethodsTest, NothingFoundIsASuccess) {
    for (const char* path : {"<Work>\\", "<Work>\\none", "<None>\\", "", "*.kra"}) {
        SCOPED_TRACE(path);
        Listing found(*api_, path, ".kra");
        EXPECT_THAT(found.result, IsOk());
        EXPECT_EQ(0, found.count);
        EXPECT_EQ(L"(failed)", found.At(0));
    }
}

TEST_F(FindMethodsTest, EachListingIsASessionOfItsOwn) {
    folder_.MakeFile("Work\\a.kra", "");
    Listing first(*api_, "<Work>\\", ".kra");
    folder_.MakeFile("Work\\b.kra", "");
    Listing second(*api_, "<Work>\\", ".kra");
    EXPECT_NE(first.handle, second.handle);
    EXPECT_EQ(1, first.count);
    EXPECT_EQ(L"(failed)", first.At(1));
    EXPECT_EQ(2, second.count);
}

TEST_F(FindMethodsTest, SessionThatIsPassedInIsNeitherUsedNorEnded) {
    const Session session(*api_);
    LONG_PTR handle = session;
    LONG count = 0;
    ASSERT_THAT(api_->DPFindInit(&handle, Text("<Work>\\"), Text(".*"), APP_SKEIN, &count), IsOk());
    EXPECT_NE(session, handle);
    EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
    EXPECT_THAT(api_->DPSetSelItemPath(session, Text("x")), IsOk());
}

TEST_F(FindMethodsTest, SessionWithoutAListingHasNothing) {
    const Session session(*api_);
    OutText path;
    EXPECT_THAT(api_->DPFindNext(session, 0, path), IsRefused());
    EXPECT_TRUE(path.IsNull());
}

}  // namespace
}  // namespace depot::test
