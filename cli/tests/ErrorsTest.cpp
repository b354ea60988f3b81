// Exit statuses and identified messages for bad input and unwritable output.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

namespace {

struct FailingRun {
    std::string args;
    std::string identifier;
};

}  // namespace

// Run as nobody, as CI runs as root: "locked" is root's and 0755, "work" is writable. Every
// error names what to fix; none is the internal error, and nothing is written.
TEST(BadInput, ExitStatus1AnIdentifiedErrorAndNothingWritten) {
    TempDir dir;
    sh(dir.path(),
       "mkdir a b locked work && echo text | tee a/x.txt b/x.txt > plain.txt && " + program() +
           " zip -q s.zip plain.txt --password right && gzip -c plain.txt > noext && "
           "tar -czf t.tgz a b plain.txt && head -c 100 t.tgz > trunc.tgz && chmod 777 work "
           "&& chmod -R o+rX .");
    // One flipped byte inside the stored data of a tgz: only the gzip trailer tells.
    writeFile(dir / "r.bin", randomBytes(100000));
    sh(dir.path(), "tar -czf flipped.tgz r.bin && chmod o+r flipped.tgz");
    std::string flipped = readFile(dir / "flipped.tgz");
    flipped[60000] = static_cast<char>(flipped[60000] ^ 0xff);
    writeFile(dir / "flipped.tgz", flipped);
    const std::string nobody = "setpriv --reuid=65534 --regid=65534 --clear-groups";
    if (!toolAvailable("setpriv") || tqarchive(dir.path(), "--version", nobody).status != 0) {
        GTEST_SKIP() << "setpriv is missing or the built program cannot be run as nobody";
    }
    const std::string archive = "TESSEL:io:archive:";
    const FailingRun runs[] = {
        {"unzip ../missing.zip", "tqarchive:archiveNotFound"},
        {"unzip ../plain.txt", archive + "unzip:invalidZipFile"},
        {"untar ../plain.txt", archive + "untar:invalidTarFile"},
        {"untar ../trunc.tgz -d out", archive + "untar:invalidTarFile"},
        {"untar ../flipped.tgz -d out", archive + "untar:invalidTarFile"},
        {"unzip ../s.zip --password wrong", archive + "extractArchive:incorrectPassword"},
        {"unzip ../s.zip", archive + "extractArchive:unableToWrite"},
        {"zip a.zip missing.txt -C ..", "tqarchive:inputNotFound"},
        {"zip a.zip ../plain.txt", "tqarchive:inputOutsideRoot"},
        {"tar a.tgz x -C ../nowhere", "tqarchive:rootFolder"},
        {"tar backup a -C ..", "tqarchive:unknownTarType"},
        {"zip ../a plain.txt -C ..", "tqarchive:archiveIsFolder"},
        {"tar backup.zip a -C ..", "tqarchive:unknownTarType"},
        {"gunzip ../plain.txt -d .", archive + "gunzip:notGzipFormat"},
        {"gunzip ../noext", "tqarchive:gunzipOutputIsInput"},
        {"gzip ../a/x.txt ../b/x.txt -d out", "tqarchive:duplicateOutput"},
        {"zip a.zip plain.txt -C .. --password p --encryption rot13",
         archive + "createArchive:invalidEncryptionInLinux"},
        {"zip a.zip plain.txt -C .. --password ''", archive + "createArchive:emptyPassword"},
        {"zip a.zip plain.txt -C .. --password-file ../none", "tqarchive:passwordFile"},
        {"zip ../locked/a.zip plain.txt -C ..", archive + "zip:openError"},
        {"tar ../locked/a.tar.xz plain.txt -C ..", archive + "tar:openError"},
        {"gzip ../plain.txt -d ../locked", archive + "gzip:javaOutputOpenError"},
        {"gzip ../plain.txt -d ../locked/sub", "tqarchive:outputFolder"}};
    for (const FailingRun& failing : runs) {
        const auto run = tqarchive(dir / "work", failing.args, nobody);
        EXPECT_TRUE(run.status == 1 && run.output.empty() && run.err.starts_with("Error: ") &&
                    reports(run, failing.identifier))
            << failing.args << " -> " << run.status << ": " << run.output << run.err;
    }
    EXPECT_EQ(sh(dir.path(), "ls -A work locked; gzip -dc noext"), "locked:\n\nwork:\ntext\n");
}
