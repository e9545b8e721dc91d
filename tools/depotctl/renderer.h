// What commands answer, as text for people or as JSON for programs.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "depotctl/table.h"
#include "depotctl/terminal.h"

namespace depot::ctl {

using Json = nlohmann::ordered_json;

// A column of a listing: the member of each row that it shows.
struct Column {
    const char* member;
    const char* heading;
    Align align = Align::kLeft;
};

// The one way to standard output. Texts are in UTF-8.
class Renderer {
public:
    explicit Renderer(const OutputStream& stream) : stream_(stream) {}

    void UseJson() { json_ = true; }
    bool IsJson() const { return json_; }

    // Whether the command has given its answer.
    bool HasAnswered() const { return answered_; }

    // A listing: an array of objects, or a table of some of their members.
    void List(const Json& rows, const std::vector<Column>& columns) const;

    // The same with a text of its own, which is empty for no rows.
    void Lines(const Json& rows, const std::string& text) const;

    // What is done meanwhile, for people only.
    void Progress(const std::string& text) const;

    // Returns a time, or nothing where there is none: as "2026-05-31 14:07", in the time of the
    // machine, but in JSON and where the user wants it so by ISO 8601, as "2026-05-31T12:07:31Z".
    std::string TimeText(const FILETIME& time) const;
    void UseIsoTimes() { isoTimes_ = true; }

    // One answer: a value as it is, or its text, a line or more.
    void Answer(const Json& value, const std::string& text) const;

private:
    void WriteTable(const std::string& table) const;
    std::string TableText(const Json& rows, const std::vector<Column>& columns) const;

    const OutputStream& stream_;
    bool json_ = false;
    bool isoTimes_ = false;
    mutable bool answered_ = false;
};

}  // namespace depot::ctl
