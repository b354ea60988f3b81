#pragma once

#include <string>
#include <vector>

#include "CommandLine.hpp"

namespace tqarchive {

// What a command does.
enum class Action { Create, Extract, Compress, Decompress, List, Test };

// The type of what a command writes or reads: zip; tar, plain or compressed (as ARCHIVE's
// name or --format says when writing); gzip files; or whatever ARCHIVE's name says.
enum class Format { Zip, Tar, Gzip, AsNamed };

// The operands a command takes, in order: each of required, then any number of more
// (nothing more when empty). Help shows "ARCHIVE INPUT..." when more repeats the last
// required one, "ARCHIVE [ENTRY...]" otherwise.
struct Operands {
    std::vector<std::string> required;
    std::string more;
};

// An option as one command takes it; help, when not empty, replaces the option's own.
struct OptionUse {
    OptionId id;
    std::string help;
};

struct Example {
    std::string line;  // what follows "tqarchive "
    std::string comment;
};

// One command of the program: the parser, --help, the man page and the bash completion
// are made from it, and main runs it. Action and format say how it behaves wherever a
// part of the program needs to know.
struct Command {
    std::string name;
    Action action;
    Format format;
    Operands operands;
    std::string summary;
    std::vector<std::string> description;  // paragraphs
    std::vector<OptionUse> options;        // the common options are not repeated here
    std::vector<Example> examples;
    // Returns the exit status of a run that finished; raises a message-identified error
    // otherwise.
    int (*run)(const CommandLine& commandLine);
};

}  // namespace tqarchive
