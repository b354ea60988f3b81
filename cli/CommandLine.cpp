#include "CommandLine.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "CliMessages.hpp"

namespace tqarchive {

namespace {

using namespace std::string_literals;

enum class Option {
    Root,
    Output,
    Password,
    PasswordFile,
    Encryption,
    Log,
    Quiet,
    UnsafePaths,
    Help,
    Version
};

struct OptionSpelling {
    std::string_view name;
    Option option;
    bool takesValue;
};

constexpr std::array kOptions{
    OptionSpelling{"-C", Option::Root, true},
    OptionSpelling{"-d", Option::Output, true},
    OptionSpelling{"--password", Option::Password, false},  // value optional, handled apart
    OptionSpelling{"--password-file", Option::PasswordFile, true},
    OptionSpelling{"--encryption", Option::Encryption, true},
    OptionSpelling{"--log", Option::Log, true},
    OptionSpelling{"--quiet", Option::Quiet, false},
    OptionSpelling{"-q", Option::Quiet, false},
    OptionSpelling{"--unsafe-paths", Option::UnsafePaths, false},
    OptionSpelling{"--help", Option::Help, false},
    OptionSpelling{"-h", Option::Help, false},
    OptionSpelling{"--version", Option::Version, false},
};

constexpr std::array<std::string_view, 6> kCommands{"zip",   "tar",  "unzip",
                                                    "untar", "gzip", "gunzip"};

// Which command-specific options each command takes; the global ones (--log, --quiet,
// --help, --version) go with every command.
bool commandTakes(const std::string& command, Option option) {
    switch (option) {
        case Option::Root:
            return command == "zip" || command == "tar";
        case Option::Output:
            return command == "unzip" || command == "untar" || command == "gzip" ||
                   command == "gunzip";
        case Option::Password:
        case Option::PasswordFile:
            return command == "zip" || command == "unzip";
        case Option::Encryption:
            return command == "zip";
        case Option::UnsafePaths:
            return command == "unzip" || command == "untar";
        case Option::Log:
        case Option::Quiet:
        case Option::Help:
        case Option::Version:
            return true;
    }
    return false;
}

struct PendingOption {
    Option option;
    std::string spelling;
};

class Parser {
  public:
    explicit Parser(const std::vector<std::string>& arguments) : arguments_(arguments) {}

    CommandLine run() {
        std::vector<PendingOption> seen;
        bool optionsEnded = false;
        while (at_ < arguments_.size()) {
            const std::string& argument = arguments_[at_++];
            if (!optionsEnded && argument == "--") {
                optionsEnded = true;
            } else if (!optionsEnded && argument.size() > 1 && argument[0] == '-') {
                seen.push_back(option(argument));
            } else if (result_.command.empty()) {
                command(argument);
            } else {
                result_.operands.push_back(argument);
            }
        }
        if (result_.help || result_.version) {
            return result_;
        }
        if (result_.command.empty()) {
            raiseUsageError("missingCommand");
        }
        for (const PendingOption& pending : seen) {
            if (!commandTakes(result_.command, pending.option)) {
                raiseUsageError("optionNotAllowed", {pending.spelling, result_.command});
            }
        }
        checkCombinations();
        checkOperands();
        return result_;
    }

  private:
    void command(const std::string& word) {
        if (std::find(kCommands.begin(), kCommands.end(), word) == kCommands.end()) {
            raiseUsageError("unknownCommand", {word});
        }
        result_.command = word;
    }

    PendingOption option(const std::string& argument) {
        // "--name=value" and "-Xvalue" carry their value; otherwise it is the next argument.
        std::string name = argument;
        std::optional<std::string> attached;
        if (argument.rfind("--", 0) == 0) {
            if (const auto equals = argument.find('='); equals != std::string::npos) {
                name = argument.substr(0, equals);
                attached = argument.substr(equals + 1);
            }
        } else if (argument.size() > 2) {
            name = argument.substr(0, 2);
            attached = argument.substr(2);
        }
        const auto found = std::find_if(kOptions.begin(), kOptions.end(),
                                        [&](const OptionSpelling& o) { return o.name == name; });
        if (found == kOptions.end()) {
            raiseUsageError("unknownOption", {argument});
        }
        if (found->option == Option::Password) {
            password(attached);
            return {found->option, name};
        }
        if (!found->takesValue && attached) {
            raiseUsageError("unexpectedValue", {name});
        }
        std::string value;
        if (found->takesValue) {
            if (attached) {
                value = *attached;
            } else if (at_ < arguments_.size()) {
                value = arguments_[at_++];
            } else {
                raiseUsageError("missingValue", {name});
            }
        }
        store(found->option, std::move(value));
        return {found->option, name};
    }

    // "--password=P" and "--password P" give the password; a bare "--password" (last, or
    // followed by another option) asks for it on the terminal.
    void password(const std::optional<std::string>& attached) {
        result_.password.reset();
        result_.promptForPassword = false;
        if (attached) {
            result_.password = *attached;
        } else if (at_ < arguments_.size() && !arguments_[at_].starts_with("-")) {
            result_.password = arguments_[at_++];
        } else {
            result_.promptForPassword = true;
        }
    }

    void store(Option option, std::string value) {
        switch (option) {
            case Option::Root:
                result_.rootFolder = std::move(value);
                break;
            case Option::Output:
                result_.outputFolder = std::move(value);
                break;
            case Option::PasswordFile:
                result_.passwordFile = std::move(value);
                break;
            case Option::Encryption:
                result_.encryption = std::move(value);
                break;
            case Option::Log:
                result_.logFile = std::move(value);
                break;
            case Option::Quiet:
                result_.quiet = true;
                break;
            case Option::UnsafePaths:
                result_.unsafePaths = true;
                break;
            case Option::Help:
                result_.help = true;
                break;
            case Option::Version:
                result_.version = true;
                break;
            case Option::Password:
                break;
        }
    }

    void checkCombinations() const {
        const bool passwordGiven = result_.password || result_.promptForPassword;
        if (passwordGiven && result_.passwordFile) {
            raiseUsageError("conflictingOptions", {"--password"s, "--password-file"s});
        }
        if (result_.encryption && !passwordGiven && !result_.passwordFile) {
            raiseUsageError("encryptionWithoutPassword");
        }
    }

    void checkOperands() const {
        const std::string& command = result_.command;
        const std::size_t count = result_.operands.size();
        if ((command == "zip" || command == "tar" || command == "unzip" || command == "untar") &&
            count == 0) {
            raiseUsageError("missingOperand", {"ARCHIVE"s, command});
        }
        if ((command == "zip" || command == "tar") && count < 2) {
            raiseUsageError("missingOperand", {"INPUT"s, command});
        }
        if ((command == "gzip" || command == "gunzip") && count == 0) {
            raiseUsageError("missingOperand", {"INPUT"s, command});
        }
    }

    const std::vector<std::string>& arguments_;
    std::size_t at_ = 0;
    CommandLine result_;
};

}  // namespace

std::string commandNamedIn(const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        if (std::find(kCommands.begin(), kCommands.end(), argument) != kCommands.end()) {
            return argument + " ";
        }
    }
    return std::string();
}

CommandLine CommandLine::parse(const std::vector<std::string>& arguments) {
    return Parser(arguments).run();
}

}  // namespace tqarchive
