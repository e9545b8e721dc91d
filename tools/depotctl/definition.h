// A depot's definition as it stands in the registry, and what is found out about it. Texts are in
// UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/depot_values.h"
#include "platform/secret_text.h"

namespace depot::ctl {

// The registry's own numbers for the types of its values.
enum RegistryType : std::uint32_t {
    kRegistryText = 1,
    kRegistryExpandableText = 2,
    kRegistryBinary = 3,
    kRegistryNumber = 4,
    kRegistryTexts = 7,
    kRegistryLongNumber = 11,
};

// One value under a depot's key.
struct RawValue {
    std::string name;
    std::uint32_t type = kRegistryText;
    SecretText text;           // of a text, without its terminator; it may be a password
    std::uint32_t number = 0;  // of anything else, its first four bytes
    std::size_t bytes = 0;     // in the code page, a text's terminator included
    bool fitsCodePage = true;  // whether the component reads the text, here
    bool fitsSystem = true;    // and in programs that work in the system's code page

    bool IsText() const { return type == kRegistryText || type == kRegistryExpandableText; }
};

// Makes a value as it comes out of the registry.
RawValue TextValue(std::string name, SecretText text);
RawValue NumberValue(std::string name, std::uint32_t number);

// The longest text that the component reads, its terminator included.
inline constexpr std::size_t kLongestTextBytes = 261;

// A subkey of the depots' key.
struct RawDefinition {
    std::string key;
    std::vector<RawValue> values;
    bool hasSubkeys = false;

    // The value of that name, in any letter case; null when there is none.
    const RawValue* Find(std::string_view name) const;

    // What the component reads of a value: nothing where it takes the default.
    std::optional<std::string> Text(std::string_view name) const;
    std::optional<std::uint32_t> Number(std::string_view name) const;

    // How many locations the component reads, and what it reads of one.
    int Locations() const;
    LocationSettings Location(int number) const;
};

// What is to become of a definition: values to be written and names of values to be removed.
struct DefinitionChange {
    std::vector<RawValue> written;
    std::vector<std::string> removed;

    // Whether a value of that name, in any letter case, is written.
    bool Writes(std::string_view name) const;
};

// Returns "Path3" for "Path" and 3.
std::string Numbered(std::string_view name, int location);

enum class State { kGood, kNote, kProblem, kUnreachable };

// One thing that was found out.
struct Finding {
    State state = State::kGood;
    std::string subject;  // the value or the step that it is about
    std::string text;     // what is so
    std::string advice;   // what to do; empty when there is nothing to be done

    friend bool operator==(const Finding&, const Finding&) = default;
};
using Findings = std::vector<Finding>;

inline Finding Good(std::string subject, std::string text) {
    return {State::kGood, std::move(subject), std::move(text), {}};
}

inline Finding Wrong(std::string subject, std::string text, std::string advice) {
    return {State::kProblem, std::move(subject), std::move(text), std::move(advice)};
}

inline Finding Remark(std::string subject, std::string text, std::string advice = {}) {
    return {State::kNote, std::move(subject), std::move(text), std::move(advice)};
}

inline void Append(Findings& findings, const Findings& more) {
    findings.insert(findings.end(), more.begin(), more.end());
}

// Letters of ASCII only: the names that are compared have no others.
bool SameName(std::string_view left, std::string_view right);

}  // namespace depot::ctl
