// Passwords through the probe and through extraction: right, wrong, missing, and an
// archive whose first entry is not encrypted, for traditional and AES zip encryption.
#include <gtest/gtest.h>

#include <archive/core/archivecore.hpp>
#include <host/HostError.hpp>
#include <host/TextConversion.hpp>

#include "ExtractTestHelpers.hpp"

namespace core = tessel::io::archive::core;
using namespace tqtest;

namespace {

const std::string kPassword = "Pa55-word";
constexpr const char* kIncorrect = "TESSEL:io:archive:extractArchive:incorrectPassword";
constexpr const char* kProtected = "TESSEL:io:archive:extractArchive:unableToWrite";

struct Encryption {
    const char* label;
    const char* tool;
    const char* encrypt;  // adds s.txt to the archive named last, encrypted with kPassword
};
void PrintTo(const Encryption& e, std::ostream* os) {
    *os << e.label;
}

const Encryption kEncryptions[] = {
    {"traditional", "zip", "zip -q -0 -P Pa55-word"},
    {"aes128", "7z", "7z a -tzip -bd -mem=AES128 -pPa55-word"},
    {"aes256", "7z", "7z a -tzip -bd -mem=AES256 -pPa55-word"},
};

// A wrong password whose verdict from libarchive is (or is not) "Incorrect passphrase":
// with traditional encryption about 1 in 256 wrong passwords pass the header check.
std::string wrongPassword(const fs::path& archive, bool caughtByHeaderCheck) {
    for (int i = 0; i < 100000; ++i) {
        const std::string candidate = "wrong-" + std::to_string(i);
        if ((firstDataError(archive, candidate) == "Incorrect passphrase") == caughtByHeaderCheck) {
            return candidate;
        }
    }
    throw std::runtime_error("no wrong password of that kind");
}

std::string identifierOf(const std::function<void()>& call) {
    const auto raised = raisedBy(call);
    return raised ? raised->identifier : "";
}

class Passwords : public ::testing::TestWithParam<Encryption> {};

}  // namespace

TEST_P(Passwords, ProbeAndExtractionAgree) {
    REQUIRE_TOOLS(GetParam().tool, "zip");
    TempDir dir;
    writeFile(dir / "plain.txt", "not secret\n");
    writeFile(dir / "s.txt", randomBytes(3000, 3));
    const std::string cd = "cd " + shellQuote(dir.path().string()) + " && ";
    // secret.zip holds s.txt only; mixed.zip an unencrypted plain.txt first.
    sh(cd + GetParam().encrypt + " secret.zip s.txt && zip -q mixed.zip plain.txt && " +
       GetParam().encrypt + " mixed.zip s.txt");
    const std::string wrong = wrongPassword(dir / "secret.zip", true);

    const struct {
        const char* archive;
        std::string password;
        std::string probe;    // identifier, "" when the probe passes
        std::string extract;  // identifier, "" when extraction succeeds
        bool secretWritten;
    } cases[] = {
        {"secret.zip", kPassword, "", "", true},
        {"secret.zip", wrong, kIncorrect, kIncorrect, false},
        {"secret.zip", "", kProtected, kProtected, false},
        // Only the first entry is probed; extraction keeps the completed plain entry.
        {"mixed.zip", "", "", kProtected, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.archive) + " with '" + c.password + "'");
        const fs::path archive = dir / c.archive;
        const fs::path out = dir / ("out-" + c.password + c.archive);
        EXPECT_EQ(identifierOf([&] {
                      core::sampleReadWithPassword(u16(archive), u16(out), u"zip", u16(c.password));
                  }),
                  c.probe);
        EXPECT_FALSE(fs::exists(out)) << "the probe writes nothing";
        const auto raised = raisedBy(
            [&] { core::extractArchive(u16(archive), u16(out), u"zip", u16(c.password)); });
        EXPECT_EQ(raised ? raised->identifier : "", c.extract);
        if (c.extract == kProtected) {
            EXPECT_EQ(
                raised->arguments,
                (std::vector<std::string>{
                    archive.string(), tessel::host::toUtf8(tessel::host::lookupMessage(
                                          "TESSEL:io:archive:extractArchive:protectedEntry"))}));
        }
        EXPECT_EQ(fs::exists(out / "s.txt"), c.secretWritten) << "a failed entry is removed";
        if (c.secretWritten) {
            EXPECT_EQ(readFile(out / "s.txt"), readFile(dir / "s.txt"));
        }
        EXPECT_EQ(fs::exists(out / "plain.txt"), c.archive == std::string("mixed.zip"));
    }
}

INSTANTIATE_TEST_SUITE_P(Zip, Passwords, ::testing::ValuesIn(kEncryptions),
                         [](const auto& info) { return std::string(info.param.label); });

// A wrong password that gets past traditional encryption's one-byte check decrypts to
// garbage: the data fails its CRC. The probe reads one block and cannot see it; the
// extraction reports a bad zip and leaves no garbage file.
TEST(TraditionalEncryption, WrongPasswordPastTheCheckByteFailsInTheData) {
    REQUIRE_TOOLS("zip");
    TempDir dir;
    writeFile(dir / "s.txt", randomBytes(3000, 3));
    const fs::path archive = dir / "t.zip";
    sh("cd " + shellQuote(dir.path().string()) + " && zip -q -0 -P " + kPassword + " t.zip s.txt");
    const std::string password = wrongPassword(archive, false);
    ASSERT_NE(firstDataError(archive, password).find("CRC"), std::string::npos);

    const fs::path out = dir / "out";
    EXPECT_EQ(identifierOf([&] {
                  core::sampleReadWithPassword(u16(archive), u16(out), u"zip", u16(password));
              }),
              "");
    for (const auto& [format, identifier] :
         {std::pair<std::u16string, std::string>{u"zip", "TESSEL:io:archive:unzip:invalidZipFile"},
          {u"all", "TESSEL:io:archive:extractArchive:internalError"}}) {
        EXPECT_EQ(identifierOf(
                      [&] { core::extractArchive(u16(archive), u16(out), format, u16(password)); }),
                  identifier);
        EXPECT_FALSE(fs::exists(out / "s.txt"));
    }
}
