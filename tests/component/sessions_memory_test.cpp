// Sessions that a method makes while memory runs out: the client has one, or there is none.
#include "component/component.h"
#include "support/failing_memory.h"
#include "support/results.h"

namespace depot::test {
namespace {

// A library of the test's own, so that its memory can fail alone.
class SessionsMemoryTest : public ComponentTest {
protected:
    SessionsMemoryTest() {
        DefineDepot("A");
        folder_.MakeFile("A\\a.kra", "[S]\r\nK=1\r\n");
    }

    // Makes the call with memory running out at every point of its way, and ends the sessions that
    // it hands out. Returns the blocks and handles that stayed behind.
    template <class Call>
    std::size_t LeftByFailures(const Call& call) {
        const auto checked = [&] {
            LONG_PTR handle = 0;
            const HRESULT result = call(handle);
            EXPECT_EQ(result == S_OK, handle != 0);
            refused_ += result == S_FALSE ? 1 : 0;
            EXPECT_THAT(fresh_->DPUnInitialize(handle), IsOk());
        };
        FailEachAllocation(checked, library_.Module());
        return LeftBehind([&] { FailEachAllocation(checked, library_.Module()); });
    }

    const Library library_{CopyComponent(folder_, "qdirsvc.dll")};
    const Com<IDepotIntrApi> fresh_ = library_.CreateApi();
    int refused_ = 0;
};

TEST_F(SessionsMemoryTest, ListingHandsOutNoSessionWhenItFails) {
    EXPECT_EQ(0u, LeftByFailures([&](LONG_PTR& handle) {
                  LONG count = 0;
                  return fresh_->DPFindInit(&handle, Text("<A>\\"), Text(".kra"), APP_SKEIN,
                                            &count);
              }));
    EXPECT_LT(0, refused_);
}

TEST_F(SessionsMemoryTest, LoadingHandsOutNoSessionWhenItFails) {
    EXPECT_EQ(0u, LeftByFailures([&](LONG_PTR& handle) {
                  return fresh_->DPLoadFile(&handle, Text("<A>\\a.kra"));
              }));
    EXPECT_LT(0, refused_);
}

TEST_F(SessionsMemoryTest, InitializingHandsOutNoSessionWhenItFails) {
    EXPECT_EQ(0u, LeftByFailures([&](LONG_PTR& handle) { return fresh_->DPInitialize(&handle); }));
    EXPECT_LT(0, refused_);
}

TEST_F(SessionsMemoryTest, LoadingThatFailsLeavesAGivenSessionWithItsClient) {
    LONG_PTR given = 0;
    ASSERT_THAT(fresh_->DPInitialize(&given), IsOk());
    int refused = 0;
    FailEachAllocation(
        [&] {
            LONG_PTR handle = given;
            refused += fresh_->DPLoadFile(&handle, Text("<A>\\a.kra")) == S_FALSE ? 1 : 0;
            EXPECT_EQ(given, handle);
        },
        library_.Module());
    EXPECT_LT(0, refused);
    EXPECT_THAT(fresh_->DPSetSelItemPath(given, Text("still alive")), IsOk());
    EXPECT_THAT(fresh_->DPUnInitialize(given), IsOk());
}

}  // namespace
}  // namespace depot::test
