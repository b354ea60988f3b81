// The command table as the user meets it: every command in the overview has its help, man
// page section, completion and usage refusals; each command takes exactly the options its
// help lists; --unsafe-paths keeps the safe writes and the cleanup after a failure.

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

namespace {

struct CommandRow {
    std::string name;
    std::string operands;       // as help shows them
    std::string firstMissing;   // what a bare command is told it needs
    std::string secondMissing;  // what it needs after one operand; empty: one is enough
    bool takesMore;             // a second (or third) operand is not refused as extra
};

struct OptionsRow {
    std::string name;
    std::string rootRefusal;  // how -C is refused when the command does not take it
};

// The man page's spelling of a text: every hyphen escaped.
std::string roff(const std::string& text) {
    std::string out;
    for (const char c : text) {
        out += c == '-' ? std::string("\\-") : std::string(1, c);
    }
    return out;
}

// The lines of a help section, from its heading to the next empty line.
std::vector<std::string> section(const std::string& help, const std::string& heading) {
    std::vector<std::string> lines;
    std::size_t at = help.find("\n" + heading + "\n");
    if (at == std::string::npos) {
        return lines;
    }
    at += heading.size() + 2;
    for (std::size_t end = help.find('\n', at); end != std::string::npos && end > at;
         at = end + 1, end = help.find('\n', at)) {
        lines.push_back(help.substr(at, end - at));
    }
    return lines;
}

// The first spelling of each option a help section lists ("-C", "-0", "--password").
std::vector<std::string> optionsListed(const std::string& help, const std::string& heading) {
    std::vector<std::string> spellings;
    for (const std::string& line : section(help, heading)) {
        if (line.starts_with("  -")) {
            spellings.push_back(line.substr(2, line.find_first_of(" ,", 2) - 2));
        }
    }
    return spellings;
}

}  // namespace

TEST(CommandTable, EveryCommandHasItsHelpManSectionCompletionAndOperandRefusals) {
    const CommandRow rows[] = {
        {.name = "zip",
         .operands = "ARCHIVE INPUT...",
         .firstMissing = "ARCHIVE",
         .secondMissing = "INPUT",
         .takesMore = true},
        {.name = "tar",
         .operands = "ARCHIVE INPUT...",
         .firstMissing = "ARCHIVE",
         .secondMissing = "INPUT",
         .takesMore = true},
        {.name = "unzip",
         .operands = "ARCHIVE [ENTRY...]",
         .firstMissing = "ARCHIVE",
         .secondMissing = "",
         .takesMore = true},
        {.name = "untar",
         .operands = "ARCHIVE [ENTRY...]",
         .firstMissing = "ARCHIVE",
         .secondMissing = "",
         .takesMore = true},
        {.name = "gzip",
         .operands = "INPUT...",
         .firstMissing = "INPUT",
         .secondMissing = "",
         .takesMore = true},
        {.name = "gunzip",
         .operands = "INPUT...",
         .firstMissing = "INPUT",
         .secondMissing = "",
         .takesMore = true},
        {.name = "list",
         .operands = "ARCHIVE",
         .firstMissing = "ARCHIVE",
         .secondMissing = "",
         .takesMore = false},
        {.name = "test",
         .operands = "ARCHIVE",
         .firstMissing = "ARCHIVE",
         .secondMissing = "",
         .takesMore = false},
    };
    TempDir dir;
    const std::string overview = tqarchive(dir.path(), "--help").output;
    const std::string man = tqarchive(dir.path(), "--generate-man").output;
    const std::string completion = tqarchive(dir.path(), "--generate-completion bash").output;
    const std::string noCommand = tqarchive(dir.path(), "").err;
    const std::string unknownCommand = tqarchive(dir.path(), "frobnicate").err;

    // The overview lists exactly these commands, in this order: a command added to the table
    // needs its row here.
    std::vector<std::string> listed;
    for (const std::string& line : section(overview, "Commands:")) {
        if (line.starts_with("  ") && line[2] != ' ') {
            listed.push_back(line.substr(2, line.find(' ', 2) - 2));
        }
    }
    std::vector<std::string> expected;
    for (const CommandRow& row : rows) {
        expected.push_back(row.name);
    }
    EXPECT_EQ(listed, expected) << overview;

    for (const CommandRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_NE(overview.find("\n  " + row.name + " " + row.operands + " "), std::string::npos);
        EXPECT_TRUE(tqarchive(dir.path(), row.name + " --help")
                        .output.starts_with("Usage: tqarchive " + row.name + " " + row.operands +
                                            " [OPTION...]\n"));
        EXPECT_NE(man.find(".B tqarchive " + row.name + "\n.I " + roff(row.operands) + "\n"),
                  std::string::npos);
        EXPECT_NE(man.find(".SS \"" + row.name + " " + roff(row.operands) + "\"\n"),
                  std::string::npos);
        EXPECT_NE(completion.find("\n            " + row.name + ") COMPREPLY=("),
                  std::string::npos);
        // The usage messages name every command.
        EXPECT_NE(noCommand.find(" " + row.name), std::string::npos) << noCommand;
        EXPECT_NE(unknownCommand.find(" " + row.name), std::string::npos) << unknownCommand;

        const auto bare = tqarchive(dir.path(), row.name);
        EXPECT_TRUE(bare.status == 2 && reports(bare, "tqarchive:usage:missingOperand") &&
                    bare.err.find("'" + row.name + "' needs " + row.firstMissing + ".") !=
                        std::string::npos)
            << bare.err;
        const auto one = tqarchive(dir.path(), row.name + " none.zip");
        if (!row.secondMissing.empty()) {
            EXPECT_TRUE(one.status == 2 && reports(one, "tqarchive:usage:missingOperand") &&
                        one.err.find("'" + row.name + "' needs " + row.secondMissing + ".") !=
                            std::string::npos)
                << one.err;
        } else {
            EXPECT_FALSE(reports(one, "tqarchive:usage:missingOperand")) << one.err;
        }
        const auto three = tqarchive(dir.path(), row.name + " none.zip second third");
        EXPECT_EQ(reports(three, "tqarchive:usage:extraOperand"), !row.takesMore) << three.err;
        if (!row.takesMore) {
            EXPECT_TRUE(three.status == 2 &&
                        three.err.find("'second' is one too many") != std::string::npos)
                << three.err;
        }
    }
    EXPECT_EQ(sh(dir.path(), "ls -A"), "");
}

