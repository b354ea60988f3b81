#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tqarchive {

// Every option the program knows.
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
    PreservePermissions,
    UnsafePaths,
    Json,
    Log,
    Quiet,
    Verbose,
    Help,
    Version
};

// What the shell offers for an option's value.
enum class ValueKind { None, File, Folder, Choice };

struct OptionDoc {
    OptionId id;
    std::string names;  // as the parser takes them: "-d", "-k,--keep-existing"
    std::string value;  // the value's name in help ("DIR"); empty for a flag
    ValueKind kind = ValueKind::None;
    std::vector<std::string> choices;  // ValueKind::Choice
    std::string help;
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

struct CommandDoc {
    std::string name;
    std::string operands;  // "ARCHIVE INPUT..."
    std::string summary;
    std::vector<std::string> description;  // paragraphs
    std::vector<OptionUse> options;        // the common options are not repeated here
    std::vector<Example> examples;
};

struct ExitStatusDoc {
    int status;
    std::string meaning;
};

// The facts of the command line, kept in one place: the parser, --help, the man page and
// the bash completion are all made from these tables, so they cannot disagree.
class CommandDocs {
  public:
    static const std::vector<CommandDoc>& commands();
    static const CommandDoc* find(std::string_view name);
    static const std::vector<OptionDoc>& options();
    static const OptionDoc& option(OptionId id);
    // The options every command takes, in help order.
    static const std::vector<OptionId>& common();
    // The option's spellings as typed ("-k", "--keep-existing"; the level gives -0 to -9
    // and --level).
    static std::vector<std::string> spellings(const OptionDoc& option);
    // How help shows the option: "-k, --keep-existing", "--password [P]".
    static std::string synopsis(const OptionDoc& option);
    static const std::vector<std::string>& overview();
    static const std::vector<ExitStatusDoc>& exitStatuses();
};

}  // namespace tqarchive
