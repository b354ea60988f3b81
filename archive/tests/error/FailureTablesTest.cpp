// The failure tables: which identifier and arguments each family raises for a failure kind,
// per entry point, and what a gzip failure does to its output.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include <archive/core/CreateOptions.hpp>
#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/CreateFailures.hpp>
#include <archive/core/error/ExtractFailures.hpp>
#include <archive/core/error/GunzipFailures.hpp>
#include <archive/core/error/GzipFailures.hpp>

#include "../support/TestSupport.hpp"

namespace core = tessel::io::archive::core;
using core::ArchiveFormat;
using core::NullArchiveRule;

namespace {

const std::string kInternal = "TESSEL:io:archive:extractArchive:internalError";

void expectRaised(const std::optional<tqtest::RaisedError>& raised, const std::string& identifier,
                  const std::vector<std::string>& arguments, const std::string& row) {
    ASSERT_TRUE(raised) << row;
    EXPECT_EQ(raised->identifier, identifier) << row;
    EXPECT_EQ(raised->arguments, arguments) << row;
}

}  // namespace

TEST(CreateFailures, EachTableRaisesItsOwnIdentifiers) {
    struct Row {
        std::string name;
        NullArchiveRule rule;
        ArchiveFormat format;
        core::CreateFailureTable table;
        std::u16string filter;
        int level;
        std::string identifier;
        std::vector<std::string> arguments;
    };
    using T = core::CreateFailureTable;
    const std::vector<Row> rows = {
        {.name = "tar open",
         .rule = NullArchiveRule::CouldNotOpenArchiveForWriting,
         .format = ArchiveFormat::Tgz,
         .table = T::CreateArchive,
         .filter = u"",
         .level = -1,
         .identifier = "TESSEL:io:archive:tar:openError",
         .arguments = {"a.tgz"}},
        {.name = "zip access",
         .rule = NullArchiveRule::AccessDenied,
         .format = ArchiveFormat::Zip,
         .table = T::OptionCalls,
         .filter = u"",
         .level = -1,
         .identifier = "TESSEL:io:archive:zip:openError",
         .arguments = {"a.tgz"}},
        {.name = "full disk, gz, createArchive",
         .rule = NullArchiveRule::DiskSpaceFull,
         .format = ArchiveFormat::Gz,
         .table = T::CreateArchive,
         .filter = u"",
         .level = -1,
         .identifier = kInternal,
         .arguments = {}},
        {.name = "full disk, gz, option calls",
         .rule = NullArchiveRule::DiskSpaceFull,
         .format = ArchiveFormat::Gz,
         .table = T::OptionCalls,
         .filter = u"",
         .level = -1,
         .identifier = "TESSEL:io:archive:tar:DiskSpaceFull",
         .arguments = {"a.tgz"}},
        {.name = "full disk, zip",
         .rule = NullArchiveRule::DiskSpaceFull,
         .format = ArchiveFormat::Zip,
         .table = T::CreateArchive,
         .filter = u"",
         .level = -1,
         .identifier = "TESSEL:io:archive:zip:DiskSpaceFull",
         .arguments = {"a.tgz"}},
        {.name = "empty passphrase, invalid format",
         .rule = NullArchiveRule::EmptyPassphrase,
         .format = ArchiveFormat::Invalid,
         .table = T::CreateArchive,
         .filter = u"",
         .level = -1,
         .identifier = "TESSEL:io:archive:createArchive:invalidArchiveFormat",
         .arguments = {}},
        {.name = "level, zip",
         .rule = NullArchiveRule::InvalidCompressionLevel,
         .format = ArchiveFormat::Zip,
         .table = T::OptionCalls,
         .filter = u"",
         .level = 12,
         .identifier = "TESSEL:io:archive:createArchive:invalidCompression",
         .arguments = {"zip", "12"}},
        {.name = "level, filter",
         .rule = NullArchiveRule::InvalidCompressionLevel,
         .format = ArchiveFormat::Tar,
         .table = T::OptionCalls,
         .filter = u"xz",
         .level = 99,
         .identifier = "TESSEL:io:archive:createArchive:invalidCompression",
         .arguments = {"xz", "99"}},
        {.name = "level, createArchive",
         .rule = NullArchiveRule::InvalidCompressionLevel,
         .format = ArchiveFormat::Zip,
         .table = T::CreateArchive,
         .filter = u"",
         .level = 12,
         .identifier = kInternal,
         .arguments = {}},
        {.name = "cancelled",
         .rule = NullArchiveRule::Cancelled,
         .format = ArchiveFormat::Tar,
         .table = T::OptionCalls,
         .filter = u"",
         .level = -1,
         .identifier = "TESSEL:io:archive:createArchive:cancelled",
         .arguments = {}},
    };
    const std::u16string archivePath = u"a.tgz";
    for (const Row& row : rows) {
        core::CreateOptions options;
        options.filter = row.filter;
        options.level = row.level;
        const auto raised = tqtest::raisedBy([&] {
            core::raiseCreateFailure(core::ArchiveException(row.rule, u"ignored"), row.table,
                                     {archivePath, row.format, options});
        });
        expectRaised(raised, row.identifier, row.arguments, row.name);
    }
}

