// Passwords through the probe and through extraction: right, wrong, missing, and an
// archive whose first entry is not encrypted, for traditional and AES zip encryption; and
// the log records of an entry that fails for want of a password.
#include <archive/core/archivecore.hpp>
#include <host/HostError.hpp>
#include <host/TextConversion.hpp>

#include "../support/LogCapture.hpp"
#include "ExtractTest.hpp"

namespace core = tessel::io::archive::core;
using namespace tqtest;

namespace {

struct Encryption {
    const char* label;
    const char* tool;
    const char* encrypt;  // adds the file named last to the archive named before it
};

const Encryption kEncryptions[] = {
    {"traditional", "zip", "zip -q -0 -P Pa55-word"},
    {"aes128", "7z", "7z a -tzip -bd -mem=AES128 -pPa55-word"},
    {"aes256", "7z", "7z a -tzip -bd -mem=AES256 -pPa55-word"},
};

class Passwords : public ExtractTest, public ::testing::WithParamInterface<Encryption> {
  protected:
    // The first wrong password that libarchive (through bsdtar) rejects at the header check,
    // or that gets past it: with traditional encryption about 1 in 256 do, and decrypt to
    // garbage.
    std::string wrongPassword(bool rejected) const {
        return runCommand("cd " + shellQuote(dir.string()) +
                          " && for i in $(seq 0 9999); do bsdtar -xOf secret.zip --passphrase "
                          "wrong-$i 2>&1 >/dev/null | grep -q 'Incorrect passphrase'; [ $? = " +
                          (rejected ? "0" : "1") + " ] && echo -n wrong-$i && break; done")
            .output;
    }
};

using ExtractLog = ExtractTest;

}  // namespace

TEST_P(Passwords, ProbeAndExtractionAgree) {
    REQUIRE_TOOLS(GetParam().tool, "zip", "bsdtar");
    writeFile(dir / "plain.txt", "not secret");
    writeFile(dir / "s.txt", "top secret");
    const std::string encrypt = GetParam().encrypt;
    sh(encrypt + " secret.zip s.txt && zip -q mixed.zip plain.txt && " + encrypt +
       " mixed.zip s.txt");
    const auto denied = [](const std::string& archive) {
        return "!extractArchive:unableToWrite(~/" + archive + ";" +
               tessel::host::toUtf8(
                   tessel::host::lookupMessage("TESSEL:io:archive:extractArchive:protectedEntry")) +
               ")";
    };
    // The probe's outcome and what it wrote | extraction's outcome | what is left.
    std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {"secret.zip", "Pa55-word", " |  | ~/out/s.txt | s.txt=top secret"},
        {"secret.zip", wrongPassword(true),
         "!extractArchive:incorrectPassword |  | !extractArchive:incorrectPassword | "},
        {"secret.zip", "", denied("secret.zip") + " |  | " + denied("secret.zip") + " | "},
        // Only the first entry is probed; extraction keeps the completed plain entry.
        {"mixed.zip", "", " |  | " + denied("mixed.zip") + " | plain.txt=not secret"},
    };
    if (GetParam().label == std::string("traditional")) {
        // Past the check byte the garbage fails its CRC, which one probed block cannot see.
        cases.push_back(
            {"secret.zip", wrongPassword(false), " |  | !unzip:invalidZipFile(~/secret.zip) | "});
    }
    for (const auto& [archive, password, expected] : cases) {
        fs::remove_all(dir / "out");
        const std::string probe = outcome(
            [&] {
                core::sampleReadWithPassword(u16(dir / archive), u16(dir / "out"), u"zip",
                                             u16(password));
                return std::vector<std::u16string>{};
            },
            dir / "out");
        EXPECT_EQ(probe + " | " + extract(archive, "out", u"zip", password), expected) << password;
    }
}

INSTANTIATE_TEST_SUITE_P(Zip, Passwords, ::testing::ValuesIn(kEncryptions),
                         [](const auto& info) { return std::string(info.param.label); });

TEST_F(ExtractLog, RecordsOfAnEntryFailingForWantOfAPassword) {
    REQUIRE_TOOLS("zip");
    writeFile(dir / "a.txt", "A");
    sh("zip -q -P pw a.zip a.txt");
    const auto here = enter(dir);
    LogCapture failing;
    EXPECT_TRUE(raisedBy([] { core::extractArchive(u"a.zip", u"out", u"zip", u""); }));
    const std::vector<std::string> expected = {
        "Opened source archive file on disk for reading-->" + (dir / "a.zip").string(),
        "Opened entry file to read from source archive-->a.txt",
        "Archive entry output path-->out/a.txt",
        "Wrote extracted entry file to disk-->out/a.txt",
        "[LIBARCHIVE_MESSAGE]: Passphrase required for this entry",
        "Successfully deleted file from disk-->out/a.txt",
    };
    std::vector<std::string> seen;  // the expected records, and any password record
    for (const std::string& message : failing.messages()) {
        if (std::count(expected.begin(), expected.end(), message) ||
            message.starts_with("Password")) {
            seen.push_back(message);
        }
    }
    EXPECT_EQ(seen, expected);

    LogCapture succeeding;
    core::extractArchive(u"a.zip", u"out", u"zip", u"pw");
    EXPECT_TRUE(
        succeeding.contains("Password registered for reading a password-protected archive."));
    EXPECT_TRUE(succeeding.contains("Reached end of archive-->" + (dir / "a.zip").string()));
}
