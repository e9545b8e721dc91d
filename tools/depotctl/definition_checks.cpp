#include "depotctl/definition_checks.h"

#include <algorithm>
#include <iterator>

#include "config/languages.h"
#include "depotctl/ascii.h"
#include "depotctl/known_values.h"
#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

constexpr std::size_t kLongestText = kLongestTextBytes - 1;

std::string TypeName(std::uint32_t type) {
    switch (type) {
        case kRegistryText:
        case kRegistryExpandableText:
            return "a text";
        case kRegistryBinary:
            return "binary (REG_BINARY)";
        case kRegistryNumber:
            return "a number (REG_DWORD)";
        case kRegistryTexts:
            return "a list of texts (REG_MULTI_SZ)";
        case kRegistryLongNumber:
            return "a long number (REG_QWORD)";
        default:
            return "of registry type " + std::to_string(type);
    }
}

bool IsLanguage(const std::string& code) {
    return code.size() == 3 && std::all_of(code.begin(), code.end(), IsLetter);
}

// Collects the findings of one definition.
class Checker {
public:
    explicit Checker(const RawDefinition& definition)
        : definition_(definition), locations_(definition.Locations()) {}

    Findings Run() {
        findings_ = CheckKey(definition_.key);
        for (const RawValue& value : definition_.values) CheckValue(value);
        CheckExistence();
        CheckNames();
        for (int location = 1; location <= locations_; ++location) {
            Append(findings_, CheckLocation(definition_, location));
        }
        if (definition_.hasSubkeys) {
            Add(Wrong("Key", "keys below this one are never read",
                      "move depots that stand there right below Depots"));
        }
        return std::move(findings_);
    }

private:
    void Add(Finding finding) { findings_.push_back(std::move(finding)); }

    void CheckValue(const RawValue& value) {
        if (DisplayLanguage(value.name)) return CheckText(value, "this name is not shown");
        const auto name = ParseValueName(value.name);
        if (!name) return CheckUnknown(value);
        if (name->location > locations_ && !SameName(name->known->name, "Path")) {
            return CheckHomeless(value, name->location);
        }
        if (name->known->IsNumber()) return CheckNumber(value, *name->known);
        CheckText(value, UnreadText(*name->known));
        if (name->location > locations_) CheckUnreadPath(value);
    }

    void CheckUnknown(const RawValue& value) {
        if (value.name.empty()) {
            if (value.text.empty()) return;
            return Add(Wrong("(Default)", "the key's default value is never read", "remove it"));
        }
        const std::string nearest = NearestValueName(value.name);
        Add(Wrong(value.name, "there is no value of this name; it is ignored",
                  nearest.empty() ? "remove it" : "write " + nearest + " if that is meant"));
    }

    // A value of a location that is not read.
    void CheckHomeless(const RawValue& value, int location) {
        Add(Wrong(value.name,
                  "it is never read, because location " + std::to_string(location) + " is not",
                  "write " + Numbered("Path", location) + ", or remove it"));
    }

    void CheckUnreadPath(const RawValue& value) {
        if (value.bytes > kLongestTextBytes) return;
        Add(Wrong(value.name, "it is never read: locations are numbered from 1 without a gap",
                  "number it " + Numbered("Path", locations_ + 1) + ", and its other values too"));
    }

    void CheckNumber(const RawValue& value, const DepotValue& known) {
        const auto number = definition_.Number(value.name);
        if (!number) {
            const std::string what = value.type == kRegistryNumber
                                         ? "a number of " + Counted(value.bytes, "byte")
                                         : TypeName(value.type);
            return Add(Wrong(value.name, "it is " + what + " and " + UnreadableText(known),
                             "write it as a REG_DWORD"));
        }
        const ValueForm& form = known.form;
        if (*number < form.lowest || *number > form.highest) {
            Add(Wrong(value.name, std::to_string(*number) + " is out of range: " + form.outside,
                      "write a number from " + std::to_string(form.lowest) + " to " +
                          std::to_string(form.highest)));
        }
        if (SameName(known.name, "OrderIndex") && *number == 0xFFFFFFFF) {
            Add(Remark(value.name, "this number stands for no place in the list"));
        }
    }