TEST(ExtractFailures, EachTableRaisesItsOwnIdentifiers) {
    struct Row {
        std::string name;
        NullArchiveRule rule;
        ArchiveFormat format;
        core::ExtractFailureTable table;
        bool readFailed;
        std::string identifier;
        std::vector<std::string> arguments;
    };
    using T = core::ExtractFailureTable;
    const std::vector<Row> rows = {
        {.name = "damaged tar, extractArchive",
         .rule = NullArchiveRule::CouldNotOpenFile,
         .format = ArchiveFormat::Tar,
         .table = T::ExtractArchive,
         .readFailed = false,
         .identifier = kInternal,
         .arguments = {}},
        {.name = "damaged tgz, extractArchive",
         .rule = NullArchiveRule::CouldNotOpenFile,
         .format = ArchiveFormat::Tgz,
         .table = T::ExtractArchive,
         .readFailed = false,
         .identifier = "TESSEL:io:archive:untar:invalidTarFile",
         .arguments = {"x.tar"}},
        {.name = "damaged tar, option calls",
         .rule = NullArchiveRule::CouldNotOpenFile,
         .format = ArchiveFormat::Tar,
         .table = T::OptionCalls,
         .readFailed = false,
         .identifier = "TESSEL:io:archive:untar:invalidTarFile",
         .arguments = {"x.tar"}},
        {.name = "write, option calls",
         .rule = NullArchiveRule::CouldNotWriteFile,
         .format = ArchiveFormat::Tar,
         .table = T::OptionCalls,
         .readFailed = false,
         .identifier = "TESSEL:io:archive:extractArchive:writeError",
         .arguments = {"target"}},
        {.name = "read, option calls",
         .rule = NullArchiveRule::CouldNotWriteFile,
         .format = ArchiveFormat::Zip,
         .table = T::OptionCalls,
         .readFailed = true,
         .identifier = "TESSEL:io:archive:unzip:invalidZipFile",
         .arguments = {"x.tar"}},
        {.name = "write, tar, extractArchive",
         .rule = NullArchiveRule::CouldNotWriteFile,
         .format = ArchiveFormat::Tar,
         .table = T::ExtractArchive,
         .readFailed = false,
         .identifier = kInternal,
         .arguments = {}},
        {.name = "outward link",
         .rule = NullArchiveRule::LinkOutsideFolder,
         .format = ArchiveFormat::All,
         .table = T::OptionCalls,
         .readFailed = false,
         .identifier = "TESSEL:io:archive:extractArchive:linkOutsideFolder",
         .arguments = {"dir/link", "target", "x.tar"}},
        {.name = "outward link, extractArchive",
         .rule = NullArchiveRule::LinkOutsideFolder,
         .format = ArchiveFormat::All,
         .table = T::ExtractArchive,
         .readFailed = false,
         .identifier = kInternal,
         .arguments = {}},
        {.name = "empty name",
         .rule = NullArchiveRule::EmptyEntryFilename,
         .format = ArchiveFormat::Zip,
         .table = T::ExtractArchive,
         .readFailed = false,
         .identifier = "TESSEL:io:archive:extractArchive:emptyEntryFilename",
         .arguments = {"zip", "x.tar"}},
        {.name = "gzip under test",
         .rule = NullArchiveRule::CouldNotOpenFile,
         .format = ArchiveFormat::Gz,
         .table = T::Testing,
         .readFailed = false,
         .identifier = "TESSEL:io:archive:gunzip:javaOpenError",
         .arguments = {"x.tar"}},
        {.name = "gzip extracted",
         .rule = NullArchiveRule::CouldNotOpenFile,
         .format = ArchiveFormat::Gz,
         .table = T::OptionCalls,
         .readFailed = false,
         .identifier = "TESSEL:io:archive:untar:invalidTarFile",
         .arguments = {"x.tar"}},
        {.name = "cancelled, testing",
         .rule = NullArchiveRule::Cancelled,
         .format = ArchiveFormat::Zip,
         .table = T::Testing,
         .readFailed = false,
         .identifier = "TESSEL:io:archive:extractArchive:cancelled",
         .arguments = {}},
    };
    const std::u16string archivePath = u"x.tar";
    const std::u16string entry = u"dir/link";
    for (const Row& row : rows) {
        const auto raised = tqtest::raisedBy([&] {
            core::raiseExtractFailure(core::ArchiveException(row.rule, u"target"), row.table,
                                      {archivePath, row.format, entry, row.readFailed});
        });
        expectRaised(raised, row.identifier, row.arguments, row.name);
    }
}

