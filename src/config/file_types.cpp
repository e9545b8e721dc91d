#include "config/file_types.h"

#include <algorithm>
#include <iterator>

#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

struct TypeExtension {
    std::int32_t code;
    std::string_view extension;
};

constexpr TypeExtension kExtensions[] = {
    {1, ".kre"},  {16, ".krp"}, {29, ".krs"}, {56, ".krf"},  {57, ".krd"}, {58, ".krh"},
    {59, ".krc"}, {60, ".krk"}, {62, ".krv"}, {63, ".krcf"}, {64, ".kra"},
};

// The order in which codes are tried; those without an extension of their own can never match.
constexpr std::int32_t kDetectionOrder[] = {1,  19, 20, 17, 15, 53, 61, 62,
                                            63, 64, 58, 56, 57, 16, 29};

constexpr std::size_t kShortestRecognisedPath = 5;

std::string_view ExtensionOf(std::int32_t code) {
    const auto row = std::find_if(std::begin(kExtensions), std::end(kExtensions),
                                  [code](const TypeExtension& type) { return type.code == code; });
    return row == std::end(kExtensions) ? std::string_view() : row->extension;
}

}  // namespace

std::string ExtensionForType(std::int32_t code) {
    return std::string(ExtensionOf(code));
}

std::string GetExtension(std::string_view name) {
    return ExtensionPart(name);
}

std::int32_t DetectFileType(std::string_view path, std::int32_t /*flag*/) {
    if (path.size() < kShortestRecognisedPath) return kUnknownFileType;
    const std::string extension = GetExtension(path);
    const auto code = std::find_if(std::begin(kDetectionOrder), std::end(kDetectionOrder),
                                   [&](std::int32_t candidate) {
                                       const std::string_view known = ExtensionOf(candidate);
                                       return !known.empty() && EqualsNoCase(extension, known);
                                   });
    return code == std::end(kDetectionOrder) ? kUnknownFileType : *code;
}

bool IsProfileExtension(std::string_view extension) {
    return std::any_of(std::begin(kExtensions), std::end(kExtensions),
                       [extension](const TypeExtension& type) {
                           return EqualsNoCase(type.extension.substr(1), extension);
                       });
}

}  // namespace depot
