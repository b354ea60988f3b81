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

struct Encryption {
    const char* label;
    const char* tool;
    const char* encryptCommand;  // adds s.txt to {A}, encrypted with {P}
};

const Encryption kEncryptions[] = {
    {"traditional", "zip", "zip -q -0 -P {P} {A} s.txt"},
    {"aes128", "7z", "7z a -tzip -bd -mem=AES128 -p{P} {A} s.txt"},
    {"aes256", "7z", "7z a -tzip -bd -mem=AES256 -p{P} {A} s.txt"},
};

void PrintTo(const Encryption& e, std::ostream* os) {
    *os << e.label;
}

std::string fill(std::string command, const fs::path& archive) {
    for (auto [token, value] :
         {std::pair<std::string, std::string>{"{A}", archive.string()}, {"{P}", kPassword}}) {
        command.replace(command.find(token), token.size(), value);
    }
    return command;
}

// A wrong password whose verdict from libarchive is (or is not) "Incorrect passphrase":
// with traditional encryption about 1 in 256 wrong passwords pass the header check.
std::string wrongPassword(const fs::path& archive, bool caughtByHeaderCheck) {
    for (int i = 0; i < 100000; ++i) {
        const std::string candidate = "wrong-" + std::to_string(i);
        if ((firstDataError(archive, candidate) == "Incorrect passphrase") == caughtByHeaderCheck) {
            return candidate;
        }
    }
    throw std::runtime_error("no such password");
}

class Passwords : public ::testing::TestWithParam<Encryption> {
  protected:
    void SetUp() override {
        for (const char* tool : {GetParam().tool, "zip"}) {
            if (!toolAvailable(tool)) {
                GTEST_SKIP() << tool << " is not installed";
            }
        }
        writeFile(dir_ / "src/plain.txt", "not secret\n");
        writeFile(dir_ / "src/s.txt", randomBytes(3000, 3));
    }

    // An archive holding s.txt only, or plain.txt (unencrypted) first and then s.txt.
    fs::path makeArchive(bool plainFirst) {
        const fs::path archive = dir_ / (plainFirst ? "mixed.zip" : "secret.zip");
        const std::string cd = "cd " + shellQuote((dir_ / "src").string()) + " && ";
        if (plainFirst) {
            sh(cd + "zip -q " + archive.string() + " plain.txt");
        }
        sh(cd + fill(GetParam().encryptCommand, archive));
        return archive;
    }

    std::optional<RaisedError> probe(const fs::path& archive, const std::string& password) {
        return raisedBy([&] {
            core::sampleReadWithPassword(u16(archive), u16(dir_ / "out"), u"zip", u16(password));
        });
    }
    std::optional<RaisedError> extract(const fs::path& archive, const std::string& password) {
        return raisedBy(
            [&] { core::extractArchive(u16(archive), u16(dir_ / "out"), u"zip", u16(password)); });
    }

    TempDir dir_;
};

}  // namespace

TEST_P(Passwords, RightPasswordProbesAndExtracts) {
    const fs::path archive = makeArchive(false);
    EXPECT_EQ(probe(archive, kPassword), std::nullopt);
    EXPECT_FALSE(fs::exists(dir_ / "out")) << "the probe writes nothing";
    EXPECT_EQ(extract(archive, kPassword), std::nullopt);
    EXPECT_EQ(readFile(dir_ / "out/s.txt"), readFile(dir_ / "src/s.txt"));
}

TEST_P(Passwords, WrongOrMissingPasswordIsReportedAndTheEntryRemoved) {
    const fs::path archive = makeArchive(false);
    const std::string protectedText = tessel::host::toUtf8(
        tessel::host::lookupMessage("TESSEL:io:archive:extractArchive:protectedEntry"));
    const struct {
        std::string password;
        std::string identifier;
        std::vector<std::string> arguments;
    } cases[] = {
        {wrongPassword(archive, true), "TESSEL:io:archive:extractArchive:incorrectPassword", {}},
        {"", "TESSEL:io:archive:extractArchive:unableToWrite", {archive.string(), protectedText}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.password);
        for (const auto& raised : {probe(archive, c.password), extract(archive, c.password)}) {
            ASSERT_TRUE(raised.has_value());
            EXPECT_EQ(raised->identifier, c.identifier);
            EXPECT_EQ(raised->arguments, c.arguments);
        }
        EXPECT_FALSE(fs::exists(dir_ / "out/s.txt")) << "the half-written entry is removed";
    }
}

TEST_P(Passwords, ProbeLooksAtTheFirstEntryOnly) {
    const fs::path archive = makeArchive(true);
    EXPECT_EQ(probe(archive, ""), std::nullopt);
    EXPECT_EQ(probe(archive, "anything"), std::nullopt);

    // Extraction keeps the completed plain entry and removes the encrypted one.
    const auto raised = extract(archive, "");
    ASSERT_TRUE(raised.has_value());
    EXPECT_EQ(raised->identifier, "TESSEL:io:archive:extractArchive:unableToWrite");
    EXPECT_EQ(readFile(dir_ / "out/plain.txt"), "not secret\n");
    EXPECT_FALSE(fs::exists(dir_ / "out/s.txt"));
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
    EXPECT_EQ(raisedBy([&] {
                  core::sampleReadWithPassword(u16(archive), u16(out), u"zip", u16(password));
              }),
              std::nullopt);
    for (const auto& [format, identifier] :
         {std::pair<std::u16string, std::string>{u"zip", "TESSEL:io:archive:unzip:invalidZipFile"},
          {u"all", "TESSEL:io:archive:extractArchive:internalError"}}) {
        const auto raised =
            raisedBy([&] { core::extractArchive(u16(archive), u16(out), format, u16(password)); });
        ASSERT_TRUE(raised.has_value());
        EXPECT_EQ(raised->identifier, identifier);
        EXPECT_FALSE(fs::exists(out / "s.txt"));
    }
}
