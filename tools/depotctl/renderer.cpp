#include "depotctl/renderer.h"

#include <algorithm>

#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

std::string CellText(const Json& row, const char* member) {
    const auto cell = row.find(member);
    if (cell == row.end() || cell->is_null()) return {};
    if (cell->is_string()) return cell->get<std::string>();
    if (cell->is_boolean()) return cell->get<bool>() ? "yes" : "no";
    return cell->dump();
}

std::string JsonText(const Json& value) {
    return value.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

void Renderer::List(const Json& rows, const std::vector<Column>& columns) const {
    if (json_) {
        stream_.Write(JsonText(rows));
    } else if (!rows.empty()) {
        WriteTable(TableText(rows, columns));
    }
    answered_ = true;
}

void Renderer::Lines(const Json& rows, const std::string& text) const {
    stream_.Write(json_ ? JsonText(rows) : text);
    answered_ = true;
}

std::string Renderer::TimeText(const FILETIME& time) const {
    SYSTEMTIME utc = {}, local = {};
    if (!FileTimeToSystemTime(&time, &utc)) return {};
    char text[32] = {};
    if (json_ || isoTimes_) {
        wsprintfA(text, "%04u-%02u-%02uT%02u:%02u:%02uZ", utc.wYear, utc.wMonth, utc.wDay,
                  utc.wHour, utc.wMinute, utc.wSecond);
        return text;
    }
    if (!SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local)) return {};
    wsprintfA(text, "%04u-%02u-%02u %02u:%02u", local.wYear, local.wMonth, local.wDay, local.wHour,
              local.wMinute);
    return text;
}

void Renderer::WriteTable(const std::string& table) const {
    const std::size_t heading = std::min(FindAscii(table, '\n'), table.size() - 1) + 1;
    stream_.Write(std::string_view(table).substr(0, heading), Emphasis::kHeading);
    stream_.Write(std::string_view(table).substr(heading));
}

void Renderer::Progress(const std::string& text) const {
    if (!json_) stream_.Write(text);
}

void Renderer::Answer(const Json& value, const std::string& text) const {
    stream_.Write(json_ ? JsonText(value) : text.ends_with('\n') ? text : text + "\n");
    answered_ = true;
}

std::string Renderer::TableText(const Json& rows, const std::vector<Column>& columns) const {
    std::vector<TableRow> cells(1);
    std::vector<Align> alignment;
    for (const Column& column : columns) {
        cells.front().push_back(column.heading);
        alignment.push_back(column.align);
    }
    for (const Json& row : rows) {
        TableRow& line = cells.emplace_back();
        for (const Column& column : columns) line.push_back(CellText(row, column.member));
    }
    // The last column of a terminal's line would make it begin another one.
    const std::size_t terminal = stream_.Columns();
    return LayoutTable(cells, alignment, terminal > 1 ? terminal - 1 : 0);
}

}  // namespace depot::ctl
