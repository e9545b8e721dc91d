// compare
#include "config/file_types.h"
#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/profile_values.h"
#include "depotctl/tree_difference.h"
#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

struct CompareOptions {
    std::string first, second;
    bool values = false;
};

const char* WordFor(ItemState state) {
    switch (state) {
        case ItemState::kOnlyLeft:
            return "only in the first";
        case ItemState::kOnlyRight:
            return "only in the second";
        case ItemState::kOtherKind:
            return "a file and a folder";
        default:
            return "different";
    }
}

Json ValueJson(const std::optional<std::string>& value) {
    return value ? Json(*value) : Json();
}

void AddValues(const TreeDifference& difference, const DifferentItem& item, Json& rows) {
    const auto first = ValuesOf(difference.Left(item)), second = ValuesOf(difference.Right(item));
    for (const ValueDifference& value : CompareValues(first, second)) {
        rows.push_back({{"path", Utf8FromAnsi(item.name)},
                        {"difference", "value"},
                        {"section", value.section},
                        {"key", value.key},
                        {"first", ValueJson(value.first)},
                        {"second", ValueJson(value.second)}});
    }
}

// Of a tree only the profiles are compared by their values, of two files these two.
bool IsComparedByValues(const DifferentItem& item, const CompareOptions& options) {
    return options.values && item.state == ItemState::kDifferent &&
           (item.name.empty() || DetectFileType(item.left) != kUnknownFileType ||
            DetectFileType("xxxx" + item.name) != kUnknownFileType);
}

Json Differences(const TreeDifference& difference, const CompareOptions& options) {
    Json rows = Json::array();
    for (const DifferentItem& item : difference.Items()) {
        if (item.state == ItemState::kSame) continue;
        if (IsComparedByValues(item, options)) {
            AddValues(difference, item, rows);
        } else {
            rows.push_back(
                {{"path", Utf8FromAnsi(item.name)}, {"difference", WordFor(item.state)}});
        }
    }
    return rows;
}

std::vector<Column> Columns(bool values) {
    std::vector<Column> columns = {{"difference", "DIFFERENCE"}, {"path", "PATH"}};
    if (values) {
        columns.insert(
            columns.end(),
            {{"section", "SECTION"}, {"key", "KEY"}, {"first", "FIRST"}, {"second", "SECOND"}});
    }
    return columns;
}

void Compare(Program& program, const CompareOptions& options) {
    program.refusal = ExitCode::kFailed;
    Places places(program);
    const Place first = places.Resolve(options.first), second = places.Resolve(options.second);
    const ItemKind firstKind = places.Require(first), secondKind = places.Require(second);
    const TreeDifference difference({first, firstKind}, {second, secondKind}, DifferentBy::kBytes);
    const Json rows = Differences(difference, options);
    program.renderer.List(rows, Columns(options.values));
    const std::uint32_t links = difference.LeftOutLeft().links + difference.LeftOutRight().links;
    const std::uint32_t names =
        difference.LeftOutLeft().unsafeNames + difference.LeftOutRight().unsafeNames;
    if (!rows.empty()) program.outcome = ExitCode::kRefused;
    if (links + names > 0) {
        Refuse(Counted(links, "link") + " and " + Counted(names, "name") +
               " could not be listed and were not compared");
    }
}

}  // namespace

void AddCompareCommand(CLI::App& app, Program& program) {
    const auto [command, options] = AddCommand<CompareOptions>(
        app, program,
        {"compare", "Compare two files or two trees",
         "Ends with 0 when they are the same, 1 when they differ, and 4 when that cannot be found "
         "out.\nExamples:\n"
         "  depotctl compare \"<Work>\\Sessions\" \"<Team>\\Sessions\"\n"
         "  depotctl compare --values \"<Work>\\a.kre\" \"<Team>\\a.kre\""},
        Compare);
    command.add_option("first", options.first, "A file or folder")->required();
    command.add_option("second", options.second, "The one to compare it with")->required();
    command.add_flag("--values", options.values,
                     "Profiles are the same when all their values are, as applications read them");
}

}  // namespace depot::ctl
