#include "directory/user_name_form.h"

#include <algorithm>
#include <optional>

#include "directory/comparable_dn.h"
#include "directory/dn_escapes.h"

namespace depot {
namespace {

// What a server has that keeps the accounts of a Windows domain.
constexpr char kKeepsDomainAccounts[] = "1.2.840.113556.1.4.800";

constexpr char kAccount[] = "mary.walker@";
constexpr char kEntry[] = "cn=Mary Walker,";

// Longer ones would not help anybody who reads them.
constexpr std::size_t kLongestExample = 200;

// Returns "corp.example" for "DC=corp,DC=example"; nothing for an entry that is no domain.
std::optional<std::string> DomainOf(const std::string& context) {
    constexpr std::string_view kComponent = "dc=";
    const std::string comparable = ComparableDN(context);
    std::string domain;
    for (std::string_view rest = comparable; !rest.empty(); rest = ParentDN(rest)) {
        if (!rest.starts_with(kComponent)) return std::nullopt;
        const std::string_view above = ParentDN(rest);
        // Without the comma in front of what is above.
        const std::size_t length = above.empty() ? rest.size() : rest.size() - above.size() - 1;
        const std::string name =
            UnescapedName(rest.substr(kComponent.size(), length - kComponent.size()));
        domain += domain.empty() ? name : "." + name;
    }
    return domain.empty() ? std::nullopt : std::optional(domain);
}

bool CanBeShown(const std::string& example) {
    return example.size() <= kLongestExample &&
           std::none_of(example.begin(), example.end(),
                        [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

}  // namespace

std::string UserNameExample(const std::vector<std::string>& capabilities,
                            const std::vector<std::string>& contexts) {
    if (contexts.empty() || contexts.front().empty()) return {};
    const bool keepsAccounts = std::find(capabilities.begin(), capabilities.end(),
                                         kKeepsDomainAccounts) != capabilities.end();
    const std::optional<std::string> domain =
        keepsAccounts ? DomainOf(contexts.front()) : std::nullopt;
    const std::string example = domain ? kAccount + *domain : kEntry + contexts.front();
    return CanBeShown(example) ? example : std::string();
}

}  // namespace depot