TEST(GzipFailures, IdentifiersAndTheOutputLeft) {
    struct Row {
        std::string name;
        NullArchiveRule rule;
        core::GzipFailureTable table;
        std::string identifier;
        std::vector<std::string> arguments;
        bool removesOutput;
    };
    using T = core::GzipFailureTable;
    const std::vector<Row> rows = {
        {.name = "unreadable input",
         .rule = NullArchiveRule::CouldNotOpenFile,
         .table = T::Compressgz,
         .identifier = "TESSEL:io:archive:gzip:javaOpenError",
         .arguments = {"in.txt"},
         .removesOutput = false},
        {.name = "unreadable input, to file",
         .rule = NullArchiveRule::CouldNotOpenFile,
         .table = T::CompressgzToFile,
         .identifier = "TESSEL:io:archive:gzip:javaOpenError",
         .arguments = {"in.txt"},
         .removesOutput = true},
        {.name = "write",
         .rule = NullArchiveRule::CouldNotWriteFile,
         .table = T::Compressgz,
         .identifier = "TESSEL:io:archive:gzip:javaOutputOpenError",
         .arguments = {"out.gz"},
         .removesOutput = true},
        {.name = "full disk",
         .rule = NullArchiveRule::DiskSpaceFull,
         .table = T::Compressgz,
         .identifier = kInternal,
         .arguments = {},
         .removesOutput = false},
        {.name = "full disk, to file",
         .rule = NullArchiveRule::DiskSpaceFull,
         .table = T::CompressgzToFile,
         .identifier = "TESSEL:io:archive:gzip:outputDiskFull",
         .arguments = {"out.gz"},
         .removesOutput = true},
        {.name = "level, to file",
         .rule = NullArchiveRule::InvalidCompressionLevel,
         .table = T::CompressgzToFile,
         .identifier = "TESSEL:io:archive:createArchive:invalidCompression",
         .arguments = {"gzip", "10"},
         .removesOutput = true},
    };
    const std::u16string input = u"in.txt";
    const std::u16string output = u"out.gz";
    for (const Row& row : rows) {
        const core::ArchiveException failure(row.rule, u"");
        EXPECT_EQ(core::gzipFailureRemovesOutput(&failure, row.table), row.removesOutput)
            << row.name;
        const auto raised = tqtest::raisedBy([&] {
            core::raiseGzipFailure(failure, row.table, {input, output, 10});
        });
        expectRaised(raised, row.identifier, row.arguments, row.name);
    }
    // Anything but the archive objects' failures: compressgz keeps, compressgzToFile removes.
    EXPECT_FALSE(core::gzipFailureRemovesOutput(nullptr, T::Compressgz));
    EXPECT_TRUE(core::gzipFailureRemovesOutput(nullptr, T::CompressgzToFile));
}

