// What the window of kept copies shows and asks, in the user's language.
#pragma once

#include <string>
#include <vector>

#include "depotbrowser/browse_texts.h"
#include "depotbrowser/kept_files.h"
#include "platform/win32.h"

namespace depot {

std::wstring NameOf(const KeptFile& file);

// The rows of the two lists.
std::vector<std::wstring> KeptCells(const BrowseTexts& texts, const KeptFile& file);
std::vector<std::wstring> ValueCells(const KeptValue& value);

// Why nothing became of it.
std::wstring KeptFailure(const BrowseTexts& texts, const KeptFile& file, const KeptResult& result);

// What a comparison came to.
std::wstring ComparisonText(const BrowseTexts& texts, const KeptFile& file,
                            const KeptComparison& comparison);

// The values that both changed, such as "[Session] Title"; of many the first ones.
std::wstring ConflictNames(const std::vector<MergeConflict>& conflicts);

// Asks for the file that a copy is written to; empty where the user gives up.
std::wstring AskForCopy(HWND owner, const BrowseTexts& texts, const KeptFile& file);

}  // namespace depot
