#include <gtest/gtest.h>

#include <host/FileSystemError.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

#include "archive/tests/support/TestSupport.hpp"

using namespace tessel::host;
namespace fs = std::filesystem;

// Paths are UTF-16 text, converted to and from the file system's UTF-8. Valid text
// converts both ways unchanged; invalid input loses exactly its bad code units, the same
// way through every entry point.
TEST(TextConversion, ValidTextRoundTripsAndInvalidUnitsAreSkipped) {
    const std::string text = "café résumé 日本語のファイル 😀🎉";
    const std::u16string wide = u"café résumé 日本語のファイル \xD83D\xDE00\xD83C\xDF89";
    EXPECT_EQ(fromUtf8(text) + u"|" + fromFileSystemText(text), wide + u"|" + wide);
    EXPECT_EQ(toUtf8(wide) + "|" + toNarrow(wide), text + "|" + text);
    // A stray continuation byte, a byte never seen in UTF-8, an overlong '/', an encoded
    // surrogate, a code point beyond U+10FFFF, a truncated sequence at the end.
    const std::string badText = "\x80x\xFFy\xC0\xAFz\xED\xA0\x80\xF4\x90\x80\x80w\xE6\x97";
    EXPECT_EQ(fromUtf8(badText) + u"|" + fromFileSystemText(badText), u"xyzw|xyzw");
    // A lone low surrogate (the pair after it survives), a high surrogate at the end.
    const std::u16string badWide = u"x\xDC00\xD83D\xDE00y\xD800";
    EXPECT_EQ(toUtf8(badWide) + "|" + toNarrow(badWide), "x😀y|x😀y");
}

// Text operations only: nothing is normalised, nothing touches the disk.
TEST(HostPath, SplitsJoinsAndMakesAbsoluteAsText) {
    const auto hp = &HostPath::fromFileSystem;
    // path -> stem, extension, parent, relative, path / "x", path.absolute("/b")
    const std::pair<std::string, std::vector<std::string>> table[] = {
        {"arc.tar.gz", {"arc.tar", "gz", "", "arc.tar.gz", "arc.tar.gz/x", "/b/arc.tar.gz"}},
        {".profile", {".profile", "", "", ".profile", ".profile/x", "/b/.profile"}},
        {"d/a.", {"a", "", "d", "d/a.", "d/a./x", "/b/d/a."}},
        {"d/", {"", "", "d", "d/", "d/x", "/b/d/"}},
        {"/", {"", "", "/", "", "/x", "/"}},
        {"", {"", "", "", "", "x", "/b"}},
        {"a/../c", {"c", "", "a/..", "a/../c", "a/../c/x", "/b/a/../c"}},
        {"/dé/😀.zip", {"😀", "zip", "/dé", "dé/😀.zip", "/dé/😀.zip/x", "/dé/😀.zip"}},
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
static std::string kindRaised(const std::function<void()>& call) try {
    call();
    return "0";
} catch (const FileSystemError& error) {
    return std::to_string(error.kind());
}

TEST(HostPath, StatusExistsAndRemoveOnRealFilesAndAccessDeniedForAnUnprivilegedCaller) {
    tqtest::TempDir dir;
    // folder, owner read, owner write, group read, others read; links are followed
    const auto bitsOf = [](const fs::path& path) {
        const FileStatus s = HostPath(path).status();
        return std::string{"01"[s.isFolder], "01"[s.ownerRead], "01"[s.ownerWrite],
                           "01"[s.groupRead], "01"[s.othersRead]};
    };
    for (const auto& [mode, bits] : std::vector<std::pair<unsigned, std::string>>{
             {0644, "01111"}, {0600, "01100"}, {0440, "01010"}, {0004, "00001"}, {0, "00000"}}) {
        tqtest::writeFile(dir / ("f" + bits), "x");
        fs::permissions(dir / ("f" + bits), fs::perms(mode));
        fs::create_symlink(dir / ("f" + bits), dir / ("l" + bits));
        EXPECT_EQ(bitsOf(dir / ("f" + bits)) + bitsOf(dir / ("l" + bits)), bits + bits);
    }
    fs::create_directory(dir / "sub");
    EXPECT_TRUE(HostPath(dir / "sub").status().isFolder && HostPath(dir / "sub").remove());

    const HostPath file(dir / "données.txt");
    tqtest::writeFile(file.fsPath(), "bytes");
    EXPECT_TRUE(file.exists() && file.remove());
    EXPECT_FALSE(fs::exists(file.fsPath()) || file.exists() || file.remove());
    EXPECT_EQ(kindRaised([&] { file.status(); }), "2");
    fs::create_symlink(dir / "nowhere", dir / "dangling");
    // A dangling link, a file on the way: not found.
    EXPECT_FALSE(HostPath(dir / "dangling").exists() || HostPath(dir / "f01111/x").exists());

    fs::permissions(dir.path(), fs::perms(0755));
    tqtest::writeFile(dir / "locked/inside", "x");
    fs::permissions(dir / "locked", fs::perms(0700));
    EXPECT_EQ(kindRaised([&] { HostPath(dir / "locked").remove(); }), "1");  // not empty
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
