// Real faults, not fakes: a full disk is a tiny tmpfs in a private mount namespace, and a
// folder the process may not write is tried by a child that dropped root.
#include <gtest/gtest.h>

#include <unistd.h>

#include "CreateTestSupport.hpp"

namespace tqtest {
namespace {

// Incompressible input larger than the disk fills it while data is written; the partial
// output is kept. A small input on a disk that is already full fails only when the archive
// is closed, and that final close is deliberately not reported: the call succeeds.
TEST(FullDisk, ReportedByFormatAndPartialOutputKept) {
    if (!canMountTmpfs()) {
        GTEST_SKIP() << "cannot mount a tmpfs in a private mount namespace";
    }
    TempDir dir;
    writeFile(dir / "big.bin", randomBytes(1 << 20));
    writeFile(dir / "small.txt", "small");
    const std::vector<std::string> e = {"entry"};
    // Expected with big.bin, then with small.txt on a full disk.
    const std::vector<std::pair<Call, std::string>> cases = {
        {{"disk/a.zip",
          {},
          e,
          "zip",
          "TESSEL:io:archive:zip:DiskSpaceFull(@/disk/a.zip) disk/a.zip"},
         "ok(entry) disk/a.zip[]"},
        {{"disk/a.tar",
          {},
          e,
          "tar",
          "TESSEL:io:archive:tar:DiskSpaceFull(@/disk/a.tar) disk/a.tar"},
         "ok(entry) disk/a.tar[]"},
        {{"disk/a.tgz",
          {},
          e,
          "tgz",
          "TESSEL:io:archive:tar:DiskSpaceFull(@/disk/a.tgz) disk/a.tgz"},
         "ok(entry) disk/a.tgz[]"},
        {{"disk/a.gz", {}, e, "gz", kInternal + " disk/a.gz"}, "ok(entry) disk/a.gz[]"},
        {{"disk/b.tar.gz", {}, e, "all", kInternal + " disk/b.tar.gz"},
         "ok(entry) disk/b.tar.gz[]"},
        {{"disk", {}, e, "", kInternal + " disk/big.bin.gz"},
         "ok(@/disk/small.txt.gz) disk/small.txt.gz[]"},
    };
    for (const bool atClose : {false, true}) {
        for (auto [call, closed] : cases) {
            call.files = {atClose ? "small.txt" : "big.bin"};
            const std::string report = runInChild(
                [&] {
                    if (atClose) {
                        writeFile(dir / "disk/filler", randomBytes(64 * 1024));
                    }
                    return run(call, dir.path(), dir.path());
                },
                mountTinyTmpfs(dir / "disk", 64 * 1024));
            EXPECT_EQ(report, atClose ? closed : call.expected);
        }
    }
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
    const std::string at = dir.path().string() + "/";
    const std::vector<std::string> in = {"in.txt"}, closed = {"closed/in.txt"}, e = {"e"};
    const std::vector<Call> calls = {
        {"a.zip", in, e, "zip", "TESSEL:io:archive:zip:openError(a.zip)"},
        {at + "a.zip", in, e, "zip", "TESSEL:io:archive:zip:openError(@/a.zip)"},
        {at + "a.tar", in, e, "tar", "TESSEL:io:archive:tar:openError(@/a.tar)"},
        {"a.tgz", in, e, "tgz", "TESSEL:io:archive:tar:openError(a.tgz)"},
        {"a.gz", in, e, "gz", kInternal},
        {"b.zip", in, e, "all", kInternal},
        {"w/c.zip", closed, e, "zip", kInternal + " w/c.zip[]"},  // the input's status is refused
        {"", {at + "in.txt"}, {}, "", "TESSEL:io:archive:gzip:javaOutputOpenError(@/in.txt.gz)"},
        {"", in, {}, "", "TESSEL:io:archive:gzip:javaOutputOpenError(in.txt.gz)"},
        // A refused input status is not one of the read failures that remove the output.
        {"w", closed, {}, "", kInternal + " w/in.txt.gz[]"},
    };
    const std::string report = runInChild(
        [&] {
            std::string text;
            for (const auto& call : calls) {
                text += chdir(dir.path().c_str()) == 0 ? run(call, dir.path(), "") + "\n" : "";
            }
            return text;
        },
        dropPrivileges);
    std::string expected;
    for (const auto& call : calls) {
        expected += call.expected + "\n";
    }
    EXPECT_EQ(report, expected);
}

}  // namespace
}  // namespace tqtest
