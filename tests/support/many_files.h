// Folders of very many files.
#pragma once

#include <string>

namespace depot::test {

// Makes sure that the folder holds the empty files "f0.kra", "f1.kra" ... up to `count` in all;
// returns whether it does. Under Wine, which looks through the whole folder for each new name in
// another letter case, the system below makes them: 50,000 would take minutes otherwise.
bool MakeManyFiles(const std::string& folder, int count);

}  // namespace depot::test
