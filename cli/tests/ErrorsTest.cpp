// Exit statuses and identified messages for bad input, unwritable output and usage errors.

#include <gtest/gtest.h>

#include "CliRun.hpp"

namespace {

using namespace clitest;
using tqtest::TempDir;
using tqtest::writeFile;

struct BadRun {
    const char* args;
    int status;
    const char* identifier;
};

// Readable test names in ctest.
void PrintTo(const BadRun& value, std::ostream* out) {
    *out << value.args;
}

class BadInput : public testing::TestWithParam<BadRun> {};

TEST_P(BadInput, ExitStatusAndIdentifiedMessage) {
    TempDir dir;
    writeFile(dir / "plain.txt", "not an archive\n");
    writeFile(dir / "fake.zip", "not a zip either\n");
    fs::create_directories(dir / "inner");
    const auto result = tqarchive(dir / "inner", GetParam().args);
    EXPECT_EQ(result.status, GetParam().status) << result.err;
    const std::string tag = std::string("[") + GetParam().identifier + "]";
    EXPECT_NE(result.err.find("Error: "), std::string::npos) << result.err;
    EXPECT_NE(result.err.find(tag), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find("Unknown message identifier"), std::string::npos) << result.err;
    EXPECT_EQ(result.out, "");
}

INSTANTIATE_TEST_SUITE_P(
    Runs, BadInput,
    testing::Values(BadRun{"unzip ../missing.zip", 1, "tqarchive:archiveNotFound"},
                    BadRun{"unzip ../fake.zip -d out", 1, "TESSEL:io:archive:unzip:invalidZipFile"},
                    BadRun{"untar ../plain.txt.tgz", 1, "tqarchive:archiveNotFound"},
                    BadRun{"zip a.zip missing.txt -C ..", 1, "tqarchive:inputNotFound"},
                    BadRun{"zip a.zip ../plain.txt", 1, "tqarchive:inputOutsideRoot"},
                    BadRun{"tar a.tgz x -C ../nowhere", 1, "tqarchive:rootFolder"},
                    BadRun{"gunzip ../plain.txt -d .", 1, "TESSEL:io:archive:gunzip:notGzipFormat"},
                    BadRun{"zip a.zip plain.txt -C .. --password p --encryption rot13", 1,
                           "TESSEL:io:archive:createArchive:invalidEncryptionInLinux"},
                    BadRun{"zip a.zip plain.txt -C .. --password ''", 1,
                           "TESSEL:io:archive:createArchive:emptyPassword"},
                    BadRun{"zip a.zip x --password-file ../none", 1, "tqarchive:passwordFile"},
                    BadRun{"", 2, "tqarchive:usage:missingCommand"},
                    BadRun{"frobnicate a", 2, "tqarchive:usage:unknownCommand"},
                    BadRun{"zip a.zip x --bogus", 2, "tqarchive:usage:unknownOption"},
                    BadRun{"tar a.tar x --password p", 2, "tqarchive:usage:optionNotAllowed"},
                    BadRun{"zip a.zip", 2, "tqarchive:usage:missingOperand"},
                    BadRun{"unzip a.zip -d", 2, "tqarchive:usage:missingValue"},
                    BadRun{"zip a.zip x --password", 2, "tqarchive:usage:passwordNeedsTerminal"},
                    BadRun{"zip a.zip x --password a --password-file f", 2,
                           "tqarchive:usage:conflictingOptions"},
                    BadRun{"zip a.zip x --encryption aes128", 2,
                           "tqarchive:usage:encryptionWithoutPassword"}));

TEST(UnwritableOutput, ReportedWithTheLibraryIdentifierWhenRunAsNobody) {
    if (!tqtest::toolAvailable("setpriv")) {
        GTEST_SKIP() << "setpriv is not installed";
    }
    TempDir dir;
    fs::permissions(dir.path(), fs::perms::owner_all | fs::perms::group_exec |
                                    fs::perms::others_exec | fs::perms::others_read);
    writeFile(dir / "in.txt", "data");
    fs::create_directories(dir / "locked");  // root's, 0755: nobody cannot write in it
    fs::permissions(dir / "in.txt", fs::perms::others_read, fs::perm_options::add);
    const std::string nobody = "setpriv --reuid=65534 --regid=65534 --clear-groups";
    if (tqarchive(dir.path(), "--version", nobody).status != 0) {
        GTEST_SKIP() << "the built program cannot be run as nobody from here";
    }

    const struct {
        const char* args;
        const char* identifier;
    } cases[] = {
        {"zip locked/a.zip in.txt", "TESSEL:io:archive:zip:openError"},
        {"tar locked/a.tgz in.txt", "TESSEL:io:archive:tar:openError"},
        {"gzip in.txt -d locked", "TESSEL:io:archive:gzip:javaOutputOpenError"},
        {"gzip in.txt -d locked/sub", "tqarchive:outputFolder"},
    };
    for (const auto& c : cases) {
        const auto result = tqarchive(dir.path(), c.args, nobody);
        EXPECT_EQ(result.status, 1) << c.args << ": " << result.err;
        EXPECT_NE(result.err.find(std::string("[") + c.identifier + "]"), std::string::npos)
            << c.args << ": " << result.err;
    }
    EXPECT_TRUE(fs::is_empty(dir / "locked"));
}

TEST(HelpAndVersion, EveryCommandHasHelpWithExamples) {
    TempDir dir;
    for (const char* command : {"zip", "tar", "unzip", "untar", "gzip", "gunzip"}) {
        const auto result = tqarchive(dir.path(), std::string(command) + " --help");
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.out.find(std::string("Usage: tqarchive ") + command), std::string::npos);
        EXPECT_NE(result.out.find("Examples:"), std::string::npos) << command;
    }
    const auto version = tqarchive(dir.path(), "--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_NE(version.out.find("libarchive"), std::string::npos);
}

TEST(LogOption, DiagnosticRecordsGoToTheFile) {
    TempDir dir;
    writeFile(dir / "a.txt", "a");
    const auto result = tqarchive(dir.path(), "zip a.zip a.txt --log diag.log");
    ASSERT_EQ(result.status, 0) << result.err;
    const std::string log = tqtest::readFile(dir / "diag.log");
    EXPECT_NE(log.find("tessel::io::archive::core"), std::string::npos) << log;
    EXPECT_NE(log.find("a.txt"), std::string::npos) << log;
}

}  // namespace
