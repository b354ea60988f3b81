#include <host/HostError.hpp>

#include "CommandTable.hpp"
#include "DocumentGenerators.hpp"
#include "versionText.hpp"

namespace tqarchive {

namespace {

// Text as roff shows it: backslashes and hyphens escaped, no line taken for a request.
std::string roff(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-') {
            out += "\\-";
        } else {
            out += c;
        }
    }
    if (!out.empty() && (out[0] == '.' || out[0] == '\'')) {
        out.insert(0, "\\&");
    }
    return out;
}

std::string optionItem(const Option& option, const std::string& help) {
    return ".TP\n.B " + roff(CommandTable::synopsis(option)) + "\n" + roff(help) + "\n";
}

}  // namespace

std::string manPage() {
    const std::string version = versionText().substr(0, versionText().find('\n'));
    std::string page = ".TH TQARCHIVE 1 \"\" \"" + roff(version) + "\" \"User Commands\"\n";
    page +=
        ".SH NAME\ntqarchive \\- create, extract, list and test zip and tar archives; gzip "
        "and gunzip files\n.SH SYNOPSIS\n";
    for (const Command& command : CommandTable::commands()) {
        page += ".B tqarchive " + command.name + "\n.I " +
                roff(CommandTable::synopsis(command.operands)) + "\n[\\fIOPTION\\fR...]\n.br\n";
    }
    page += ".SH DESCRIPTION\n";
    for (const std::string& paragraph : CommandTable::overview()) {
        page += ".PP\n" + roff(paragraph) + "\n";
    }
    page += ".SH COMMANDS\n";
    std::string examples;
    for (const Command& command : CommandTable::commands()) {
        page +=
            ".SS \"" + command.name + " " + roff(CommandTable::synopsis(command.operands)) + "\"\n";
        for (const std::string& paragraph : command.description) {
            page += ".PP\n" + roff(paragraph) + "\n";
        }
        for (const OptionUse& use : command.options) {
            const Option& option = CommandTable::option(use.id);
            page += optionItem(option, use.help.empty() ? option.help : use.help);
        }
        for (const Example& example : command.examples) {
            examples += ".TP\n.B " + roff("tqarchive " + example.line) + "\n" +
                        roff(example.comment.empty() ? command.summary : example.comment) + "\n";
        }
    }
    page += ".SH OPTIONS FOR EVERY COMMAND\n";
    for (OptionId id : CommandTable::common()) {
        page += optionItem(CommandTable::option(id), CommandTable::option(id).help);
    }
    page += ".SH EXIT STATUS\n";
    for (const ExitStatusDoc& status : CommandTable::exitStatuses()) {
        page += ".TP\n.B " + std::to_string(status.status) + "\n" + roff(status.meaning) + "\n";
    }
    page +=
        ".SH DIAGNOSTICS\nEach warning and error ends in its identifier, in brackets; "
        "{1}, {2}, ... stand for the names and reasons it gives.\n";
    for (const std::string& identifier : tessel::host::catalogueIdentifiers()) {
        if (!identifier.starts_with("TESSEL:host:")) {
            page += ".TP\n.B " + roff(identifier) + "\n" +
                    roff(tessel::host::lookupMessageUtf8(identifier)) + "\n";
        }
    }
    return page + ".SH EXAMPLES\n" + examples;
}

}  // namespace tqarchive
