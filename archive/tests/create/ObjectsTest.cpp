// The creation objects on their own, where the entry points cannot show a behaviour.
#include <gtest/gtest.h>

#include <archive_entry.h>

#include <clocale>
#include <memory>
#include <stdexcept>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/objects/ArchiveCreator.hpp>
#include <archive/core/objects/ArchiveObjectReader.hpp>
#include <archive/core/objects/copyFileContent.hpp>
#include <host/WarningCapture.hpp>

#include "../support/LogCapture.hpp"
#include "../support/TestSupport.hpp"
#include "CreateTestSupport.hpp"

namespace core = tessel::io::archive::core;
using core::ArchiveFormat;
using core::NullArchiveRule;
using tessel::host::HostPath;

namespace tqtest {
namespace {

struct EntryFree {
    void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};
using Entry = std::unique_ptr<archive_entry, EntryFree>;

Entry namedEntry(const char* name) {
    Entry entry(archive_entry_new());
    archive_entry_set_pathname(entry.get(), name);
    return entry;
}

TEST(ArchiveCreatorNames, TarDropsOneTrailingSlash) {
    TempDir dir;
    struct Case {
        ArchiveFormat format;
        const char* file;
    };
    for (const auto& c : {Case{ArchiveFormat::Tar, "a.tar"}, Case{ArchiveFormat::Tgz, "a.tgz"},
                          Case{ArchiveFormat::Zip, "a.zip"}, Case{ArchiveFormat::All, "b.tar"}}) {
        core::ArchiveCreator creator(HostPath(u16(dir / c.file)), c.format);
        for (const char* name : {"docs/", "two//", "plain", "/"}) {
            creator.addEntryName(namedEntry(name).get());
        }
        const bool tar = c.format == ArchiveFormat::Tar || c.format == ArchiveFormat::Tgz;
        const std::vector<std::u16string> tarNames = {u"docs", u"two/", u"plain", u""};
        const std::vector<std::u16string> otherNames = {u"docs/", u"two//", u"plain", u"/"};
        EXPECT_EQ(creator.getEntryNames(), tar ? tarNames : otherNames) << c.file;
    }
}

TEST(CopyFileContent, NegativeChunkSizeIsALengthError) {
    TempDir dir;
    writeFile(dir / "a.txt", "a");
    core::ArchiveCreator creator(HostPath(u16(dir / "a.tar")), ArchiveFormat::Tar);
    auto entry = namedEntry("a.txt");
    archive_entry_copy_sourcepath(entry.get(), (dir / "a.txt").c_str());
    core::CopyBuffer buffer;
    EXPECT_THROW(core::copyFileContent(buffer, creator, entry.get(), -1), std::length_error);
}

// The buffer is reused: its storage stays at the chunk size, and the last read of a file
// is the 0 that ended it.
TEST(CopyFileContent, BufferIsReusedAcrossFiles) {
    TempDir dir;
    writeFile(dir / "exact.bin", randomBytes(16384));
    core::ArchiveCreator creator(HostPath(u16(dir / "a.tar")), ArchiveFormat::Tar);
    core::CopyBuffer buffer;
    for (const char* name : {"exact.bin", "missing.bin"}) {
        auto entry = namedEntry(name);
        archive_entry_copy_sourcepath(entry.get(), (dir / name).c_str());
        archive_entry_set_filetype(entry.get(), AE_IFREG);
        archive_entry_set_size(entry.get(), std::string(name) == "exact.bin" ? 16384 : 0);
        ASSERT_TRUE(creator.writeHeader(entry.get()));
        const char* before = buffer.bytes.data();
        core::copyFileContent(buffer, creator, entry.get(), 16384);
        EXPECT_EQ(buffer.lastRead, 0) << name;
        EXPECT_GE(buffer.bytes.capacity(), 16384u);
        if (before != nullptr) {
            EXPECT_EQ(buffer.bytes.data(), before) << "no new allocation";
        }
    }
}

// A full disk that only shows when the archive is closed: deleteArchiveFile cannot close,
// says so in the log and leaves the file.
TEST(ArchiveCreatorDelete, FailedCloseKeepsTheFile) {
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    TempDir dir;
    const fs::path disk = dir / "disk";
    const std::string report = runInChild(
        [&] {
            LogCapture capture;
            // No byte left: the closing block cannot land. (With a few pages left, the
            // final write would be short, which libarchive does not report.)
            writeFile(disk / "filler", randomBytes(4096 * 4));
            core::ArchiveCreator creator(HostPath(u16(disk / "a.tar")), ArchiveFormat::Tar);
            auto entry = namedEntry("small.txt");
            archive_entry_set_filetype(entry.get(), AE_IFREG);
            archive_entry_set_size(entry.get(), 10);
            creator.writeHeader(entry.get());
            creator.writeData("0123456789", 10);  // stays in libarchive's block buffer
            creator.deleteArchiveFile();
            return std::string(capture.contains("Unable to close archive file for deletion.")
                                   ? "logged"
                                   : "not logged") +
                   (fs::exists(disk / "a.tar") ? " kept" : " removed");
        },
        mountTinyTmpfs(disk, 4096 * 4));
    EXPECT_EQ(report, "logged kept");

    core::ArchiveCreator creator(HostPath(u16(dir / "b.tar")), ArchiveFormat::Tar);
    LogCapture capture;
    creator.deleteArchiveFile();
    EXPECT_FALSE(fs::exists(dir / "b.tar"));
    EXPECT_TRUE(capture.contains("Successfully deleted archive file from disk-->" +
                                 (dir / "b.tar").string()));
}

// The library leaves the locale to its host. Under the plain C locale (a host that never
// called setlocale) non-ASCII names are still stored as their UTF-8 bytes, but the tar
// writer warns "Can't translate pathname" (issued as the neutral openEntryError, the
// entry is kept) and zip entries lose the UTF-8 flag, so readers that trust the flag
// decode them as CP437.
TEST(CLocale, NonAsciiNames) {
    TempDir dir;
    writeFile(dir / "in.txt", "content");
    const std::string report = runInChild([&] {
        std::setlocale(LC_ALL, "C");
        std::string text;
        for (const char* archive : {"a.tar", "a.zip"}) {
            tessel::host::WarningCapture warnings;
            const auto written =
                core::createArchive(u16(dir / archive), {u16(dir / "in.txt")}, {u"é日😀.txt"},
                                    u16(fs::path(archive).extension().string().substr(1)));
            text += std::string(archive) + ":" + utf8(written.at(0)) + ":";
            for (const auto& warning : warnings.warnings()) {
                text += warning.identifier + "(" + warning.arguments.at(0) + ")";
            }
            text += "\n";
        }
        return text;
    });
    EXPECT_EQ(report,
              "a.tar:é日😀.txt:TESSEL:io:archive:createArchive:openEntryError(é日😀.txt)\n"
              "a.zip:é日😀.txt:\n");
    // The bytes of the names are intact for readers that do not rely on the flag.
    EXPECT_EQ(
        runCommand("bsdtar -xOf " + shellQuote((dir / "a.tar").string()) + " 'é日😀.txt'").output,
        "content");
    EXPECT_EQ(runCommand("unzip -Z1 " + shellQuote((dir / "a.zip").string())).output, "é日😀.txt\n");
    const auto zipfileNames = runCommand(
        "python3 -c 'import sys, zipfile; print(zipfile.ZipFile(sys.argv[1]).namelist()[0])' " +
        shellQuote((dir / "a.zip").string()));
    EXPECT_NE(zipfileNames.output, "é日😀.txt\n") << "no UTF-8 flag: decoded as CP437";
}

}  // namespace
}  // namespace tqtest
