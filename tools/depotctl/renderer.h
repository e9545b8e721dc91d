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

    // A listing: an array of objects, or a table of some of their members.
    void List(const Json& rows, const std::vector<Column>& columns) const;

    // One answer: a value as it is, or its text, a line or more.
    void Answer(const Json& value, const std::string& text) const;

private:
    std::string TableText(const Json& rows, const std::vector<Column>& columns) const;

    const OutputStream& stream_;
    bool json_ = false;
};

}  // namespace depot::ctl
