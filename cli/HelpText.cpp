#include "HelpText.hpp"

#include "CommandTable.hpp"

namespace tqarchive {

namespace {

constexpr std::size_t kWidth = 79;

// The text broken into lines of at most kWidth columns, each starting with the indent
// (the first with firstIndent).
std::string wrap(const std::string& text, const std::string& firstIndent,
                 const std::string& indent) {
    std::string out = firstIndent;
    std::size_t column = firstIndent.size();
    bool lineEmpty = true;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        const std::string word = text.substr(at, end - at);
        at = end + 1;
        if (!lineEmpty && column + 1 + word.size() > kWidth) {
            out += "\n" + indent;
            column = indent.size();
            lineEmpty = true;
        }
        if (!lineEmpty) {
            out += ' ';
            ++column;
        }
        out += word;
        column += word.size();
        lineEmpty = false;
    }
    return out + "\n";
}

// "  -C DIR        help..." with the help in a column of its own.
std::string optionLines(const Option& option, const std::string& help) {
    const std::string indent(25, ' ');
    std::string head = "  " + CommandTable::synopsis(option);
    if (head.size() + 2 > indent.size()) {
        return head + "\n" + wrap(help, indent, indent);
    }
    return wrap(help, head + std::string(indent.size() - head.size(), ' '), indent);
}

std::string overviewText() {
    std::string text = "Usage: tqarchive COMMAND [OPTION...] OPERAND...\n\n" +
                       wrap(CommandTable::overview().front(), "", "") + "\nCommands:\n";
    for (const Command& command : CommandTable::commands()) {
        std::string head = "  " + command.name + " " + CommandTable::synopsis(command.operands);
        head.resize(std::max<std::size_t>(head.size() + 1, 25), ' ');
        text += wrap(command.summary, head, std::string(25, ' '));
    }
    text += "\nOptions for every command:\n";
    for (OptionId id : CommandTable::common()) {
        text += optionLines(CommandTable::option(id), CommandTable::option(id).help);
    }
    for (auto paragraph = CommandTable::overview().begin() + 1;
         paragraph != CommandTable::overview().end(); ++paragraph) {
        text += '\n';
        text += wrap(*paragraph, "", "");
    }
    text += "\nExit status:\n";
    for (const ExitStatusDoc& status : CommandTable::exitStatuses()) {
        std::string head = "  " + std::to_string(status.status);
        head.resize(8, ' ');
        text += wrap(status.meaning, head, std::string(8, ' '));
    }
    return text + "\nRun 'tqarchive COMMAND --help' for the options and examples of a command.\n";
}

}  // namespace

std::string helpText(const Command* command) {
    if (command == nullptr) {
        return overviewText();
    }
    std::string text = "Usage: tqarchive " + command->name + " " +
                       CommandTable::synopsis(command->operands) + " [OPTION...]\n";
    for (const std::string& paragraph : command->description) {
        text += '\n';
        text += wrap(paragraph, "", "");
    }
    text += "\nOptions:\n";
    for (const OptionUse& use : command->options) {
        const Option& option = CommandTable::option(use.id);
        text += optionLines(option, use.help.empty() ? option.help : use.help);
    }
    text += "\nOptions for every command:\n";
    for (OptionId id : CommandTable::common()) {
        text += optionLines(CommandTable::option(id), CommandTable::option(id).help);
    }
    text += "\nExamples:\n";
    for (const Example& example : command->examples) {
        std::string line = "  tqarchive " + example.line;
        if (!example.comment.empty()) {
            line.resize(std::max<std::size_t>(line.size() + 2, 44), ' ');
            line += "# " + example.comment;
        }
        text += line + "\n";
    }
    return text;
}
}  // namespace tqarchive
