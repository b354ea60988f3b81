#include "CommandLine.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>

#include "CliMessages.hpp"
#include "CommandDocs.hpp"
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

void addFlag(CLI::App& app, const OptionDoc& option, bool& target) {
    app.add_flag(option.names, target)->disable_flag_override();
}

void addOption(CLI::App& app, OptionId id, CommandLine& result, std::string& levelText) {
    const OptionDoc& option = CommandDocs::option(id);
    switch (id) {
        case OptionId::Root:
            app.add_option(option.names, result.rootFolder);
            break;
        case OptionId::Output:
            app.add_option(option.names, result.outputFolder);
            break;
        case OptionId::Password:
            app.add_option(option.names, result.password)
                ->expected(0, 1)
                ->default_str(kPromptMarker);
            break;
        case OptionId::PasswordFile:
            app.add_option(option.names, result.passwordFile);
            break;
        case OptionId::Encryption:
            app.add_option(option.names, result.encryption);
            break;
        case OptionId::Exclude:
            app.add_option(option.names, result.excludes)->allow_extra_args(false);
            break;
        case OptionId::Level:
            // The last of -0 ... -9 and --level given wins, so each sets it when parsed.
            for (char digit = '0'; digit <= '9'; ++digit) {
                app.add_flag_callback(std::string("-") + digit,
                                      [&levelText, digit] { levelText = std::string(1, digit); })
                    ->trigger_on_parse()
                    ->disable_flag_override();
            }
            app.add_option(option.names, levelText)->trigger_on_parse();
            break;
        case OptionId::Format:
            app.add_option(option.names, result.format);
            break;
        case OptionId::Stdout:
            addFlag(app, option, result.toStdout);
            break;
        case OptionId::KeepExisting:
            addFlag(app, option, result.keepExisting);
            break;
        case OptionId::PreservePermissions:
            addFlag(app, option, result.preservePermissions);
            break;
        case OptionId::UnsafePaths:
            addFlag(app, option, result.unsafePaths);
            break;
        case OptionId::Json:
            addFlag(app, option, result.json);
            break;
        case OptionId::Log:
            app.add_option(option.names, result.logFile);
            break;
        case OptionId::Quiet:
            addFlag(app, option, result.quiet);
            break;
        case OptionId::Verbose:
            addFlag(app, option, result.verbose);
            break;
        case OptionId::Help:
            addFlag(app, option, result.help);
            break;
        case OptionId::Version:
            addFlag(app, option, result.version);
            break;
    }
}

// The option part of an argument as typed: "--name" of "--name=value", "-x" of "-xvalue".
std::string optionName(const std::string& argument) {
    if (argument.starts_with("--")) {
        return argument.substr(0, argument.find('='));
    }
    return argument.substr(0, 2);
}

[[noreturn]] void refuseOption(const std::string& argument, const std::string& command) {
    const std::string name = optionName(argument);
    if (name == "-C" && (command == "unzip" || command == "untar")) {
        raiseUsageError("extractUsesD", {command});
    }
    for (const CommandDoc& other : CommandDocs::commands()) {
        for (const OptionUse& use : other.options) {
            const auto names = CommandDocs::spellings(CommandDocs::option(use.id));
            if (!command.empty() && std::find(names.begin(), names.end(), name) != names.end()) {
                raiseUsageError("optionNotAllowed", {name, command});
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
                                   const std::string& command) {
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
    const std::string& command = line.command;
    const std::size_t count = line.operands.size();
    const bool gzipFamily = command == "gzip" || command == "gunzip";
    if (command == "gzip" && count == 0 && line.outputFolder) {
        // "gzip -d FILE.gz", as GNU gzip decompresses: here -d took FILE.gz as its folder.
        raiseUsageError("gzipDecompress", {*line.outputFolder});
    }
    if (count == 0) {
        raiseUsageError("missingOperand", {gzipFamily ? "INPUT"s : "ARCHIVE"s, command});
    }
    if ((command == "zip" || command == "tar") && count < 2) {
        raiseUsageError("missingOperand", {"INPUT"s, command});
    }
    if ((command == "list" || command == "test") && count > 1) {
        raiseUsageError("extraOperand", {line.operands[1], command});
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
    for (OptionId id : CommandDocs::common()) {
        addOption(program, id, result, levelText);
    }
    program.add_flag("--generate-man", result.generateMan);
    program.add_option("--generate-completion", result.generateCompletion);
    const std::vector<std::string> rest = parseInto(program, arguments, "");
    if (rest.empty()) {
        if (result.help || result.version || result.generateMan || result.generateCompletion) {
            return result;
        }
        raiseUsageError("missingCommand");
    }

    const CommandDoc* command = CommandDocs::find(rest.front());
    if (command == nullptr) {
        raiseUsageError("unknownCommand", {rest.front()});
    }
    result.command = command->name;
    CLI::App app("", "tqarchive " + command->name);
    configure(app);
    for (OptionId id : CommandDocs::common()) {
        addOption(app, id, result, levelText);
    }
    for (const OptionUse& use : command->options) {
        addOption(app, use.id, result, levelText);
    }
    app.add_option("operands", result.operands);
    parseInto(app, std::vector<std::string>(rest.begin() + 1, rest.end()), command->name);

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
