// Damaged and foreign input: every case ends in the identifier the extraction tables
// give, never a crash, a hang or a silent success, and no partial file stays behind.
#include <gtest/gtest.h>

#include <functional>
#include <map>

#include <archive/core/archivecore.hpp>

#include "ExtractTestHelpers.hpp"

namespace core = tessel::io::archive::core;
using namespace tqtest;

namespace {

constexpr const char* kBadZip = "TESSEL:io:archive:unzip:invalidZipFile";
constexpr const char* kBadTar = "TESSEL:io:archive:untar:invalidTarFile";
constexpr const char* kInternal = "TESSEL:io:archive:extractArchive:internalError";
constexpr const char* kEmptyList = "";  // accepted as an archive without entries

std::string cut(const std::string& bytes, double fraction) {
    return bytes.substr(0, static_cast<std::size_t>(bytes.size() * fraction));
}
std::string overwrite(std::string bytes, std::size_t at, const std::string& with) {
    bytes.replace(at, with.size(), with);
    return bytes;
}

// The sample archives, made from the same two files with real tools.
struct Samples {
    std::string zip, tar, tgz;
};

struct HostileCase {
    const char* label;
    std::function<std::string(const Samples&)> bytes;
    // Expected identifier per format text: zip, tar, tgz, all.
    const char* expected[4];
};

const HostileCase kCases[] = {
    {"empty_file",
     [](const Samples&) { return std::string(); },
     {kBadZip, kEmptyList, kBadTar, kEmptyList}},
    {"garbage",
     [](const Samples&) { return randomBytes(5000, 9); },
     {kBadZip, kInternal, kBadTar, kInternal}},
    {"zip_truncated",
     [](const Samples& s) { return cut(s.zip, 0.6); },
     {kBadZip, kInternal, kBadTar, kInternal}},
    {"zip_corrupt_data",
     [](const Samples& s) { return overwrite(s.zip, 200, std::string(64, '\xff')); },
     {kBadZip, kInternal, kBadTar, kInternal}},
    {"tar_truncated",
     [](const Samples& s) { return cut(s.tar, 0.6); },
     {kBadZip, kInternal, kInternal, kInternal}},
    // The second header's checksum is broken: the first entry is good, the next is not.
    {"tar_corrupt_second_header",
     [](const Samples& s) { return overwrite(s.tar, 20992 + 148, "zzzzzz"); },
     {kBadZip, kInternal, kInternal, kInternal}},
    // Cut short, the stream cannot fill libarchive's first read-ahead: opening fails.
    {"tgz_truncated",
     [](const Samples& s) { return cut(s.tgz, 0.6); },
     {kBadZip, kInternal, kBadTar, kInternal}},
    // The first deflate block gets the reserved block type.
    {"tgz_corrupt_deflate",
     [](const Samples& s) { return overwrite(s.tgz, 10, std::string(32, '\xff')); },
     {kBadZip, kInternal, kBadTar, kInternal}},
};

const char* const kFormats[] = {"zip", "tar", "tgz", "all"};

}  // namespace

TEST(HostileInput, EachCaseGivesItsIdentifierAndLeavesNoPartialFile) {
    REQUIRE_TOOLS("zip", "tar");
    TempDir dir;
    const std::string big = randomBytes(20000, 4);
    writeFile(dir / "src/f1.bin", big);
    writeFile(dir / "src/f2.txt", "second\n");
    const std::string cd = "cd " + shellQuote((dir / "src").string()) + " && ";
    sh(cd +
       "zip -q ../s.zip f1.bin f2.txt && tar --format=gnu -cf ../s.tar f1.bin f2.txt && "
       "tar czf ../s.tgz f1.bin f2.txt");
    const Samples samples{readFile(dir / "s.zip"), readFile(dir / "s.tar"),
                          readFile(dir / "s.tgz")};

    for (const HostileCase& c : kCases) {
        const fs::path input = dir / (std::string(c.label) + ".bin");
        writeFile(input, c.bytes(samples));
        for (int f = 0; f < 4; ++f) {
            SCOPED_TRACE(std::string(c.label) + " as " + kFormats[f]);
            const fs::path out = dir / "out" / c.label / kFormats[f];
            std::vector<std::u16string> written;
            const auto raised = raisedBy([&] {
                written =
                    core::extractArchive(u16(input), u16(out), u16(std::string(kFormats[f])), u"");
            });
            if (std::string(c.expected[f]).empty()) {
                EXPECT_EQ(raised, std::nullopt);
                EXPECT_TRUE(written.empty());
                continue;
            }
            ASSERT_TRUE(raised.has_value());
            EXPECT_EQ(raised->identifier, c.expected[f]);
            if (raised->identifier == kBadZip || raised->identifier == kBadTar) {
                EXPECT_EQ(raised->arguments, std::vector<std::string>{input.string()});
            }
            // Whatever was written is a complete copy of its source.
            if (fs::exists(out)) {
                for (const auto& item : fs::recursive_directory_iterator(out)) {
                    if (item.is_regular_file()) {
                        EXPECT_EQ(readFile(item.path()),
                                  readFile(dir / "src" / item.path().filename()))
                            << item.path();
                    }
                }
            }
        }
    }
    // The failure came after f1.bin was complete and before the next header was written:
    // that complete file is the current entry and goes too.
    EXPECT_FALSE(fs::exists(dir / "out/tar_corrupt_second_header/tar/f1.bin"));
}
