#include "CommandLine.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <variant>

#include "CliMessages.hpp"
#include "CommandTable.hpp"
#include "nearestOption.hpp"

namespace tqarchive {

namespace {

using namespace std::string_literals;

// What a bare --password leaves as its value: no command line can hold a NUL character,
// so this tells "ask on the terminal" apart from any password typed, the empty one included.
const std::string kPromptMarker("\0prompt", 7);

// The options a command does not take are not defined for it: the parser leaves them over
// as extras, and refuseOption says why.
void configure(CLI::App& app) {
    app.set_help_flag();
    app.allow_extras();
}

// One visitor made of the handlers, for std::visit.
template <class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};
// clang 14 deduces an aggregate's template arguments only with a guide.
template <class... Handlers>
Overloaded(Handlers...) -> Overloaded<Handlers...>;

// Defines the option in the app, filling the field its row names.
void addOption(CLI::App& app, OptionId id, CommandLine& result, std::string& levelText) {
    const Option& option = CommandTable::option(id);
    std::visit(
        Overloaded{
            [&](bool CommandLine::*flag) {
                app.add_flag(option.names, result.*flag)->disable_flag_override();
            },
            [&](std::optional<std::string> CommandLine::*value) {
                CLI::Option* added = app.add_option(option.names, result.*value);
                if (option.valueOptional) {
                    added->expected(0, 1)->default_str(kPromptMarker);
                }
            },
            [&](std::vector<std::string> CommandLine::*values) {
                app.add_option(option.names, result.*values)->allow_extra_args(false);
            },
            [&](int CommandLine::*) {
                // The digit is checked once the line is read (checkCombinations). The last
                // of -0 ... -9 and --level given wins, so each sets it when parsed.
                if (option.digitShorthands) {
                    for (char digit = '0'; digit <= '9'; ++digit) {
                        app.add_flag_callback(
                               std::string("-") + digit,
                               [&levelText, digit] { levelText = std::string(1, digit); })
                            ->trigger_on_parse()
                            ->disable_flag_override();
                    }
                }
                app.add_option(option.names, levelText)->trigger_on_parse();
            },
            [&](std::optional<unsigned> CommandLine::*count) {
                app.add_option_function<std::string>(
                       option.names,
                       [&result, &option, count](const std::string& text) {
                           unsigned value = 0;
                           const char* end = text.data() + text.size();
                           const auto [stop, error] = std::from_chars(text.data(), end, value);
                           if (error != std::errc() || stop != end) {
                               raiseUsageError("invalidNumber",
                                               {CommandTable::spellings(option).back(), text});
                           }
                           result.*count = value;
                       })
                    ->trigger_on_parse();
            },
        },
        option.target);
}

// The option part of an argument as typed: "--name" of "--name=value", "-x" of "-xvalue".
std::string optionName(const std::string& argument) {
    if (argument.starts_with("--")) {
        return argument.substr(0, argument.find('='));
    }
    return argument.substr(0, 2);
}

bool spells(OptionId id, const std::string& name) {
    const auto spellings = CommandTable::spellings(CommandTable::option(id));
    return std::find(spellings.begin(), spellings.end(), name) != spellings.end();
}

// command is null before the command.
[[noreturn]] void refuseOption(const std::string& argument, const Command* command) {
    const std::string name = optionName(argument);
    if (command != nullptr) {
        if (command->action == Action::Extract && spells(OptionId::Root, name)) {
            raiseUsageError("extractUsesD", {command->name});
        }
        for (const Command& other : CommandTable::commands()) {
            for (const OptionUse& use : other.options) {
                if (spells(use.id, name)) {
                    raiseUsageError("optionNotAllowed", {name, command->name});
                }
            }
        }
    }
    if (const auto near = nearestOption(name, command)) {
        raiseUsageError("unknownOptionNear", {name, *near});
    }
    raiseUsageError("unknownOption", {name});
}

// Parses the arguments (in order) into the app and refuses what is left over; returns the
// arguments left over that are not options (the command and its arguments, for the
// program's own part of the line).
std::vector<std::string> parseInto(CLI::App& app, const std::vector<std::string>& arguments,
                                   const Command* command) {
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    try {
        app.parse(reversed);
    } catch (const CLI::ArgumentMismatch& error) {
        const std::string what = error.what();
        if (what.ends_with("disallowed flag override")) {
            const std::string name = what.substr(0, what.find(' '));
            raiseUsageError("unexpectedValue", {(name.size() == 1 ? "-" : "--") + name});
        }
        raiseUsageError("missingValue", {what.substr(0, what.find(':'))});
    }
    std::vector<std::string> rest;
    bool optionsEnded = false;
    for (const std::string& argument : app.remaining()) {
        if (rest.empty() && !optionsEnded && argument == "--") {
            optionsEnded = true;
        } else if (rest.empty() && !optionsEnded && argument.size() > 1 && argument[0] == '-') {
            refuseOption(argument, command);
        } else {
            rest.push_back(argument);
        }
    }
    return rest;
}

void checkCombinations(const CommandLine& line, const std::string& levelText) {
    if ((line.password || line.promptForPassword) && line.passwordFile) {
        raiseUsageError("conflictingOptions", {"--password"s, "--password-file"s});
    }
    if (line.encryption && !line.password && !line.promptForPassword && !line.passwordFile) {
        raiseUsageError("encryptionWithoutPassword");
    }
    if (line.toStdout && line.outputFolder) {
        raiseUsageError("conflictingOptions", {"-c"s, "-d"s});
    }
    if (!levelText.empty() && (levelText.size() != 1 || levelText[0] < '0' || levelText[0] > '9')) {
        raiseUsageError("invalidLevel", {levelText});
    }
}

void checkOperands(const CommandLine& line) {
    const Command& command = *line.command;
    const std::vector<std::string>& required = command.operands.required;
    const std::size_t count = line.operands.size();
    if (command.action == Action::Compress && count == 0 && line.outputFolder) {
        // "gzip -d FILE.gz", as GNU gzip decompresses: here -d took FILE.gz as its folder.
        raiseUsageError("gzipDecompress", {*line.outputFolder});
    }
    if (count < required.size()) {
        raiseUsageError("missingOperand", {required[count], command.name});
    }
    if (command.operands.more.empty() && count > required.size()) {
        raiseUsageError("extraOperand", {line.operands[required.size()], command.name});
    }
}

}  // namespace