TEST(GunzipFailures, CancellationIsReportedOnlyByTheOptionCall) {
    struct Row {
        std::string name;
        NullArchiveRule rule;
        core::GunzipFailureTable table;
        std::string identifier;
        std::vector<std::string> arguments;
    };
    using T = core::GunzipFailureTable;
    const std::vector<Row> rows = {
        {.name = "cancelled",
         .rule = NullArchiveRule::Cancelled,
         .table = T::Uncompressgz,
         .identifier = kInternal,
         .arguments = {}},
        {.name = "cancelled, options",
         .rule = NullArchiveRule::Cancelled,
         .table = T::OptionCalls,
         .identifier = "TESSEL:io:archive:extractArchive:cancelled",
         .arguments = {}},
        {.name = "truncated",
         .rule = NullArchiveRule::CorruptGzFile,
         .table = T::Uncompressgz,
         .identifier = "TESSEL:io:archive:gunzip:javaCopyStreamError",
         .arguments = {"data"}},
        {.name = "read-only target",
         .rule = NullArchiveRule::UnableToOverwrite,
         .table = T::OptionCalls,
         .identifier = "TESSEL:io:archive:gunzip:javaOutputOpenError",
         .arguments = {"/out/data"}},
    };
    const std::u16string input = u"data.gz";
    const std::u16string outputName = u"data";
    for (const Row& row : rows) {
        const auto raised = tqtest::raisedBy([&] {
            core::raiseGunzipFailure(core::ArchiveException(row.rule, u"/out/data"), row.table,
                                     {input, outputName});
        });
        expectRaised(raised, row.identifier, row.arguments, row.name);
    }
}

// Through the entry points: one missing input, the same identifier from both gzip calls,
// and compressgzToFile leaves no output behind.
TEST(GzipFailures, BothEntryPointsUseTheTable) {
    const tqtest::TempDir dir;
    const std::u16string missing = tqtest::u16(dir / "missing.txt");
    const auto fromCompressgz =
        tqtest::raisedBy([&] { core::compressgz({missing}, tqtest::u16(dir.path())); });
    expectRaised(fromCompressgz, "TESSEL:io:archive:gzip:javaOpenError", {tqtest::utf8(missing)},
                 "compressgz");
    const std::u16string output = tqtest::u16(dir / "out.gz");
    const auto fromToFile =
        tqtest::raisedBy([&] { core::compressgzToFile(missing, output, core::CreateOptions()); });
    expectRaised(fromToFile, "TESSEL:io:archive:gzip:javaOpenError", {tqtest::utf8(missing)},
                 "compressgzToFile");
    EXPECT_FALSE(std::filesystem::exists(dir / "out.gz"));

    tqtest::writeFile(dir / "in.txt", "some text");
    core::CreateOptions badLevel;
    badLevel.level = 42;
    const auto refused = tqtest::raisedBy(
        [&] { core::compressgzToFile(tqtest::u16(dir / "in.txt"), output, badLevel); });
    expectRaised(refused, "TESSEL:io:archive:createArchive:invalidCompression", {"gzip", "42"},
                 "compressgzToFile level");
    EXPECT_FALSE(std::filesystem::exists(dir / "out.gz"));
}
