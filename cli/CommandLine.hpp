#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tqarchive {

struct Command;

// Every option the program knows; CommandTable::options() holds each one's row.
enum class OptionId {
    Root,
    Output,
    Password,
    PasswordFile,
    Encryption,
    Exclude,
    Level,
    Format,
    Stdout,
    KeepExisting,
    StripComponents,
    KeepOutwardLinks,
    PreservePermissions,
    UnsafePaths,
    Json,
    Log,
    Quiet,
    Verbose,
    Help,
    Version
};

// A parsed tqarchive command line. The common options may come before the command too;
// "--" ends the options. Each option's row in CommandTable::options() names the field the
// parser fills.
struct CommandLine {
    const Command* command = nullptr;         // its row of CommandTable::commands(); null: none
    std::vector<std::string> operands;        // in the order given
    std::optional<std::string> rootFolder;    // -C
    std::optional<std::string> outputFolder;  // -d
    std::optional<std::string> password;      // --password VALUE
    bool promptForPassword = false;           // --password without a value
    std::optional<std::string> passwordFile;  // --password-file
    std::optional<std::string> encryption;    // --encryption
    std::vector<std::string> excludes;        // --exclude, in order
    int level = -1;                           // -0 ... -9, --level; -1: the format's default
    std::optional<std::string> format;        // --format
    bool toStdout = false;                    // -c
    bool keepExisting = false;
    std::optional<unsigned> stripComponents;
    bool keepOutwardLinks = false;
    bool preservePermissions = false;
    bool unsafePaths = false;
    bool json = false;
    std::optional<std::string> logFile;
    bool quiet = false;
    bool verbose = false;
    bool help = false;
    bool version = false;
    bool generateMan = false;                       // hidden: --generate-man
    std::optional<std::string> generateCompletion;  // hidden: --generate-completion SHELL

    // Raises a "tqarchive:usage:*" error for anything it cannot accept: unknown commands
    // and options, options the command does not take, missing values and operands.
    static CommandLine parse(const std::vector<std::string>& arguments);
};

}  // namespace tqarchive
