#include "platform/user_notice.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/error_text.h"
#include "support/box_log.h"

namespace depot {
namespace {

std::vector<std::string>& Received() {
    static std::vector<std::string> texts;
    return texts;
}

// Ends each test without a receiver, as programs begin.
class UserNoticeTest : public testing::Test {
protected:
    UserNoticeTest() { Received().clear(); }
    ~UserNoticeTest() override { InstallNoticeReceiver(nullptr); }

    static void Receive() {
        InstallNoticeReceiver([](const std::string& text) { Received().push_back(text); });
    }

    test::BoxLog boxes_;
};

TEST_F(UserNoticeTest, ShowNoticeWithoutReceiverShowsABoxWithTheErrorIcon) {
    ShowNotice("It failed", "Quillon", nullptr);
    const auto boxes = boxes_.Boxes();
    ASSERT_EQ(1u, boxes.size());
    EXPECT_EQ("It failed", boxes[0].text);
    EXPECT_EQ("Quillon", boxes[0].caption);
    EXPECT_TRUE(boxes[0].hasErrorIcon);
}

TEST_F(UserNoticeTest, ShowNoticeWithReceiverHandsOverTheTextWithoutABox) {
    Receive();
    ShowNotice("It failed", "Quillon", nullptr);
    EXPECT_EQ(std::vector<std::string>{"It failed"}, Received());
    EXPECT_TRUE(boxes_.Boxes().empty());
}

TEST_F(UserNoticeTest, ErrorTextThatIsNotTakenReachesTheReceiver) {
    Receive();
    FormatErrorText(0, "It failed", nullptr, nullptr, nullptr);
    EXPECT_EQ(std::vector<std::string>{"It failed"}, Received());
    EXPECT_TRUE(boxes_.Boxes().empty());
}

TEST_F(UserNoticeTest, CollectorTakesTheNoticesOfItsThreadBeforeAReceiver) {
    Receive();
    {
        NoticeCollector outer;
        ShowNotice("one", "Quillon", nullptr);
        {
            NoticeCollector inner;
            EXPECT_EQ(&inner, NoticeCollector::Current());
            ShowNotice("two", "Quillon", nullptr);
            ShowNotice("three", "Quillon", nullptr);
            EXPECT_EQ("two\nthree", inner.Texts());
        }
        std::thread([] { ShowNotice("elsewhere", "Quillon", nullptr); }).join();
        EXPECT_EQ("one", outer.Texts());
    }
    EXPECT_EQ(nullptr, NoticeCollector::Current());
    EXPECT_EQ((std::vector<std::string>{"elsewhere"}), Received());
}

}  // namespace
}  // namespace depot
