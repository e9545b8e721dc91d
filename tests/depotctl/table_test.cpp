#include "depotctl/table.h"

#include <gtest/gtest.h>

#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

const std::vector<Align> kTwo = {Align::kLeft, Align::kRight};

TEST(TableTest, LayoutAlignsColumnsTwoBlanksApart) {
    EXPECT_EQ("NAME    SIZE\nB\xC3\xBCro       5\noffice    10\n",
              LayoutTable({{"NAME", "SIZE"}, {"B\xC3\xBCro", "5"}, {"office", "10"}}, kTwo, 0));
}

TEST(TableTest, LayoutWithoutWidthNeverCuts) {
    const std::string name(300, 'x');
    EXPECT_NE(std::string::npos, LayoutTable({{"NAME"}, {name}}, {Align::kLeft}, 0).find(name));
}

TEST(TableTest, LayoutFitsEveryWidth) {
    const std::vector<TableRow> rows = {
        {"NAME", "KIND", "TYPE", "SIZE", "CHANGED"},
        {"a rather long name of a session profile.kre", "file", "1", "12345", "2024-05-31 14:07"}};
    const std::vector<Align> alignment(5, Align::kLeft);
    for (std::size_t width = 1; width < 100; ++width) {
        const std::string text = LayoutTable(rows, alignment, width);
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = text.find('\n', at);
            EXPECT_LE(DisplayWidth(text.substr(at, end - at)), width);
            at = end + 1;
        }
    }
}

TEST(TableTest, LayoutCutsTheWidestColumnFirst) {
    EXPECT_EQ("NAME    KIND\nlong \xE2\x80\xA6  file\n",
              LayoutTable({{"NAME", "KIND"}, {"long name here", "file"}},
                          {Align::kLeft, Align::kLeft}, 12));
}

TEST(TableTest, LayoutMakesCellsPrintable) {
    EXPECT_EQ("N\na?[0m\n", LayoutTable({{"N"}, {"a\x1b[0m"}}, {Align::kLeft}, 0));
}

}  // namespace
}  // namespace depot::ctl
