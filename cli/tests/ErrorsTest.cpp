// Exit statuses and identified messages for bad input, unwritable output and usage errors.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

// Run as nobody, as CI runs as root: "locked" is root's and 0755, "work" is writable.
TEST(BadInput, ExitStatusAndIdentifiedErrorAndNothingWritten) {
    TempDir dir;
    shell(dir.path(),
          "mkdir a b locked work && echo text | tee a/x.txt b/x.txt > plain.txt && " +
              shellQuote(TQARCHIVE_PROGRAM) +
              " zip -q s.zip plain.txt --password right && chmod 777 work && chmod -R o+rX .");
    const std::string nobody = "setpriv --reuid=65534 --regid=65534 --clear-groups";
    if (!toolAvailable("setpriv") || tqarchive(dir.path(), "--version", nobody).status != 0) {
        GTEST_SKIP() << "setpriv is missing or the built program cannot be run as nobody";
    }
    const std::string archive = "TESSEL:io:archive:", usage = "tqarchive:usage:";
    const std::tuple<std::string, int, std::string> runs[] = {
        {"unzip ../missing.zip", 1, "tqarchive:archiveNotFound"},
        {"unzip ../plain.txt", 1, archive + "unzip:invalidZipFile"},
        {"unzip ../s.zip --password wrong", 1, archive + "extractArchive:incorrectPassword"},
        {"unzip ../s.zip", 1, archive + "extractArchive:unableToWrite"},
        {"zip a.zip missing.txt -C ..", 1, "tqarchive:inputNotFound"},
        {"zip a.zip ../plain.txt", 1, "tqarchive:inputOutsideRoot"},
        {"tar a.tgz x -C ../nowhere", 1, "tqarchive:rootFolder"},
        {"gunzip ../plain.txt -d .", 1, archive + "gunzip:notGzipFormat"},
        {"gzip ../a/x.txt ../b/x.txt -d out", 1, "tqarchive:duplicateOutput"},
        {"zip a.zip plain.txt -C .. --password p --encryption rot13", 1,
         archive + "createArchive:invalidEncryptionInLinux"},
        {"zip a.zip plain.txt -C .. --password ''", 1, archive + "createArchive:emptyPassword"},
        {"zip a.zip x --password-file ../none", 1, "tqarchive:passwordFile"},
        {"zip ../locked/a.zip plain.txt -C ..", 1, archive + "zip:openError"},
        {"gzip ../plain.txt -d ../locked", 1, archive + "gzip:javaOutputOpenError"},
        {"gzip ../plain.txt -d ../locked/sub", 1, "tqarchive:outputFolder"},
        {"", 2, usage + "missingCommand"},
        {"frobnicate a", 2, usage + "unknownCommand"},
        {"zip a.zip x --bogus", 2, usage + "unknownOption"},
        {"tar a.tar x --password p", 2, usage + "optionNotAllowed"},
        {"zip a.zip", 2, usage + "missingOperand"},
        {"unzip a.zip -d", 2, usage + "missingValue"},
        {"zip a.zip x --password", 2, usage + "passwordNeedsTerminal"},
        {"zip a.zip x --password a --password-file f", 2, usage + "conflictingOptions"},
        {"zip a.zip x --encryption aes128", 2, usage + "encryptionWithoutPassword"}};
    for (const auto& [args, status, identifier] : runs) {
        const auto run = tqarchive(dir / "work", args, nobody);
        EXPECT_TRUE(run.status == status && run.output.empty() && run.err.starts_with("Error: ") &&
                    reports(run, identifier))
            << args << " -> " << run.status << ": " << run.output << run.err;
    }
    EXPECT_TRUE(fs::is_empty(dir / "work") && fs::is_empty(dir / "locked"));
}

TEST(HelpAndVersion, EveryCommandHasHelpWithExamples) {
    for (const std::string command : {"zip", "tar", "unzip", "untar", "gzip", "gunzip"}) {
        const std::string help = tqarchive("/", command + " --help").output;
        EXPECT_TRUE(help.starts_with("Usage: tqarchive " + command + " ") &&
                    help.find("\nExamples:\n  tqarchive " + command + " ") != std::string::npos)
            << help;
    }
    EXPECT_NE(tqarchive("/", "--version").output.find("libarchive"), std::string::npos);
}
