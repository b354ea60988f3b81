// Damaged and foreign input, read as each format text: every case ends in the identifier
// the translation table gives, never a crash, a hang or a silent success, and whatever
// stays behind is a complete file.
#include "ExtractTest.hpp"

using namespace tqtest;

TEST_F(ExtractTest, HostileInputGivesItsIdentifierAndLeavesOnlyCompleteFiles) {
    REQUIRE_TOOLS("zip", "tar");
    writeFile(dir / "src/f1.bin", randomBytes(20000, 4));
    writeFile(dir / "src/f2.txt", "second\n");
    sh("cd src && zip -q ../s.zip f1.bin f2.txt && tar --format=gnu -cf ../s.tar f1.bin f2.txt && "
       "tar czf ../s.tgz f1.bin f2.txt");
    const std::string zip = readFile(dir / "s.zip"), tar = readFile(dir / "s.tar"),
                      tgz = readFile(dir / "s.tgz");
    const auto overwrite = [](std::string bytes, std::size_t at, const std::string& with) {
        return bytes.replace(at, with.size(), with);
    };
    // Per format text zip, tar, tgz, all: Z invalidZipFile, T invalidTarFile, I internalError,
    // or the number of paths returned.
    const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {"empty_file", "", "Z0T0"},
        {"garbage", randomBytes(5000, 9), "ZITI"},
        {"intact_zip", zip, "22T2"},
        {"intact_tar", tar, "Z222"},
        {"zip_truncated", zip.substr(0, zip.size() * 6 / 10), "ZITI"},
        {"zip_corrupt_data", overwrite(zip, 200, std::string(64, '\xff')), "ZITI"},
        {"tar_truncated", tar.substr(0, tar.size() * 6 / 10), "ZIII"},
        // The second header's checksum is broken: the first entry is good, the next is not.
        {"tar_corrupt_second_header", overwrite(tar, 20992 + 148, "zzzzzz"), "ZIII"},
        // Cut short, the stream cannot fill libarchive's first read-ahead: opening fails.
        {"tgz_truncated", tgz.substr(0, tgz.size() * 6 / 10), "ZITI"},
        // The first deflate block gets the reserved block type.
        {"tgz_corrupt_deflate", overwrite(tgz, 10, std::string(32, '\xff')), "ZITI"},
    };
    for (const auto& [label, bytes, expected] : cases) {
        const fs::path input = dir / label;
        writeFile(input, bytes);
        std::string codes;
        for (const char* format : {"zip", "tar", "tgz", "all"}) {
            std::size_t written = 0;
            const auto raised = raisedBy([&] {
                written = extracting(label, "out/" + label + "/" + format, u16(format))().size();
            });
            const std::string id = raised ? raised->identifier : "";
            codes += !raised                                          ? std::to_string(written)
                     : id == "TESSEL:io:archive:unzip:invalidZipFile" ? "Z"
                     : id == "TESSEL:io:archive:untar:invalidTarFile" ? "T"
                     : id == "TESSEL:io:archive:extractArchive:internalError" ? "I"
                                                                              : id;
            if (codes.back() == 'Z' || codes.back() == 'T') {
                EXPECT_EQ(raised->arguments, std::vector<std::string>{input.string()});
            }
            std::error_code absent;
            for (const auto& item :
                 fs::recursive_directory_iterator(dir / "out" / label / format, absent)) {
                EXPECT_EQ(readFile(item.path()), readFile(dir / "src" / item.path().filename()));
            }
        }
        EXPECT_EQ(codes, expected) << label;
    }
    // The failure came after f1.bin was complete and before the next header was written:
    // that complete file is the current entry and goes too.
    EXPECT_FALSE(fs::exists(dir / "out/tar_corrupt_second_header/tar/f1.bin"));
}