// Each option a command's help lists is taken by it; each that only other commands list is
// refused by name before anything is done (-C by the extracting commands with the hint for
// -d). The value after each option is one it can take, or an operand for a flag.
TEST(CommandTable, EachCommandTakesTheOptionsItsHelpListsAndRefusesTheOthers) {
    const OptionsRow rows[] = {
        {.name = "zip", .rootRefusal = ""},
        {.name = "tar", .rootRefusal = ""},
        {.name = "unzip", .rootRefusal = "extractUsesD"},
        {.name = "untar", .rootRefusal = "extractUsesD"},
        {.name = "gzip", .rootRefusal = "optionNotAllowed"},
        {.name = "gunzip", .rootRefusal = "optionNotAllowed"},
        {.name = "list", .rootRefusal = "optionNotAllowed"},
        {.name = "test", .rootRefusal = "optionNotAllowed"},
    };
    TempDir dir;
    std::map<std::string, std::vector<std::string>> own;
    std::set<std::string> all;
    for (const OptionsRow& row : rows) {
        own[row.name] =
            optionsListed(tqarchive(dir.path(), row.name + " --help").output, "Options:");
        EXPECT_FALSE(own[row.name].empty()) << row.name;
        all.insert(own[row.name].begin(), own[row.name].end());
    }
    // The helps were read right: the options of every command are among them.
    for (const std::string option : {"-d", "-k", "-p", "--unsafe-paths", "--json", "-c", "--format",
                                     "--encryption", "--exclude", "-0", "-C"}) {
        EXPECT_TRUE(all.contains(option)) << option;
    }
    for (const OptionsRow& row : rows) {
        const std::string& command = row.name;
        EXPECT_EQ(std::find(own[command].begin(), own[command].end(), "-C") == own[command].end(),
                  !row.rootRefusal.empty());
        for (const std::string& option : all) {
            SCOPED_TRACE(command + " " + option);
            const auto run = tqarchive(dir.path(), command + " none.zip " + option + " tar");
            const bool taken =
                std::find(own[command].begin(), own[command].end(), option) != own[command].end();
            if (taken) {
                EXPECT_FALSE(reports(run, "tqarchive:usage:optionNotAllowed") ||
                             reports(run, "tqarchive:usage:unknownOption") ||
                             reports(run, "tqarchive:usage:unknownOptionNear") ||
                             reports(run, "tqarchive:usage:extractUsesD"))
                    << run.err;
            } else if (option == "-0") {
                // A command without --level reads -0 ... -9 as an operand, as a number.
                EXPECT_FALSE(reports(run, "tqarchive:usage:optionNotAllowed")) << run.err;
            } else if (option == "-C" && row.rootRefusal == "extractUsesD") {
                EXPECT_TRUE(run.status == 2 && reports(run, "tqarchive:usage:extractUsesD") &&
                            run.err.find("'" + command + "' takes its output folder with -d") !=
                                std::string::npos)
                    << run.err;
            } else {
                EXPECT_TRUE(run.status == 2 && reports(run, "tqarchive:usage:optionNotAllowed") &&
                            run.err.find("'" + option + "' cannot be used with '" + command +
                                         "'") != std::string::npos)
                    << run.err;
            }
        }
    }
    EXPECT_EQ(sh(dir.path(), "ls -A"), "");
}

namespace {

struct Failure {
    std::string option;
};

}  // namespace

// A tar cut short inside its second entry: the run fails, the first entry it wrote is taken
// back and the existing file the second would replace is left whole, with and without
// --unsafe-paths (which turns off only the path, link, device and permission rules).
TEST(CommandTable, UnsafePathsKeepsSafeWritesAndTheCleanupAfterAFailure) {
    const Failure rows[] = {{.option = ""}, {.option = "--unsafe-paths"}, {.option = "-p"}};
    TempDir dir;
    writeFile(dir / "in/new.txt", "new\n");
    writeFile(dir / "in/old.txt", randomBytes(1000000));
    ASSERT_EQ(tqarchive(dir.path(), "tar full.tar new.txt old.txt -C in -q").status, 0);
    sh(dir.path(), "head -c 600000 full.tar > cut.tar && rm -r in full.tar");
    for (const Failure& row : rows) {
        SCOPED_TRACE(row.option);
        writeFile(dir / "out/old.txt", "old\n");
        const auto run = tqarchive(dir.path(), "untar cut.tar -d out " + row.option);
        EXPECT_TRUE(run.status == 1 && reports(run, "TESSEL:io:archive:untar:invalidTarFile"))
            << run.err;
        EXPECT_EQ(sh(dir.path(), "ls -A out && cat out/old.txt && rm -r out"), "old.txt\nold\n");
    }
}
