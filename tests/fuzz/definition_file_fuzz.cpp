// Files with definitions, which somebody may have sent.
#include "depotctl/definition_file.h"

#include "fuzz/fuzz_input.h"

using namespace depot;
using namespace depot::ctl;

namespace {

constexpr char kKey[] = "Software\\Quillon\\Farrow\\Depots";

bool IsOneKey(const std::string& key) {
    return !key.empty() && key.find('\\') == std::string::npos;
}

// What was read can be written, and is read back as it is, unless a value has characters that no
// file can hold.
void Check(const std::vector<FiledDefinition>& definitions, FileForm form) {
    for (const FiledDefinition& definition : definitions) {
        std::vector<std::string> leftOut;
        RawDefinition raw = {definition.key, definition.change.written};
        const FiledDefinition whole = {definition.isForMachine, definition.key, false,
                                       WholeDefinition(raw, leftOut)};
        // Without values there are no items.
        bool isPlain = leftOut.empty() && !whole.change.written.empty();
        for (const char c : definition.key)
            isPlain = isPlain && static_cast<unsigned char>(c) >= ' ';
        if (!isPlain) continue;
        const auto again = ReadDefinitionFile(FileText({whole}, form, kKey), kKey);
        test::Require(again.problem.empty() && again.definitions.size() == 1);
        test::Require(again.definitions[0].change.written.size() == whole.change.written.size());
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto read = ReadDefinitionFile(bytes, kKey);
    test::Require(read.problem.empty() || read.definitions.empty());
    for (const FiledDefinition& definition : read.definitions) {
        test::Require(IsOneKey(definition.key));
    }
    Check(read.definitions, FileForm::kRegistry);
    Check(read.definitions, FileForm::kPolicyItems);
    return 0;
}
