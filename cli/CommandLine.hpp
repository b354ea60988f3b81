#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tqarchive {

// A parsed tqarchive command line. Options may appear anywhere after the command (and the
// global ones before it); "--" ends the options.
struct CommandLine {
    std::string command;                      // zip, tar, unzip, untar, gzip, gunzip; empty: none
    std::vector<std::string> operands;        // in the order given
    std::optional<std::string> rootFolder;    // -C
    std::optional<std::string> outputFolder;  // -d
    std::optional<std::string> password;      // --password VALUE
    bool promptForPassword = false;           // --password without a value
    std::optional<std::string> passwordFile;  // --password-file
    std::optional<std::string> encryption;    // --encryption
    std::optional<std::string> logFile;       // --log
    bool quiet = false;
    bool unsafePaths = false;
    bool help = false;
    bool version = false;

    // Raises a "tqarchive:usage:*" error for anything it cannot accept: unknown commands
    // and options, options the command does not take, missing values and operands.
    static CommandLine parse(const std::vector<std::string>& arguments);
};

// The first command name among the arguments followed by a space, or "" (for the hint
// printed after a usage error, when parsing did not finish).
std::string commandNamedIn(const std::vector<std::string>& arguments);

}  // namespace tqarchive
