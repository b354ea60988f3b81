#include <gtest/gtest.h>

#include <host/FileSystemError.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

#include "archive/tests/support/TestSupport.hpp"

using namespace tessel::host;
namespace fs = std::filesystem;

// Paths are UTF-16 text; file names are bytes. Valid UTF-8 converts both ways unchanged,
// and any other byte survives the round trip as an escaped byte (U+DC80-U+DCFF).
TEST(TextConversion, EveryByteSequenceRoundTripsAndInvalidBytesAreEscaped) {
    const std::string text = "café résumé 日本語のファイル 😀🎉";
    const std::u16string wide = u"café résumé 日本語のファイル \xD83D\xDE00\xD83C\xDF89";
    EXPECT_EQ(fromUtf8(text) + u"|" + fromFileSystemText(text), wide + u"|" + wide);
    EXPECT_EQ(toUtf8(wide) + "|" + toNarrow(wide), text + "|" + text);
    // A stray continuation byte, a byte never seen in UTF-8, an overlong '/', an encoded
    // surrogate, a code point beyond U+10FFFF, a truncated sequence at the end: each byte
    // of them is escaped on its own, and the text after it is kept.
    const std::string badText = "\x80x\xFFy\xC0\xAFz\xED\xA0\x80\xF4\x90\x80\x80w\xE6\x97";
    const std::u16string escaped =
        u"\xDC80x\xDCFFy\xDCC0\xDCAFz\xDCED\xDCA0\xDC80\xDCF4\xDC90\xDC80\xDC80w\xDCE6\xDC97";
    EXPECT_EQ(fromUtf8(badText), escaped);
    EXPECT_EQ(toUtf8(escaped), badText);
    // Latin-1 and CP437 names as a legacy system writes them.
    for (const std::string name : {"\xE9t\xE9.txt", "caf\x82.txt", "caf\x81.txt"}) {
        EXPECT_EQ(toUtf8(fromFileSystemText(name)), name);
    }
    // A lone surrogate that escapes no byte cannot become a name: it turns into U+FFFD.
    EXPECT_EQ(toUtf8(u"x\xDC00\xD83D\xDE00y\xD800"), "x\uFFFD😀y\uFFFD");
}

// Text for people: nothing that drives a terminal or splits a line gets through as is.
TEST(TextConversion, DisplayTextEscapesControlsBackslashesAndForeignBytes) {
    const std::pair<std::u16string, std::string> rows[] = {
        {u"plain café 😀", "plain café 😀"},
        {u"a\x1B[31mred\a\b.txt", "a\\033[31mred\\a\\b.txt"},
        {u"line\nbreak\r\ttab", "line\\nbreak\\r\\ttab"},
        {u"back\\slash", "back\\\\slash"},
        {u"caf\xDC82.txt", "caf\\202.txt"},
        {u"c1\x9B", "c1\\302\\233"},
        {u"lone\xD800", "lone\\uD800"},
    };
    for (const auto& [text, shown] : rows) {
        EXPECT_EQ(toDisplayText(text), shown);
        EXPECT_EQ(toDisplayText(toUtf8(text)),
                  text.find(u'\xD800') == std::u16string::npos ? shown : "lone\uFFFD");
    }
}

// A path text that would name another file than written is refused, naming the argument.
TEST(TextConversion, PathTextWithNulOrLoneSurrogateIsRefused) {
    using namespace std::string_literals;
    const std::tuple<std::u16string, std::string, std::size_t> rows[] = {
        {u"d/keep.txt\0.zip"s, "TESSEL:host:pathHasNulCharacter", 10},
        {u"d/keep\xD800X.zip", "TESSEL:host:pathHasLoneSurrogate", 6},
        {u"o\xDBFFut", "TESSEL:host:pathHasLoneSurrogate", 1},
        {u"\xDC00low", "TESSEL:host:pathHasLoneSurrogate", 0},
    };
    for (const auto& [text, identifier, position] : rows) {
        EXPECT_EQ(findPathTextFault(text)->position, position);
        const auto raised =
            tqtest::raisedBy([&text = text] { (void)HostPath::fromText(text, "archivePath"); });
        ASSERT_TRUE(raised.has_value());
        EXPECT_EQ(raised->identifier, identifier);
        EXPECT_EQ(raised->arguments.front(), "archivePath");
    }
    // Escaped bytes and surrogate pairs are names like any other.
    EXPECT_FALSE(findPathTextFault(u"caf\xDC82/\xD83D\xDE00.txt").has_value());
    EXPECT_EQ(HostPath::fromText(u"caf\xDC82.txt").access(), "caf\x82.txt");
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
