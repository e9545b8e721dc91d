#include "macros/macro_values.h"

#include <span>

#include "macros/macro_table.h"
#include "platform/paths.h"

namespace depot {
namespace {

// The deployment component's own class.
constexpr char kDeploymentKey[] =
    "Software\\Classes\\CLSID\\{9a5e0c7c-2b0f-4c83-9d53-6d0f2f1f7a44}\\InprocServer32";

constexpr Hive kHives[] = {Hive::kCurrentUser, Hive::kLocalMachine};

constexpr const char* kUserFolderKeys[] = {
    "Software\\Quillon\\Farrow\\13.00\\Wharfside", "Software\\Quillon\\Farrow\\12.00\\Wharfside",
    "Software\\Quillon\\Farrow\\11.00\\Wharfside", "Software\\Quillon\\Farrow\\10.00\\Wharfside",
    "Software\\Quillon\\Farrow\\9.00\\Wharfside",  "Software\\Quillon\\Farrow\\8.00\\Wharfside",
    "Software\\Quillon\\Farrow\\7.11\\Wharfside",  "Software\\Quillon\\Farrow\\7.10\\Wharfside",
    "Software\\Quillon\\Farrow\\7.00\\Wharfside",
};

constexpr const char* kHomeFolderKeys[] = {
    "Software\\Quillon\\Farrow\\13.00\\Wharfside",
    "Software\\Quillon\\Farrow\\12.00\\Wharfside",
    "Software\\Quillon\\Farrow\\11.00\\Wharfside",
    "Software\\Quillon\\Farrow\\10.00\\Wharfside",
    "Software\\Quillon\\Farrow\\9.00\\Wharfside",
    "Software\\Quillon\\Farrow\\8.00\\Wharfside",
    "Software\\Quillon\\Farrow\\7.11\\Wharfside",
    "Software\\Quillon\\Farrow\\7.10\\Wharfside",
    // Kept: two names run together, so that neither of the two keys is searched.
    "Software\\Quillon\\Farrow\\7.00\\WharfsideSoftware\\Quillon\\Farrow\\13.00\\Security",
    "Software\\Quillon\\Farrow\\12.00\\Security",
    "Software\\Quillon\\Farrow\\11.00\\Security",
    "Software\\Quillon\\Farrow\\10.00\\Security",
    "Software\\Quillon\\Farrow\\9.00\\Security",
    "Software\\Quillon\\Farrow\\13.00\\Quillon Commons",
    "Software\\Quillon\\Farrow\\12.00\\Quillon Commons",
    "Software\\Quillon\\Farrow\\11.00\\Quillon Commons",
    "Software\\Quillon\\Farrow\\10.00\\Quillon Commons",
    "Software\\Quillon\\Farrow\\9.00\\Quillon Commons",
    "Software\\Quillon\\Farrow\\8.00\\Quillon Commons",
    "Software\\Quillon\\Farrow\\7.11\\Quillon Commons",
    "Software\\Quillon\\Farrow\\7.10\\Quillon Commons",
    "Software\\Quillon\\Farrow\\7.00\\Quillon Commons",
};

// Returns the first value of that name that is not empty; for each key the user's comes first.
std::optional<std::string> FirstValue(const MacroContext& context,
                                      std::span<const char* const> keys, const char* name) {
    for (const char* key : keys) {
        for (const Hive hive : kHives) {
            const RegistryText value = context.system.ReadRegistry(hive, key, name);
            if (value.text && !value.text->empty()) return value.text;
        }
    }
    return std::nullopt;
}

std::string ExpandNested(const MacroContext& context, std::string text) {
    ExpandMacros({context.system, true}, text);
    return text;
}

}  // namespace

std::optional<std::string> DeploymentPath(const MacroContext& context) {
    for (const Hive hive : kHives) {
        const RegistryText value = context.system.ReadRegistry(hive, kDeploymentKey, "");
        if (!value.keyOpened) continue;
        const std::string path = value.text.value_or("");
        // What has no short form keeps its long one.
        return path.empty() ? path : context.system.ShortPath(path).value_or(path);
    }
    return std::nullopt;
}

std::optional<std::string> ProductUserFolder(const MacroContext& context) {
    return RemoveTrailingBackslash(FirstValue(context, kUserFolderKeys, "UserDir").value_or(""));
}

std::optional<std::string> ProductHomeFolder(const MacroContext& context) {
    const std::optional<std::string> folder = FirstValue(context, kHomeFolderKeys, "HomeDir64");
    return folder ? std::optional(RemoveTrailingBackslash(*folder)) : std::nullopt;
}

std::optional<std::string> ProductOrApplicationFolder(const MacroContext& context) {
    // A home folder that holds this very macro would otherwise ask for itself for ever.
    if (context.nested) return std::nullopt;
    const std::string home = ExpandNested(context, "$FATHOMEDIR$");
    return home == "$FATHOMEDIR$" ? ExpandNested(context, "$APPDIR$") : home;
}

}  // namespace depot
