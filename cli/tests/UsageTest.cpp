// Command lines that cannot be run, the hints for habits from other tools, --help, the man
// page and the bash completion.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

namespace {

struct UsageCase {
    std::string args;
    std::string identifier;  // after "tqarchive:usage:"
    std::string says;        // what the message must also say (a hint), when not empty
};

}  // namespace

TEST(Usage, RefusedWithExitStatus2AnIdentifierAHintAndNothingWritten) {
    const UsageCase cases[] = {
        {"", "missingCommand", ""},
        {"frobnicate a", "unknownCommand", "list or test"},
        {"zip a.zip x --bogus", "unknownOption", ""},
        {"-X zip a.zip x", "unknownOption", ""},
        {"zip a.zip x --exlude '*.o'", "unknownOptionNear", "Did you mean '--exclude'?"},
        {"untar a.tar --unsafe-path", "unknownOptionNear", "'--unsafe-paths'"},
        {"tar a.tar x --password p", "optionNotAllowed", "'tar'"},
        {"gzip x -k", "optionNotAllowed", ""},
        {"list a.zip -d out", "optionNotAllowed", ""},
        {"untar x.tar -C dir", "extractUsesD", "-d FOLDER"},
        {"unzip x.zip -C dir", "extractUsesD", "-d FOLDER"},
        {"gzip -d f.gz", "gzipDecompress", "tqarchive gunzip f.gz"},
        {"unzip a.zip -d", "missingValue", "'-d'"},
        {"zip a.zip x --exclude", "missingValue", "'--exclude'"},
        {"zip a.zip x --quiet=yes", "unexpectedValue", "'--quiet'"},
        {"zip a.zip x --level 10", "invalidLevel", "'10'"},
        {"gzip x --level=fast", "invalidLevel", ""},
        {"tar - x --format rar", "unknownFormat", "'rar'"},
        {"tar - x --format zip", "unknownFormat", ""},
        {"zip a.zip", "missingOperand", "INPUT"},
        {"unzip", "missingOperand", "ARCHIVE"},
        {"gunzip -q", "missingOperand", "INPUT"},
        {"list a.zip b.zip", "extraOperand", "'b.zip'"},
        {"test a.zip b.zip", "extraOperand", ""},
        {"zip a.zip x --password a --password-file f", "conflictingOptions", ""},
        {"gzip x -c -d out", "conflictingOptions", ""},
        {"zip a.zip x --encryption aes128", "encryptionWithoutPassword", ""},
        {"zip a.zip x --password", "passwordNeedsTerminal", ""},
        // A bare --password before another option asks; it never takes the option as the
        // password (here that would write a.zip with the password "-q").
        {"zip a.zip x --password -q", "passwordNeedsTerminal", ""},
        {"unzip a.zip --password -d out", "passwordNeedsTerminal", ""},
        {"--generate-completion zsh", "unknownShell", ""},
    };
    TempDir dir;
    writeFile(dir / "x", "input\n");
    writeFile(dir / "a.zip", "");
    for (const UsageCase& usage : cases) {
        const auto run = tqarchive(dir.path(), usage.args);
        // The hint names the first command on the line.
        std::string command;
        for (std::size_t at = 0; command.empty() && at < usage.args.size();) {
            const std::size_t end = std::min(usage.args.find(' ', at), usage.args.size());
            const std::string word = usage.args.substr(at, end - at);
            if (std::string(" zip tar unzip untar gzip gunzip list test ").find(" " + word + " ") !=
                std::string::npos) {
                command = word + " ";
            }
            at = end + 1;
        }
        const std::string hint = "Run 'tqarchive " + command + "--help' for usage.\n";
        EXPECT_TRUE(run.status == 2 && run.output.empty() &&
                    reports(run, "tqarchive:usage:" + usage.identifier) &&
                    run.err.find(usage.says) != std::string::npos && run.err.ends_with(hint))
            << usage.args << " -> " << run.status << ": " << run.output << run.err;
    }
    EXPECT_EQ(sh(dir.path(), "ls -A"), "a.zip\nx\n");
}