    void CheckText(const RawValue& value, const std::string& absent) {
        if (value.bytes > kLongestTextBytes) {
            return Add(Wrong(value.name,
                             "it is longer than " + std::to_string(kLongestText) +
                                 " characters and ignored: " + absent,
                             "write a shorter text"));
        }
        if (!value.IsText()) {
            return Add(Wrong(value.name, "it is " + TypeName(value.type) + ", which is no text",
                             "write it as a REG_SZ"));
        }
        if (value.text.Plain().find('\0') != std::string::npos) {
            Add(Wrong(value.name, "what follows its first NUL is never read", "write it anew"));
        }
        if (!value.fitsCodePage) {
            Add(Wrong(value.name, "it has characters that the system's code page does not have",
                      "use others"));
        } else if (!value.fitsSystem) {
            Add(Remark(value.name,
                       "it has characters that the system's code page does not have: programs that "
                       "do not work in UTF-8 read no such value"));
        }
        const std::string& text = value.text;
        const bool control = std::any_of(text.begin(), text.end(), [](char c) {
            return c != '\0' && static_cast<unsigned char>(c) < ' ';
        });
        if (control)
            Add(Wrong(value.name, "it has a line end or another control character", "remove it"));
    }

    void CheckExistence() {
        if (locations_ > 0) return;
        const RawValue* const first = definition_.Find("Path1");
        const std::string why = definition_.values.empty() ? "the key is empty"
                                : first != nullptr         ? "Path1 cannot be read"
                                                           : "it has no Path1";
        Add(Wrong("Path1", "this is no depot: " + why, "write the first location's path as Path1"));
    }

    void CheckNames() {
        bool anyone = false, present = false;
        for (const RawValue& value : definition_.values) {
            const auto language = DisplayLanguage(value.name);
            if (!language || !definition_.Text(value.name)) continue;
            present = true;
            anyone = anyone || IsFallback(*language);
            CheckDisplayName(value, *language);
        }
        if (locations_ == 0 || anyone) return;
        Add(Remark("DisplayName",
                   std::string(present ? "users of other languages" : "users") + " see the key",
                   "write DisplayName.eng"));
    }

    static bool IsFallback(const std::string& language) {
        return std::any_of(std::begin(kLanguages), std::end(kLanguages), [&](const Language& one) {
            return one.servesOthers && SameName(one.code, language);
        });
    }

    void CheckDisplayName(const RawValue& value, const std::string& language) {
        if (!IsLanguage(language)) {
            Add(Wrong(value.name, "\"" + language + "\" is no language",
                      "use three letters, such as DisplayName.eng"));
        }
        if (value.text.empty()) {
            Add(Wrong(value.name, "the name is empty, and users see it", "write a name"));
        }
        if (FindAnyAscii(value.text.Plain(), "<>\\") != std::string::npos) {
            Add(Wrong(value.name, "<, > and \\ in a name break paths that are given by it",
                      "leave them out"));
        }
    }

    const RawDefinition& definition_;
    const int locations_;
    Findings findings_;
};

}  // namespace

Findings CheckDefinition(const RawDefinition& definition) {
    return Checker(definition).Run();
}

Findings CheckKey(const std::string& key) {
    Findings findings;
    const auto add = [&](const char* text, const char* advice) {
        findings.push_back(Wrong("Key", text, advice));
    };
    if (key.empty()) add("a key needs a name", "name it");
    if (Utf16Length(key) > 255) add("a key has at most 255 characters", "choose a shorter one");
    if (FindAscii(key, '\\') != std::string::npos) {
        add("a backslash would make a key below a key", "choose another one");
    }
    if (FindAnyAscii(key, "<>") != std::string::npos) {
        add("paths of a depot cannot be told apart with < or > in its key", "choose another one");
    }
    const auto isBlank = [](char c) { return c >= 0 && c <= ' '; };
    if (!key.empty() && (isBlank(key.front()) || isBlank(key.back()))) {
        add("it begins or ends with a blank, which nobody sees", "choose another one");
    }
    return findings;
}

bool HasProblems(const Findings& findings) {
    return std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.state == State::kProblem || finding.state == State::kUnreachable;
    });
}

}  // namespace depot::ctl
