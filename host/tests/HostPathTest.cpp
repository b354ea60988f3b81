#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <host/FileSystemError.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

#include "HostTestSupport.hpp"

using namespace tessel::host;
using hosttest::TempFolder;
namespace fs = std::filesystem;

namespace {

HostPath hp(const std::string& utf8) {
    return HostPath(fromUtf8(utf8));
}

TEST(HostPath, SplitsLikeTheFileSystem) {
    struct Parts {
        std::string path, stem, extension, parent, relative;
    };
    const Parts table[] = {
        {"/a/b/file.txt", "file", "txt", "/a/b", "a/b/file.txt"},
        {"archive.tar.gz", "archive.tar", "gz", "", "archive.tar.gz"},
        {"notes", "notes", "", "", "notes"},
        {".profile", ".profile", "", "", ".profile"},
        {"dir/a.", "a", "", "dir", "dir/a."},
        {"dir/", "", "", "dir", "dir/"},
        {"/", "", "", "/", ""},
        {"", "", "", "", ""},
        {"/données/été.zip", "été", "zip", "/données", "données/été.zip"},
        {"日本/書類.7z", "書類", "7z", "日本", "日本/書類.7z"},
    };
    for (const Parts& p : table) {
        const HostPath path = hp(p.path);
        EXPECT_EQ(toUtf8(path.stem()), p.stem) << p.path;
        EXPECT_EQ(toUtf8(path.extension()), p.extension) << p.path;
        EXPECT_EQ(path.parent(), hp(p.parent)) << p.path;
        EXPECT_EQ(path.relative(), hp(p.relative)) << p.path;
        EXPECT_EQ(path.access(), p.path);
        EXPECT_EQ(path.fsPath(), fs::path(p.path));
        EXPECT_EQ(path.generic(), fromUtf8(p.path));
        EXPECT_EQ(path.nativeForm(), path);
        EXPECT_EQ(path.isAbsolute(), p.path.starts_with("/")) << p.path;
    }
    EXPECT_EQ(HostPath::fromFileSystem("/tmp/caf\xC3\xA9").native(), u"/tmp/café");
}

TEST(HostPath, ConcatenatesAndMakesAbsoluteWithoutNormalising) {
    const std::tuple<std::string, std::string, std::string> joins[] = {
        {"a", "b", "a/b"},     {"", "b", "b"},          {"a/", "b", "a/b"},
        {"a", "/abs", "/abs"}, {"/x", "y/z", "/x/y/z"}, {"été", "😀.gz", "été/😀.gz"},
    };
    for (const auto& [left, right, joined] : joins) {
        EXPECT_EQ(hp(left) / hp(right), hp(joined)) << left << " / " << right;
    }
    const HostPath cwd = HostPath::currentDirectory();
    EXPECT_EQ(cwd, HostPath(fs::current_path()));
    EXPECT_EQ(hp("rel/x").absolute(), cwd / hp("rel/x"));
    EXPECT_EQ(hp("a/../b").absolute(hp("/base")), hp("/base/a/../b"));
    EXPECT_EQ(hp("/abs/./y").absolute(hp("/base")), hp("/abs/./y"));
    EXPECT_EQ(hp("x").absolute(hp("sub")), cwd / hp("sub/x"));
    EXPECT_EQ(HostPath().absolute(hp("/base")), hp("/base"));
}

int kindRaised(const std::function<void()>& call) {
    try {
        call();
    } catch (const FileSystemError& error) {
        return error.kind();
    }
    return 0;
}

TEST(HostPath, StatusFollowsLinksAndReportsPermissionBits) {
    TempFolder dir;
    // mode -> owner-read, owner-write, group-read, others-read
    const std::pair<unsigned, std::string> modes[] = {
        {0644, "1111"}, {0600, "1100"}, {0440, "1010"}, {0004, "0001"}, {0000, "0000"}};
    for (const auto& [mode, bits] : modes) {
        const fs::path file = dir / ("f" + std::to_string(mode));
        hosttest::writeFile(file, "x");
        ASSERT_EQ(chmod(file.c_str(), mode), 0);
        fs::create_symlink(file, file.string() + ".link");
        for (const fs::path& path : {file, fs::path(file.string() + ".link")}) {
            const FileStatus s = HostPath(path).status();
            const std::string seen{"01"[s.ownerRead], "01"[s.ownerWrite], "01"[s.groupRead],
                                   "01"[s.othersRead]};
            EXPECT_EQ(seen, bits) << path;
            EXPECT_FALSE(s.isFolder);
        }
    }
    fs::create_directory(dir / "sub");
    fs::create_directory_symlink(dir / "sub", dir / "sublink");
    EXPECT_TRUE(HostPath(dir / "sub").status().isFolder);
    EXPECT_TRUE(HostPath(dir / "sublink").status().isFolder);
}

TEST(HostPath, ExistsAndRemoveOnRealFiles) {
    TempFolder dir;
    const HostPath file(dir / "données.txt");
    hosttest::writeFile(file.fsPath(), "bytes");
    EXPECT_TRUE(file.exists());
    EXPECT_TRUE(file.remove());
    EXPECT_FALSE(fs::exists(dir / "données.txt"));
    EXPECT_FALSE(file.exists());
    EXPECT_FALSE(file.remove());
    EXPECT_EQ(kindRaised([&] { file.status(); }), FileSystemError::NotFound);
    hosttest::writeFile(dir / "plain", "x");
    EXPECT_FALSE(HostPath(dir / "plain/below").exists());  // a file on the way: not found
    fs::create_symlink(dir / "nowhere", dir / "dangling");
    EXPECT_FALSE(HostPath(dir / "dangling").exists());

    fs::create_directories(dir / "full/inner");
    EXPECT_EQ(kindRaised([&] { HostPath(dir / "full").remove(); }), FileSystemError::Other);
    EXPECT_TRUE(fs::exists(dir / "full/inner"));
    EXPECT_TRUE(HostPath(dir / "full/inner").remove());
    EXPECT_TRUE(HostPath(dir / "full").remove());
}

TEST(HostPath, AccessDeniedIsKindSix) {
    TempFolder dir;
    fs::create_directory(dir / "locked");
    hosttest::writeFile(dir / "locked/inside", "x");
    fs::permissions(dir / "locked", fs::perms(0700));
    hosttest::writeFile(dir / "kept", "x");  // in a folder only root may change

    const hosttest::ChildResult child = hosttest::runChild([&] {
        if (setgid(65534) != 0 || setuid(65534) != 0) {
            return 3;
        }
        for (const auto& call :
             std::vector<std::function<void()>>{[&] { HostPath(dir / "locked/inside").exists(); },
                                                [&] { HostPath(dir / "locked/missing").exists(); },
                                                [&] { HostPath(dir / "locked/inside").status(); },
                                                [&] { HostPath(dir / "kept").remove(); }}) {
            std::printf("%d ", kindRaised(call));
        }
        return 0;
    });
    EXPECT_EQ(child.status, 0);
    EXPECT_EQ(child.output, "6 6 6 6 ");
    EXPECT_TRUE(fs::exists(dir / "kept"));
}

}  // namespace
