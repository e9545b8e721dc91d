// The header for programs in C++, used as such a program does.
#include <depotintr.hpp>

#include "component/component.h"
#include "support/box_log.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

class WrapperTest : public ComponentTest {
protected:
    // The code with which a call fails; 0 for one that does not.
    template <class Call>
    static long CodeOf(const Call& call) {
        try {
            call();
            return 0;
        } catch (const depotintr::Error& error) {
            EXPECT_NE(L"", error.text());
            EXPECT_EQ(depotintr::utf8(error.text()), error.what());
            return error.code();
        }
    }

    const std::string root_ = DefineDepot("Work", "Work profiles");
    const std::string file_ = folder_.MakeFile("Work\\a.kra", "[S]\r\nK=1\r\nN=7\r\n");
    depotintr::Session session_;
};

TEST_F(WrapperTest, ValuesAreReadAndWritten) {
    session_.load(L"<Work>\\a.kra");
    EXPECT_EQ(L"1", session_.value("S", "K"));
    EXPECT_EQ(L"none", session_.value(L"S", L"X", L"none"));
    EXPECT_EQ(7u, session_.number("S", "N"));
    EXPECT_EQ(23u, session_.number("S", "X", 23));
    session_.setValue("S", "K", "  2  ");
    session_.flush();
    EXPECT_EQ(L"  2  ", session_.value("S", "K"));
    EXPECT_EQ(L"<Work>\\", session_.defaultPath());
    EXPECT_EQ(Wide(file_), session_.localPath("<Work>\\a.kra"));
}

TEST_F(WrapperTest, FilesAreUsedAnywhere) {
    EXPECT_TRUE(session_.exists("<Work>\\a.kra"));
    EXPECT_FALSE(session_.exists(L"<Work>\\b.kra"));
    EXPECT_TRUE(session_.isWritable("<Work>"));
    EXPECT_FALSE(session_.isWritable("<None>"));
    session_.writeText("<Work>\\t.txt", L"\u00E4", TEXT_UTF8);
    EXPECT_EQ(L"\u00E4", session_.readText("<Work>\\t.txt"));
    EXPECT_EQ("\xEF\xBB\xBF\xC3\xA4", FileBytes(folder_.At("Work\\t.txt")));
    session_.makeFolder("<Work>\\Sub");
    session_.makeFolder("<Work>\\Sub", true);
    session_.copy("<Work>\\a.kra", "<Work>\\Sub\\");
    session_.move("<Work>\\Sub\\a.kra", "<Work>\\Sub\\b.kra");
    EXPECT_THAT(session_.find("<Work>\\Sub"), ElementsAre(L"<Work>\\Sub\\b.kra"));
    EXPECT_THAT(session_.find("<Work>", "", FIND_FOLDERS), ElementsAre(L"<Work>\\Sub"));
    session_.remove("<Work>\\Sub\\b.kra");
    EXPECT_THAT(session_.find("<Work>\\Sub"), SizeIs(0));
    EXPECT_THAT(session_.chosenFiles(), SizeIs(0));
}

TEST_F(WrapperTest, DepotsAreListed) {
    const std::vector<depotintr::Depot> depots = session_.depots();
    ASSERT_THAT(depots, SizeIs(1));
    EXPECT_EQ(L"Work", depots.front().key);
    EXPECT_EQ(L"Work profiles", depots.front().name);
    EXPECT_EQ(Wide(root_), depots.front().location);
    EXPECT_TRUE(session_.isReachable("work"));
    EXPECT_NE(0, CodeOf([&] { session_.isReachable("none"); }));
}

TEST_F(WrapperTest, FailuresAreExceptionsWithCodeAndText) {
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, CodeOf([&] { session_.readText("<Work>\\none.kra"); }));
    EXPECT_EQ(ERROR_PATH_NOT_FOUND, CodeOf([&] { session_.exists("<None>\\a.kra"); }));
    EXPECT_EQ(ERROR_FILE_EXISTS, CodeOf([&] { session_.copy(file_, "<Work>\\a.kra"); }));
    EXPECT_NE(0, CodeOf([&] { session_.value("S", "K"); }));
    EXPECT_NE(0, CodeOf([&] { session_.localPath(""); }));
}

TEST_F(WrapperTest, ProgressStopsByFalseAndByAnException) {
    folder_.MakeFolder("Work\\Sub");
    folder_.MakeFile("Work\\Sub\\a.kra", "1");
    folder_.MakeFile("Work\\Sub\\b.kra", "2");
    std::vector<long> done;
    session_.copy("<Work>\\Sub", "<Work>\\Whole", false, [&](long files, long all, double) {
        EXPECT_EQ(2, all);
        done.push_back(files);
        return true;
    });
    EXPECT_THAT(done, ElementsAre(1, 2));
    EXPECT_EQ(ERROR_CANCELLED, CodeOf([&] {
                  session_.copy("<Work>\\Sub", "<Work>\\Half", false,
                                [](long, long, double) { return false; });
              }));
    EXPECT_THROW(session_.copy("<Work>\\Sub", "<Work>\\Other", false,
                               [](long, long, double) -> bool { throw std::out_of_range("x"); }),
                 std::out_of_range);
}

TEST_F(WrapperTest, SessionEndsWithItsObject) {
    LONG_PTR handle = 0;
    {
        depotintr::Session session;
        handle = session.handle();
        EXPECT_THAT(api_->DPSetSelItemPath(handle, Text("x")), IsOk());
        EXPECT_FALSE(session.quiet());
        EXPECT_TRUE(session.quiet(false));
    }
    EXPECT_THAT(api_->DPSetSelItemPath(handle, Text("x")), IsRefused());
}

}  // namespace
}  // namespace depot::test
