#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Command.hpp"
#include "Option.hpp"

namespace tqarchive {

struct ExitStatusDoc {
    int status;
    std::string meaning;
};

// The facts of the command line, kept in one place: the parser, --help, the man page and
// the bash completion are all made from these tables, so they cannot disagree, and each
// command's row says what it does and runs it.
class CommandTable {
  public:
    static const std::vector<Command>& commands();
    static const Command* find(std::string_view name);
    static const std::vector<Option>& options();
    static const Option& option(OptionId id);
    // The options every command takes, in help order.
    static const std::vector<OptionId>& common();
    // The option's names as the row gives them ("-k", "--keep-existing").
    static std::vector<std::string> names(const Option& option);
    // The option's spellings as typed ("-k", "--keep-existing"; the level gives -0 to -9
    // and --level).
    static std::vector<std::string> spellings(const Option& option);
    // How help shows the option: "-k, --keep-existing", "--password [P]".
    static std::string synopsis(const Option& option);
    // How help shows the command's operands: "ARCHIVE INPUT...", "ARCHIVE [ENTRY...]".
    static std::string synopsis(const Operands& operands);
    static const std::vector<std::string>& overview();
    static const std::vector<ExitStatusDoc>& exitStatuses();
};

}  // namespace tqarchive
