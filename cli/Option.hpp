#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "CommandLine.hpp"

namespace tqarchive {

// What the shell offers for an option's value.
enum class ValueKind { None, File, Folder, Choice };

// The field of CommandLine an option fills: a flag sets a bool, an option with a value
// stores it (a repeated one appends it), the level takes its digit, a count takes a whole
// number of zero or more.
using OptionTarget = std::variant<bool CommandLine::*, std::optional<std::string> CommandLine::*,
                                  std::vector<std::string> CommandLine::*, int CommandLine::*,
                                  std::optional<unsigned> CommandLine::*>;

// One option of the program, as the parser, --help, the man page and the bash completion
// all take it.
struct Option {
    OptionId id;
    std::string names;    // as the parser takes them: "-d", "-k,--keep-existing"
    std::string value{};  // the value's name in help ("DIR"); empty for a flag
    ValueKind kind = ValueKind::None;
    std::vector<std::string> choices{};  // ValueKind::Choice
    std::string help;
    OptionTarget target;
    bool valueOptional = false;    // "--password [P]": given bare, it takes no value
    bool digitShorthands = false;  // "-0" to "-9" stand for the value too
};

}  // namespace tqarchive
