// The texts of the browse dialog in the user's language.
#pragma once

#include <string>

#include "depotbrowser/entry_order.h"
#include "platform/handles.h"

namespace depot {

// Reads the texts from the library in the folder that a client named, else from where the
// credentials dialog has them.
class BrowseTexts {
public:
    // `folder` ends in a backslash; it may be empty.
    explicit BrowseTexts(const std::string& folder);

    std::wstring Text(UINT id) const;
    // The text with its "%s" filled in.
    std::wstring Text(UINT id, const std::wstring& argument) const;

    // What the list shows of an entry.
    std::wstring TypeName(const BrowseEntry& entry) const;
    std::wstring SizeText(const BrowseEntry& entry) const;
    static std::wstring DateText(const BrowseEntry& entry);

private:
    UniqueModule library_;
    std::wstring groupSeparator_;
};

}  // namespace depot