CommandLine CommandLine::parse(const std::vector<std::string>& arguments) {
    CommandLine result;
    std::string levelText;

    // The common options before the command, and the hidden ones that make the documents.
    CLI::App program("", "tqarchive");
    configure(program);
    program.prefix_command();
    for (OptionId id : CommandTable::common()) {
        addOption(program, id, result, levelText);
    }
    program.add_flag("--generate-man", result.generateMan);
    program.add_option("--generate-completion", result.generateCompletion);
    const std::vector<std::string> rest = parseInto(program, arguments, nullptr);
    if (rest.empty()) {
        if (result.help || result.version || result.generateMan || result.generateCompletion) {
            return result;
        }
        raiseUsageError("missingCommand");
    }

    const Command* command = CommandTable::find(rest.front());
    if (command == nullptr) {
        raiseUsageError("unknownCommand", {rest.front()});
    }
    result.command = command;
    CLI::App app("", "tqarchive " + command->name);
    configure(app);
    for (OptionId id : CommandTable::common()) {
        addOption(app, id, result, levelText);
    }
    for (const OptionUse& use : command->options) {
        addOption(app, use.id, result, levelText);
    }
    app.add_option("operands", result.operands);
    parseInto(app, std::vector<std::string>(rest.begin() + 1, rest.end()), command);

    if (result.help || result.version) {
        return result;
    }
    if (result.password == kPromptMarker) {
        result.password.reset();
        result.promptForPassword = true;
    }
    checkCombinations(result, levelText);
    if (!levelText.empty()) {
        result.level = levelText[0] - '0';
    }
    checkOperands(result);
    return result;
}

}  // namespace tqarchive
