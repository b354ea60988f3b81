// Real faults, not fakes: a full disk is a tiny tmpfs in a private mount namespace, and a
// folder the process may not write is tried by a child that dropped root.
#include <gtest/gtest.h>

#include <unistd.h>

#include <archive/core/archivecore.hpp>
#include <archive/core/objects/ArchiveCreator.hpp>

#include "../support/LogCapture.hpp"
#include "../support/TestSupport.hpp"
#include "CreateTestSupport.hpp"

namespace tqtest {
namespace {

namespace core = tessel::io::archive::core;

// One call: createArchive with the format, or compressgz into the folder when the format
// is empty.
std::string call(const fs::path& target, const std::u16string& format, const fs::path& input) {
    return outcome([&] {
        if (format.empty()) {
            core::compressgz({u16(input)}, u16(target));
        } else {
            core::createArchive(u16(target), {u16(input)}, {u"entry"}, format);
        }
    });
}

// Incompressible input larger than the disk fills it while data is written. A small input
// on a disk that is already full fails only when the archive is closed, and that final
// close is deliberately not reported: the call succeeds and the file stays.
TEST(FullDisk, ReportedByFormatAndPartialOutputKept) {
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    TempDir dir;
    writeFile(dir / "big.bin", randomBytes(1 << 20));
    writeFile(dir / "small.txt", "small");
    const fs::path disk = dir / "disk";
    const std::string internal = std::string(kInternalError) + "()";
    const std::vector<std::tuple<const char*, const char16_t*, std::string>> cases = {
        {"a.zip", u"zip", "TESSEL:io:archive:zip:DiskSpaceFull(" + (disk / "a.zip").string() + ")"},
        {"a.tar", u"tar", "TESSEL:io:archive:tar:DiskSpaceFull(" + (disk / "a.tar").string() + ")"},
        {"a.tgz", u"tgz", "TESSEL:io:archive:tar:DiskSpaceFull(" + (disk / "a.tgz").string() + ")"},
        {"a.gz", u"gz", internal},
        {"b.tar.gz", u"all", internal},
        {"", u"", internal},  // compressgz
    };
    for (const bool atClose : {false, true}) {
        for (const auto& [archive, format, expected] : cases) {
            const fs::path target = disk / archive;
            const fs::path output =
                *archive ? target : disk / (atClose ? "small.txt.gz" : "big.bin.gz");
            const std::string report = runInChild(
                [&] {
                    if (atClose) {
                        writeFile(disk / "filler", randomBytes(64 * 1024));
                    }
                    const std::string error =
                        call(target, format, dir / (atClose ? "small.txt" : "big.bin"));
                    return error + (fs::exists(output) ? " kept" : " removed");
                },
                mountTinyTmpfs(disk, 64 * 1024));
            EXPECT_EQ(report, (atClose ? std::string("no error") : expected) + " kept")
                << archive << (atClose ? " at close" : "");
        }
    }
}

// deleteArchiveFile when the closing block cannot land: logged, the file stays.
TEST(FullDisk, DeleteAfterAFailedClose) {
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    TempDir dir;
    const fs::path disk = dir / "disk";
    const std::string report = runInChild(
        [&] {
            LogCapture capture;
            core::ArchiveCreator creator(tessel::host::HostPath(u16(disk / "a.tar")),
                                         core::ArchiveFormat::Tar);
            // No byte left. (With a few left, the final write would be short, and libarchive
            // does not report a short final write.)
            writeFile(disk / "filler", randomBytes(16384));
            creator.deleteArchiveFile();
            return std::string(capture.contains("Unable to close archive file for deletion.")
                                   ? "logged"
                                   : "silent") +
                   (fs::exists(disk / "a.tar") ? " kept" : " removed");
        },
        mountTinyTmpfs(disk, 16384));
    EXPECT_EQ(report, "logged kept");
}

// The archive path in the errors is the caller's, relative when it was relative.
TEST(AccessDenied, FoldersNobodyMayWriteOrEnter) {
    TempDir dir;
    fs::permissions(dir.path(), fs::perms(0755));
    writeFile(dir / "in.txt", "in");
    writeFile(dir / "closed/in.txt", "in");
    fs::permissions(dir / "closed", fs::perms(0700));
    fs::create_directories(dir / "w");
    fs::permissions(dir / "w", fs::perms(0777));
    const fs::path in = dir / "in.txt";
    const std::string internal = std::string(kInternalError) + "()";
    const std::vector<std::tuple<fs::path, const char16_t*, fs::path, std::string>> cases = {
        {"a.zip", u"zip", in, "TESSEL:io:archive:zip:openError(a.zip)"},
        {dir / "a.zip", u"zip", in,
         "TESSEL:io:archive:zip:openError(" + (dir / "a.zip").string() + ")"},
        {dir / "a.tar", u"tar", in,
         "TESSEL:io:archive:tar:openError(" + (dir / "a.tar").string() + ")"},
        {"a.tgz", u"tgz", in, "TESSEL:io:archive:tar:openError(a.tgz)"},
        {"a.gz", u"gz", in, internal},
        {dir / "b.zip", u"all", in, internal},
        {dir / "w/c.zip", u"zip", dir / "closed/in.txt", internal},  // input status refused
        {"", u"", in,
         "TESSEL:io:archive:gzip:javaOutputOpenError(" + (dir / "in.txt.gz").string() + ")"},
        {dir / "w", u"", dir / "closed/in.txt", internal},
    };
    const std::string report = runInChild(
        [&] {
            std::string text;
            for (const auto& [target, format, input, expected] : cases) {
                text += (chdir(dir.path().c_str()) == 0 ? call(target, format, input)
                                                        : "chdir failed") +
                        "\n";
            }
            return text;
        },
        dropPrivileges);
    std::string expected;
    for (const auto& c : cases) {
        expected += std::get<3>(c) + "\n";
    }
    EXPECT_EQ(report, expected);
    // A refused input status is not one of the read failures that remove the output.
    EXPECT_TRUE(fs::exists(dir / "w/in.txt.gz"));
}

}  // namespace
}  // namespace tqtest
