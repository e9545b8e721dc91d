// Definitions in files: as .reg files, and as lists of registry items for group policy preferences.
// Everything here is text in UTF-8; the registry is not touched.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "depotctl/definition.h"

namespace depot::ctl {

// A definition in a file: what becomes of it where the file is imported.
struct FiledDefinition {
    bool isForMachine = false;
    std::string key;
    bool isRemoved = false;  // with all its values, before any is written
    DefinitionChange change;
};

enum class FileForm { kRegistry, kPolicyItems };

// The change that makes a definition as it is on another machine. A password is removed there: the
// file is shown and kept, and one that is there may be another server's. `leftOut` receives the
// names of values that neither form can hold, or that the component never reads.
DefinitionChange WholeDefinition(const RawDefinition& definition,
                                 std::vector<std::string>& leftOut);

// The contents of a file with the definitions below `depotsKey`. A .reg file has lines that end in
// CR LF; editors want its bytes as RegistryFileBytes gives them.
std::string FileText(const std::vector<FiledDefinition>& definitions, FileForm form,
                     std::string_view depotsKey);

// What a file says, or why it is refused: nothing of a file that is damaged, or that holds anything
// but definitions, is taken.
struct ReadDefinitionsResult {
    std::vector<FiledDefinition> definitions;
    std::string problem;  // empty when the file is in order
};

// Reads either form from the bytes of a file, in UTF-8 or UTF-16 with a mark.
ReadDefinitionsResult ReadDefinitionFile(std::string_view bytes, std::string_view depotsKey);

// The parts of it.
ReadDefinitionsResult ReadRegistryFile(std::string_view text, std::string_view depotsKey);
ReadDefinitionsResult ReadPolicyItems(std::string_view text, std::string_view depotsKey);

// Puts together what files say of values, in their order.
class DefinitionCollector {
public:
    explicit DefinitionCollector(std::string_view depotsKey) : depotsKey_(depotsKey) {}

    // Whether a path such as "HKEY_CURRENT_USER\...\Depots\Work" names a definition. Later calls
    // are about it.
    bool Enter(std::string_view path);

    void RemoveAll();
    void Remove(const std::string& name);
    void Write(RawValue value);

    std::vector<FiledDefinition> Take() { return std::move(definitions_); }

private:
    FiledDefinition& Current() { return definitions_[current_]; }

    std::string_view depotsKey_;
    std::vector<FiledDefinition> definitions_;
    std::size_t current_ = 0;
};

}  // namespace depot::ctl
