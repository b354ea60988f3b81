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

// A label, and the command that adds the file named last to the archive named before it.
using Encryption = std::pair<const char*, const char*>;
class Passwords : public ExtractTest, public ::testing::WithParamInterface<Encryption> {};
using ExtractLog = ExtractTest;

}  // namespace

TEST_P(Passwords, ProbeAndExtractionAgree) {
    const std::string encrypt = GetParam().second;
    const std::string tool = encrypt.substr(0, encrypt.find(" "));
    REQUIRE_TOOLS(tool.c_str(), "zip", "bsdtar");
    writeFile(dir / "plain.txt", "not secret");
    writeFile(dir / "s.txt", "top secret");
    sh(encrypt + " secret.zip s.txt && zip -q mixed.zip plain.txt && " + encrypt +
       " mixed.zip s.txt");
    // The first wrong password that libarchive (through bsdtar) rejects at the header check,
    // or one that passes it (about 1 in 256 with traditional encryption) and decrypts garbage.
    const auto wrong = [&](const std::string& rejected) {
        return runCommand("cd " + shellQuote(dir.string()) +
                          " && for i in $(seq 9999); do bsdtar -xOf secret.zip --passphrase w$i "
                          "2>&1 >/dev/null | grep -q 'Incorrect passphrase'; [ $? = " +
                          rejected + " ] && echo -n w$i && break; done")
            .output;
    };
    const auto denied = [](const std::string& archive) {
        return "!extractArchive:unableToWrite(~/" + archive + ";" +
               tessel::host::toUtf8(
                   tessel::host::lookupMessage("TESSEL:io:archive:extractArchive:protectedEntry")) +
               ")";
    };
    // The probe's outcome and what it left | extraction's outcome | what is left.
    std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {"secret.zip", "Pa55-word", " |  | ~/out/s.txt | s.txt=top secret"},
        {"secret.zip", wrong("0"),
         "!extractArchive:incorrectPassword |  | !extractArchive:incorrectPassword | "},
        {"secret.zip", "", denied("secret.zip") + " |  | " + denied("secret.zip") + " | "},
        // Only the first entry is probed; extraction keeps the completed plain entry.
        {"mixed.zip", "", " |  | " + denied("mixed.zip") + " | plain.txt=not secret"},
    };
    if (GetParam().first == std::string("traditional")) {
        // The garbage fails its CRC, which the one block the probe reads cannot show.
        cases.push_back({"secret.zip", wrong("1"), " |  | !unzip:invalidZipFile(~/secret.zip) | "});
    }
    for (const auto& [archive, password, expected] : cases) {
        fs::remove_all(dir / "out");
        const auto probe = [&] {
            core::sampleReadWithPassword(u16(dir / archive), u16(dir / "out"), u"zip",
                                         u16(password));
            return std::vector<std::u16string>{};
        };
        const std::string probed = outcome(probe, dir / "out");
        EXPECT_EQ(probed + " | " + extract(archive, "out", u"zip", password), expected) << password;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Zip, Passwords,
    ::testing::Values(Encryption{"traditional", "zip -q -0 -P Pa55-word"},
                      Encryption{"aes128", "7z a -tzip -bd -mem=AES128 -pPa55-word"},
                      Encryption{"aes256", "7z a -tzip -bd -mem=AES256 -pPa55-word"}),
    [](const auto& info) { return std::string(info.param.first); });

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
    std::vector<std::string> seen = failing.messages();
    std::erase_if(seen,
                  [&](const auto& m) { return !std::count(expected.begin(), expected.end(), m); });
    EXPECT_EQ(seen, expected);
    EXPECT_FALSE(failing.contains("Password registered")) << "no password, no record";

    LogCapture succeeding;
    core::extractArchive(u"a.zip", u"out", u"zip", u"pw");
    EXPECT_TRUE(
        succeeding.contains("Password registered for reading a password-protected archive."));
    EXPECT_TRUE(succeeding.contains("Reached end of archive-->" + (dir / "a.zip").string()));
}