TEST(Usage, OptionsGoBeforeOrAfterTheOperandsAndDashDashEndsThem) {
    TempDir dir;
    sh(dir.path(), "echo one > -q && echo two > b.txt");
    // -q before the command, -1 and --log between the operands, "-q" after "--" a file.
    const auto packed = tqarchive(dir.path(), "-v zip -1 a.zip --log log.txt b.txt -- -q");
    EXPECT_EQ(packed.output, "b.txt\n-q\n");
    EXPECT_EQ(packed.err, "b.txt\n-q\n");  // -v: each name as it is processed
    EXPECT_TRUE(fs::exists(dir / "log.txt"));
}

TEST(Help, EveryCommandDocumentsItsOptionsAndExamplesTheManPageAndCompletionAgree) {
    const std::string man = tqarchive("/", "--generate-man").output;
    const std::string completion = tqarchive("/", "--generate-completion bash").output;
    for (const std::string command :
         {"zip", "tar", "unzip", "untar", "gzip", "gunzip", "list", "test"}) {
        const std::string help = tqarchive("/", command + " --help").output;
        EXPECT_TRUE(help.starts_with("Usage: tqarchive " + command + " ") &&
                    help.find("\nExamples:\n  tqarchive " + command + " ") != std::string::npos)
            << help;
        EXPECT_NE(man.find(".SS \"" + command + " "), std::string::npos) << command;
        // Every option the help lists is one the man page and the completion offer too.
        for (std::size_t at = help.find("\n  -"); at != std::string::npos;
             at = help.find("\n  -", at + 1)) {
            const std::string option =
                help.substr(at + 3, help.find_first_of(" ,\n", at + 3) - at - 3);
            EXPECT_TRUE(completion.find(" " + option + " ") != std::string::npos ||
                        completion.find("\"" + option + " ") != std::string::npos ||
                        completion.find(" " + option + "\"") != std::string::npos)
                << command << " " << option;
            std::string roff;  // as the man page spells it: every hyphen escaped
            for (const char c : option) {
                roff += c == '-' ? std::string("\\-") : std::string(1, c);
            }
            EXPECT_NE(man.find(".B " + roff), std::string::npos) << command << " " << option;
        }
    }
    for (const std::string command : {"unzip", "untar"}) {
        EXPECT_NE(tqarchive("/", command + " -h").output.find("Existing files are replaced"),
                  std::string::npos);
    }
    for (const std::string section :
         {".SH SYNOPSIS", ".SH OPTIONS FOR EVERY COMMAND", ".SH EXIT STATUS\n.TP\n.B 0", ".B 130",
          ".SH DIAGNOSTICS", ".B tqarchive:usage:extractUsesD",
          ".B TESSEL:io:archive:zip:openError", ".SH EXAMPLES"}) {
        EXPECT_NE(man.find(section), std::string::npos) << section;
    }
    if (toolAvailable("groff")) {
        TempDir dir;
        writeFile(dir / "tqarchive.1", man);
        EXPECT_EQ(sh(dir.path(), "groff -man -Tutf8 -ww -z tqarchive.1"), "");
    }
    const auto version = tqarchive("/", "--version");
    EXPECT_TRUE(version.output.starts_with("tqarchive ") &&
                version.output.find("\nlibarchive 3.") != std::string::npos &&
                version.output.find(" zlib/") != std::string::npos)
        << version.output;
}

TEST(Help, BashCompletesCommandsOptionsValuesAndFiles) {
    TempDir dir;
    sh(dir.path(), "mkdir photos && touch photos.zip && " + program() +
                       " --generate-completion bash > completion.bash");
    const auto complete = [&](const std::string& words) {
        return sh(dir.path(),
                  "bash -c " +
                      shellQuote(
                          ". ./completion.bash; COMP_WORDS=(tqarchive " + words +
                          "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); "
                          "_tqarchive; printf '%s\\n' \"${COMPREPLY[@]}\" | sort | paste -sd ' '"));
    };
    EXPECT_EQ(complete("un"), "untar unzip\n");
    EXPECT_EQ(complete("untar --un"), "--unsafe-paths\n");
    EXPECT_EQ(complete("zip --encryption aes"), "aes128 aes256\n");
    EXPECT_EQ(complete("tar -C pho"), "photos\n");
    EXPECT_EQ(complete("unzip pho"), "photos photos.zip\n");
    EXPECT_EQ(complete("list --j"), "--json\n");
}
