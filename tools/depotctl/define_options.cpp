#include "depotctl/define_options.h"

#include <CLI/CLI.hpp>

#include "depotctl/definition_store.h"

namespace depot::ctl {
namespace {

struct Choice {
    const char* word;
    std::uint32_t number;
};

// Options of a location that are texts or numbers as they stand.
struct PlainOption {
    const char *flag, *value, *help;
    bool isNumber;
};

constexpr PlainOption kLocationOptions[] = {
    {"--path", "Path", "The folder, or the base in the directory", false},
    {"--host", "Host", "The directory's server; makes the location a directory", false},
    {"--port", "Port", "The server's port", true},
    {"--username", "Username", "Who logs on", false},
    {"--protocol-version", "Version", "2 or 3", true},
    {"--connect-timeout", "ConnectTimeout", "In seconds", true},
    {"--file-attribute", "FileAttributeName", "What names a file's entry", false},
    {"--file-class", "FileObjectClass", "The class of a file's entry", false},
    {"--folder-attribute", "FolderAttributeName", "What names a folder's entry", false},
    {"--folder-class", "FolderObjectClass", "The class of a folder's entry", false},
    {"--contents-attribute", "FileContentsAttributeName", "What holds a file's bytes", false},
};

void AddPlain(CLI::App& command, std::vector<RawValue>& values, const PlainOption& option) {
    const std::string name = option.value;
    if (option.isNumber) {
        command.add_option_function<std::uint32_t>(
            option.flag,
            [&values, name](const std::uint32_t& number) {
                values.push_back(NumberValue(name, number));
            },
            option.help);
        return;
    }
    command.add_option_function<std::string>(
        option.flag,
        [&values, name](const std::string& text) { values.push_back(StoredText(name, text)); },
        option.help);
}

void AddChoice(CLI::App& command, std::vector<RawValue>& values, const char* flag,
               const std::string& name, const std::vector<Choice>& choices) {
    std::vector<std::string> words;
    std::string help;
    for (const Choice& choice : choices) {
        words.emplace_back(choice.word);
        help += (help.empty() ? "" : ", ") + words.back();
    }
    command
        .add_option_function<std::string>(
            flag,
            [&values, name, choices](const std::string& word) {
                for (const Choice& choice : choices) {
                    if (word == choice.word) values.push_back(NumberValue(name, choice.number));
                }
            },
            help)
        ->check([words, help](const std::string& word) {
            const bool known = std::find(words.begin(), words.end(), word) != words.end();
            return known ? std::string() : "\"" + word + "\" is none of: " + help;
        });
}

void AddSwitch(CLI::App& command, std::vector<RawValue>& values, const std::string& flag,
               const std::string& name, const std::string& help) {
    const auto write = [&values, name](std::int64_t count) {
        values.push_back(NumberValue(name, count > 0 ? 1 : 0));
    };
    command.add_flag_function("--" + flag + ",!--no-" + flag, write, help);
}

// "deu=Arbeit" is a German name, "Work" an English one.
RawValue DisplayName(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == 3) return StoredText("DisplayName." + text.substr(0, 3), text.substr(4));
    return StoredText("DisplayName.eng", text);
}

}  // namespace

void AddPlaceOptions(CLI::App& command, DefineOptions& options) {
    command.add_option("key", options.key, "The depot's key")->required();
    command.add_flag("--machine", options.forMachine, "For all users of the machine");
    command.add_flag("--dry-run", options.dryRun, "Print a .reg file and change nothing");
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
    AddPlain(command, options.ofDepot, {"--order", "OrderIndex", "Its place in the list", true});
    AddPlain(command, options.ofDepot,
             {"--contains", "Contains", "The kinds of files in it, a bit each", true});
    AddPlain(command, options.ofDepot, {"--icon", "Icon", "Its icon's location", false});
    AddSwitch(command, options.ofDepot, "default", "DefaultDepot", "Whether it is the default");
    command.add_option("--location", options.location, "The location that the others are about")
        ->check(CLI::Range(1, 999));
    for (const PlainOption& option : kLocationOptions) {
        AddPlain(command, options.ofLocation, option);
    }
    AddChoice(command, options.ofLocation, "--type", "Type", {{"folder", 0}, {"directory", 1}});
    AddChoice(command, options.ofLocation, "--authentication", "Authentication",
              {{"anonymous", 0}, {"simple", 1}, {"windows", 2}});
    AddChoice(command, options.ofLocation, "--security", "Security",
              {{"none", 0}, {"starttls", 1}, {"ldaps", 2}});
    AddSwitch(command, options.ofLocation, "detect-conflicts", "DetectConflicts",
              "Whether to keep what someone else stored meanwhile");
    command.add_flag("--ask-password", options.askPassword,
                     "Ask for a password to be stored; from redirected input its first line");
}

void AddRemovalOptions(CLI::App& command, DefineOptions& options) {
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
