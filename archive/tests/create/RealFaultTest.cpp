// Real faults, not fakes: a full disk is a tiny tmpfs in a private mount namespace, and a
// folder the process may not write is tried by a child that dropped root.
#include <gtest/gtest.h>

#include <unistd.h>

#include <archive/core/archivecore.hpp>

#include "../support/TestSupport.hpp"
#include "CreateTestSupport.hpp"

namespace core = tessel::io::archive::core;

namespace tqtest {
namespace {

constexpr const char* kInternalError = "TESSEL:io:archive:extractArchive:internalError";

// "identifier(arguments...)" of the error the call raised.
std::string outcome(const std::function<void()>& call) {
    const auto raised = raisedBy(call);
    if (!raised) {
        return "no error";
    }
    std::string text = raised->identifier + "(";
    for (std::size_t i = 0; i < raised->arguments.size(); ++i) {
        text += (i > 0 ? "," : "") + raised->arguments[i];
    }
    return text + ")";
}

TEST(FullDisk, CreateArchiveReportsByFormat) {
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    TempDir dir;
    writeFile(dir / "small.txt", "small");
    writeFile(dir / "big.bin", randomBytes(1 << 20));  // incompressible: really fills the disk
    const fs::path disk = dir / "disk";
    struct Case {
        const char* archive;
        const char16_t* format;
        std::string expected;
    };
    const Case cases[] = {
        {"a.zip", u"zip", "TESSEL:io:archive:zip:DiskSpaceFull(" + (disk / "a.zip").string() + ")"},
        {"a.tar", u"tar", "TESSEL:io:archive:tar:DiskSpaceFull(" + (disk / "a.tar").string() + ")"},
        {"a.tgz", u"tgz", "TESSEL:io:archive:tar:DiskSpaceFull(" + (disk / "a.tgz").string() + ")"},
        {"a.gz", u"gz", std::string(kInternalError) + "()"},
        {"b.zip", u"all", std::string(kInternalError) + "()"},
        {"b.tar.gz", u"all", std::string(kInternalError) + "()"},
    };
    for (const auto& c : cases) {
        const bool gz = std::u16string(c.format) == u"gz";
        const std::string report = runInChild(
            [&] {
                const fs::path archive = disk / c.archive;
                std::vector<std::u16string> files = {u16(dir / "small.txt"), u16(dir / "big.bin")};
                std::vector<std::u16string> names = {u"small.txt", u"big.bin"};
                if (gz) {
                    files.erase(files.begin());
                    names.erase(names.begin());
                }
                const std::string error =
                    outcome([&] { core::createArchive(u16(archive), files, names, c.format); });
                // The partial archive is kept.
                return error + (fs::exists(archive) ? " kept" : " removed");
            },
            mountTinyTmpfs(disk, 64 * 1024));
        EXPECT_EQ(report, c.expected + " kept") << c.archive;
    }
}

// A disk already full: nothing reaches it before the archive is closed, and the failure
// of that close is reported like any other full disk.
TEST(FullDisk, SurfacingOnlyAtClose) {
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    TempDir dir;
    writeFile(dir / "small.txt", "small");
    const fs::path disk = dir / "disk";
    struct Case {
        const char* archive;
        const char16_t* format;
        std::string expected;
    };
    const Case cases[] = {
        {"a.zip", u"zip", "TESSEL:io:archive:zip:DiskSpaceFull(" + (disk / "a.zip").string() + ")"},
        {"a.tar", u"tar", "TESSEL:io:archive:tar:DiskSpaceFull(" + (disk / "a.tar").string() + ")"},
        {"a.tgz", u"tgz", "TESSEL:io:archive:tar:DiskSpaceFull(" + (disk / "a.tgz").string() + ")"},
        {"a.gz", u"gz", std::string(kInternalError) + "()"},
        {"b.tar", u"all", std::string(kInternalError) + "()"},
        {"compressgz", u"", std::string(kInternalError) + "()"},
    };
    for (const auto& c : cases) {
        const std::string report = runInChild(
            [&] {
                writeFile(disk / "filler", randomBytes(64 * 1024));
                return outcome([&] {
                    if (std::string(c.archive) == "compressgz") {
                        core::compressgz({u16(dir / "small.txt")}, u16(disk));
                    } else {
                        core::createArchive(u16(disk / c.archive), {u16(dir / "small.txt")},
                                            {u"small.txt"}, c.format);
                    }
                });
            },
            mountTinyTmpfs(disk, 64 * 1024));
        EXPECT_EQ(report, c.expected) << c.archive;
    }
}

// compressgz on a full disk: the internal error, and the partial output is kept (unlike a
// read failure, which removes it).
TEST(FullDisk, CompressGzKeepsThePartialOutput) {
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    TempDir dir;
    writeFile(dir / "big.bin", randomBytes(1 << 20));
    const fs::path disk = dir / "disk";
    const std::string report = runInChild(
        [&] {
            const std::string error =
                outcome([&] { core::compressgz({u16(dir / "big.bin")}, u16(disk)); });
            return error + (fs::exists(disk / "big.bin.gz") ? " kept" : " removed");
        },
        mountTinyTmpfs(disk, 64 * 1024));
    EXPECT_EQ(report, std::string(kInternalError) + "() kept");
}

TEST(AccessDenied, ArchiveInAFolderNobodyMayWrite) {
    TempDir dir;
    fs::permissions(dir.path(), fs::perms(0755));
    writeFile(dir / "in.txt", "in");
    fs::permissions(dir / "in.txt", fs::perms(0644));
    struct Case {
        const char* archive;  // relative to dir; absolute unless `relative`
        bool relative;
        const char16_t* format;
        const char* identifier;
    };
    const Case cases[] = {
        {"a.zip", false, u"zip", "TESSEL:io:archive:zip:openError"},
        {"a.zip", true, u"zip", "TESSEL:io:archive:zip:openError"},
        {"a.tar", false, u"tar", "TESSEL:io:archive:tar:openError"},
        {"a.tgz", true, u"tgz", "TESSEL:io:archive:tar:openError"},
        {"a.gz", true, u"gz", kInternalError},
        {"b.zip", false, u"all", kInternalError},
    };
    for (const auto& c : cases) {
        const std::string path = c.relative ? std::string(c.archive) : (dir / c.archive).string();
        const std::string report = runInChild(
            [&] {
                if (chdir(dir.path().c_str()) != 0) {
                    return std::string("chdir failed");
                }
                return outcome([&] {
                    core::createArchive(u16(path), {u16(dir / "in.txt")}, {u"in.txt"}, c.format);
                });
            },
            dropPrivileges);
        const bool hasArgument = std::string(c.identifier) != kInternalError;
        // The path exactly as the caller gave it: relative stays relative.
        EXPECT_EQ(report, std::string(c.identifier) + "(" + (hasArgument ? path : "") + ")")
            << path;
        EXPECT_FALSE(fs::exists(dir / c.archive));
    }
}

TEST(AccessDenied, CompressGzIntoAFolderNobodyMayWrite) {
    TempDir dir;
    fs::permissions(dir.path(), fs::perms(0755));
    writeFile(dir / "in.txt", "in");
    fs::permissions(dir / "in.txt", fs::perms(0644));
    const std::string report =
        runInChild([&] { return outcome([&] { core::compressgz({u16(dir / "in.txt")}, u""); }); },
                   dropPrivileges);
    EXPECT_EQ(report,
              "TESSEL:io:archive:gzip:javaOutputOpenError(" + (dir / "in.txt.gz").string() + ")");
}

// An input inside a folder the process may not enter: its status is refused, which ends
// the call (it is not a skipped entry).
TEST(AccessDenied, InputBehindAFolderNobodyMayEnter) {
    TempDir dir;
    fs::permissions(dir.path(), fs::perms(0777));
    writeFile(dir / "closed/in.txt", "in");
    fs::permissions(dir / "closed", fs::perms(0700));
    const std::string report = runInChild(
        [&] {
            const std::string archiveError = outcome([&] {
                core::createArchive(u16(dir / "a.zip"), {u16(dir / "closed/in.txt")}, {u"in.txt"},
                                    u"zip");
            });
            const std::string gzipError =
                outcome([&] { core::compressgz({u16(dir / "closed/in.txt")}, u16(dir.path())); });
            return archiveError + " " + gzipError;
        },
        dropPrivileges);
    EXPECT_EQ(report, std::string(kInternalError) + "() " + kInternalError + "()");
    // A refused status is not one of the read failures that remove the output.
    EXPECT_TRUE(fs::exists(dir / "in.txt.gz"));
}

}  // namespace
}  // namespace tqtest
