#include "depotctl/define_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <span>

#include "depotctl/definition_store.h"
#include "depotctl/encoding.h"

namespace depot::ctl {
namespace {

// What the options of one value write into.
struct OptionTarget {
    CLI::App& command;
    std::vector<RawValue>& values;
};

// A text or a number, of which `make` makes the value.
template <class Given, class Taken>
void AddGiven(const OptionTarget& target, const DepotValue& value,
              RawValue (*make)(std::string name, Taken given)) {
    target.command.add_option_function<Given>(
        value.option,
        [&values = target.values, name = value.name, make](const Given& given) {
            values.push_back(make(name, given));
        },
        value.meaning);
}

// A number that is given by one of its words.
void AddChoice(const OptionTarget& target, const DepotValue& value) {
    const std::span<const ValueWord> words = value.form.words;
    std::string list;
    for (const ValueWord& one : words) list += (list.empty() ? "" : ", ") + std::string(one.word);
    const auto numberOf = [words](const std::string& word) {
        return std::find_if(words.begin(), words.end(),
                            [&](const ValueWord& one) { return word == one.word; }) -
               words.begin();
    };
    target.command
        .add_option_function<std::string>(
            value.option,
            [&values = target.values, name = value.name, numberOf](const std::string& word) {
                values.push_back(NumberValue(name, static_cast<std::uint32_t>(numberOf(word))));
            },
            value.meaning + (": " + list))
        ->check([numberOf, list, count = std::ssize(words)](const std::string& word) {
            return numberOf(word) < count ? "" : "\"" + word + "\" is none of: " + list;
        });
}

// What the numbers of a switch with more than two mean, as in "--option=2".
std::string NumberedWords(const DepotValue& value) {
    std::string text;
    for (std::size_t number = 0; number < value.form.words.size(); ++number) {
        text += (text.empty() ? ": " : ", ") + std::to_string(number) + " " +
                value.form.words[number].meaning;
    }
    return text;
}

void AddSwitch(const OptionTarget& target, const DepotValue& value) {
    const std::string option = value.option;
    target.command.add_flag_function(
        option + ",!--no-" + option.substr(2),
        [&values = target.values, &value, option](std::int64_t count) {
            const auto number = static_cast<std::uint32_t>(std::max<std::int64_t>(count, 0));
            if (number > value.form.highest) throw CLI::ValidationError(option, "is out of range");
            values.push_back(NumberValue(value.name, number));
        },
        value.meaning + NumberedWords(value));
}

void AddValue(const OptionTarget& target, const DepotValue& value) {
    if (!value.IsNumber()) return AddGiven<std::string>(target, value, StoredText);
    if (value.IsSwitch()) return AddSwitch(target, value);
    if (!value.form.words.empty()) return AddChoice(target, value);
    AddGiven<std::uint32_t>(target, value, NumberValue);
}

// "deu=Arbeit" is a German name, "Work" an English one.
RawValue DisplayName(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == 3) return StoredText("DisplayName." + text.substr(0, 3), text.substr(4));
    return StoredText("DisplayName.eng", text);
}

}  // namespace

void AddPlaceOptions(CLI::App& command, DefineOptions& options) {
    command.add_option("key", options.key, "The depot's key")->required()->transform(KeyArgument);
    command.add_flag("--machine", options.forMachine, "For all users of the machine");
    command.add_flag("--dry-run", options.dryRun, "Print a .reg file and change nothing");
    command.add_flag("-v,--verbose", options.verbose, "Show each value that is changed");
}

void AddValueOptions(CLI::App& command, DefineOptions& options) {
    command
        .add_option_function<std::vector<std::string>>(
            "--name",
            [&options](const std::vector<std::string>& names) {
                for (const std::string& name : names) options.ofDepot.push_back(DisplayName(name));
            },
            "The name that users see: TEXT, or LANGUAGE=TEXT such as deu=Arbeit; repeatable")
        ->allow_extra_args(false);
    command.add_option("--location", options.location, "The location that the others are about")
        ->check(CLI::Range(1, 999));
    for (const DepotValue& value : kDepotValues) {
        if (value.option == nullptr) continue;
        AddValue({command, value.IsNumbered() ? options.ofLocation : options.ofDepot}, value);
    }
    command.add_flag("--ask-password", options.askPassword,
                     "Ask for a password to be stored; from redirected input its first line");
    command.add_flag("--store-password", options.storePassword,
                     "The same, stored in your credential store and not in the definition");
}

void AddRemovalOptions(CLI::App& command, DefineOptions& options) {
    command.add_flag("--forget-password", options.forgetPassword,
                     "Remove the location's password from your credential store");
    command
        .add_option("--unset", options.unset,
                    "Remove a value, by its name in the registry; repeatable")
        ->allow_extra_args(false);
    command
        .add_option("--remove-location", options.removedLocation,
                    "Remove a location; those behind it are numbered anew")
        ->check(CLI::Range(1, 999));
}

}  // namespace depot::ctl
