#include <gtest/gtest.h>

#include <host/FileSystemError.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

#include "archive/tests/support/TestSupport.hpp"

using namespace tessel::host;
namespace fs = std::filesystem;

// Paths are UTF-16 text, converted to and from the file system's UTF-8.
// Valid text converts both ways unchanged; invalid input loses exactly its bad code units,
// the same way through every entry point.
TEST(TextConversion, ValidTextRoundTripsAndInvalidUnitsAreSkipped) {
    enum Way { Both, ToWide, ToNarrow };
    const std::tuple<std::string, std::u16string, Way> table[] = {
        {"", u"", Both},
        {"café résumé naïve", u"café résumé naïve", Both},
        {"日本語のファイル", u"日本語のファイル", Both},
        {"😀 party 🎉", u"\xD83D\xDE00 party \xD83C\xDF89", Both},  // surrogate pairs
        {"x\xFFy", u"xy", ToWide},                                // never occurs in UTF-8
        {"x\xC0\xAFy", u"xy", ToWide},                            // overlong '/'
        {"x\xED\xA0\x80y", u"xy", ToWide},                        // encoded surrogate
        {"xy\xE6\x97", u"xy", ToWide},                            // truncated sequence
        {"\x80y", u"y", ToWide},                                  // stray continuation byte
        {"\xF4\x90\x80\x80", u"", ToWide},                        // beyond U+10FFFF
        {"xy", u"x\xDC00y", ToNarrow},                            // lone low surrogate
        {"xy", u"xy\xD800", ToNarrow},                            // high surrogate at the end
        {"\xF0\x9F\x98\x80", u"\xDC00\xD83D\xDE00", ToNarrow},    // the pair after it survives
    };
    for (const auto& [narrow, wide, way] : table) {
        EXPECT_TRUE(way == ToNarrow || fromUtf8(narrow) == wide) << narrow;
        EXPECT_TRUE(way == ToNarrow || fromFileSystemText(narrow) == wide) << narrow;
        EXPECT_TRUE(way == ToWide || toUtf8(wide) + toNarrow(wide) == narrow + narrow) << narrow;
    }
}

// Text operations only: nothing is normalised, nothing touches the disk.
TEST(HostPath, SplitsJoinsAndMakesAbsoluteAsText) {
    const auto hp = &HostPath::fromFileSystem;
    // path -> stem, extension, parent, relative, path / "x", path.absolute("/b")
    const std::pair<std::string, std::vector<std::string>> table[] = {
        {"/a/f.txt", {"f", "txt", "/a", "a/f.txt", "/a/f.txt/x", "/a/f.txt"}},
        {"arc.tar.gz", {"arc.tar", "gz", "", "arc.tar.gz", "arc.tar.gz/x", "/b/arc.tar.gz"}},
        {".profile", {".profile", "", "", ".profile", ".profile/x", "/b/.profile"}},
        {"d/a.", {"a", "", "d", "d/a.", "d/a./x", "/b/d/a."}},
        {"d/", {"", "", "d", "d/", "d/x", "/b/d/"}},
        {"/", {"", "", "/", "", "/x", "/"}},
        {"", {"", "", "", "", "x", "/b"}},
        {"a/../c", {"c", "", "a/..", "a/../c", "a/../c/x", "/b/a/../c"}},
        {"/dé/😀.zip", {"😀", "zip", "/dé", "dé/😀.zip", "/dé/😀.zip/x", "/dé/😀.zip"}},
        {"日本/書.7z", {"書", "7z", "日本", "日本/書.7z", "日本/書.7z/x", "/b/日本/書.7z"}},
    };
    for (const auto& [text, parts] : table) {
        const HostPath path = hp(text);
        EXPECT_EQ(
            (std::vector<std::string>{toUtf8(path.stem()), toUtf8(path.extension()),
                                      path.parent().access(), path.relative().access(),
                                      (path / hp("x")).access(), path.absolute(hp("/b")).access()}),
            parts);
        EXPECT_EQ(path.isAbsolute(), text.starts_with("/")) << text;
    }
    // A relative or empty base means the current folder.
    EXPECT_TRUE(hp("x").absolute() == HostPath::currentDirectory() / hp("x") &&
                hp("x").absolute(hp("sub")) == HostPath(fs::current_path()) / hp("sub/x"));
    EXPECT_EQ(hp("a") / hp("/abs"), hp("/abs"));
}

// The kind of file-system error the call raised (2 not found, 1 other, 6 access denied); "0"
// when it returned.
static std::string kindRaised(const std::function<void()>& call) {
    try {
        call();
    } catch (const FileSystemError& error) {
        return std::to_string(error.kind());
    }
    return "0";
}

TEST(HostPath, StatusExistsAndRemoveOnRealFilesAndAccessDeniedForAnUnprivilegedCaller) {
    tqtest::TempDir dir;
    // folder, owner read, owner write, group read, others read
    const auto bitsOf = [](const fs::path& path) {
        const FileStatus s = HostPath(path).status();
        return std::string{"01"[s.isFolder], "01"[s.ownerRead], "01"[s.ownerWrite],
                           "01"[s.groupRead], "01"[s.othersRead]};
    };
    for (const auto& [mode, bits] : std::vector<std::pair<unsigned, std::string>>{
             {0644, "01111"}, {0600, "01100"}, {0440, "01010"}, {0004, "00001"}, {0, "00000"}}) {
        const fs::path file = dir / ("f" + bits), link = dir / ("l" + bits);
        tqtest::writeFile(file, "x");
        fs::permissions(file, fs::perms(mode));
        fs::create_symlink(file, link);
        EXPECT_EQ(bitsOf(file) + " " + bitsOf(link), bits + " " + bits);  // links followed
    }
    fs::create_directories(dir / "sub/inner");
    EXPECT_TRUE(HostPath(dir / "sub").status().isFolder);

    const HostPath file(dir / "données.txt");
    tqtest::writeFile(file.fsPath(), "bytes");
    EXPECT_TRUE(file.exists() && file.remove());
    EXPECT_FALSE(fs::exists(file.fsPath()) || file.exists() || file.remove());
    EXPECT_EQ(kindRaised([&] { file.status(); }), "2");
    fs::create_symlink(dir / "nowhere", dir / "dangling");
    // A dangling link, a file on the way: not found.
    EXPECT_FALSE(HostPath(dir / "dangling").exists() || HostPath(dir / "f01111/x").exists());
    EXPECT_EQ(kindRaised([&] { HostPath(dir / "sub").remove(); }), "1");  // not empty
    EXPECT_TRUE(HostPath(dir / "sub/inner").remove() && HostPath(dir / "sub").remove());

    fs::permissions(dir.path(), fs::perms(0755));
    tqtest::writeFile(dir / "locked/inside", "x");
    fs::permissions(dir / "locked", fs::perms(0700));
    // The kept file lies in a folder only root may change.
    const HostPath inside(dir / "locked/inside"), missing(dir / "locked/no"), kept(dir / "f01111");
    const std::string kinds = tqtest::runInChild(
        [&] {
            return kindRaised([&] { inside.exists(); }) + kindRaised([&] { missing.exists(); }) +
                   kindRaised([&] { inside.status(); }) + kindRaised([&] { kept.remove(); });
        },
        tqtest::dropPrivileges);
    EXPECT_EQ(kinds + (kept.exists() ? ", kept" : ""), "6666, kept");
}
