// The safe modes, as root and as an unprivileged user: one tar (Python's tarfile) per kind
// of entry, extracted with safe(), with safe() keeping full modes and with extractArchive.
// Each cell is what is on disk afterwards (ls's type letter and the mode, or the link) and
// what was said.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

// " owner N" follows when the owner is not the user who extracted.
std::string onDisk(const fs::path& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        return "none";
    }
    const mode_t mode = status.st_mode;
    char text[16];
    std::snprintf(text, sizeof text, "%c%04o",
                  S_ISBLK(mode)    ? 'b'
                  : S_ISCHR(mode)  ? 'c'
                  : S_ISFIFO(mode) ? 'p'
                                   : '-',
                  mode & 07777);
    return (S_ISLNK(status.st_mode) ? "l->" + fs::read_symlink(path).string() : text) +
           (status.st_uid == ::geteuid() ? "" : " owner " + std::to_string(status.st_uid));
}

struct Kind {
    std::string entry, member;           // the tar's name (entry.tar) and its one member, in Python
    std::string safe, fullModes, plain;  // as root
    std::string fullModesAsNobody = "", plainAsNobody = "";  // where different
};

std::string expectedLines(const std::vector<Kind>& kinds, bool asRoot) {
    std::string text;
    for (const Kind& kind : kinds) {
        text +=
            kind.entry + ": " + kind.safe + "; " +
            (asRoot || kind.fullModesAsNobody.empty() ? kind.fullModes : kind.fullModesAsNobody) +
            "; " + (asRoot || kind.plainAsNobody.empty() ? kind.plain : kind.plainAsNobody) + "\n";
    }
    return text;
}

std::string extractAll(const std::vector<Kind>& kinds, const fs::path& dir) {
    core::ExtractOptions fullModes = core::ExtractOptions::safe();
    fullModes.restrictPermissions = false;
    const std::pair<std::string, std::optional<core::ExtractOptions>> sets[] = {
        {"safe", core::ExtractOptions::safe()}, {"full", fullModes}, {"plain", std::nullopt}};
    std::string text;
    for (const Kind& kind : kinds) {
        const std::u16string archive = u16(dir / (kind.entry + ".tar"));
        std::vector<std::string> cells;
        for (const auto& [set, chosen] : sets) {
            const std::optional<core::ExtractOptions>& options = chosen;  // for the lambda
            const std::u16string out = u16(dir / set / kind.entry);
            std::string said = outcome(
                [&] {
                    return options ? core::extractArchiveWithOptions(archive, out, u"tar", *options)
                                         .written
                                   : core::extractArchive(archive, out, u"tar", u"");
                },
                dir);
            said.erase(0, std::min(said.find_first_of("?!"), said.size()));  // paths: on disk
            cells.push_back(onDisk(dir / set / kind.entry / kind.entry) +
                            (said.empty() ? "" : " " + said));
        }
        text += kind.entry + ": " + cells[0] + "; " + cells[1] + "; " + cells[2] + "\n";
    }
    return text;
}

TEST(SafeModes, DevicesSetIdBitsOpenModesAndLinksPointingOut) {
    REQUIRE_TOOLS("python3");
    const auto skipped = [](const std::string& entry) {
        return "none ?extractArchive:specialFileSkipped(" + entry + ")";
    };
    const auto pointsOut = [](const std::string& link, const std::string& target) {
        return "none ?extractArchive:outwardLinkSkipped(" + link + ";" + target + ")";
    };
    // Without the privilege to make a device, the writer refuses its header.
    const auto refused = [](const std::string& entry) {
        return "none ?createArchive:openEntryError(~/plain/" + entry + "/" + entry + ")";
    };
    const std::string setUid = "-6755", restricted = "-0755";
    const std::vector<Kind> kinds = {
        {"disk", "node('disk', tarfile.BLKTYPE, 8, 0)", skipped("disk"), skipped("disk"), "b0666",
         "", refused("disk")},
        {"null", "node('null', tarfile.CHRTYPE, 1, 3)", skipped("null"), skipped("null"), "c0666",
         "", refused("null")},
        {"fifo", "node('fifo', tarfile.FIFOTYPE)", skipped("fifo"), skipped("fifo"), "p0666"},
        // Root's in the archive: set-user-ID root when restored as it stands (by root only).
        {"suid.sh", "reg('suid.sh', b'#!/bin/sh\\n', 0o6755, owner=0)", restricted, setUid, setUid,
         restricted, restricted},
        {"ww.txt", "reg('ww.txt', b'w', 0o1777)", restricted, "-1777", "-1777"},
        {"cfg", "sym('cfg', '/etc/shadow')", pointsOut("cfg", "/etc/shadow"),
         pointsOut("cfg", "/etc/shadow"), "l->/etc/shadow"},
        {"up", "sym('up', '../../..')", pointsOut("up", "../../.."), pointsOut("up", "../../.."),
         "l->../../.."},
        {"in", "sym('in', 'x.txt')", "l->x.txt", "l->x.txt", "l->x.txt"},
    };
    for (const bool asRoot : {true, false}) {
        if (asRoot && ::geteuid() != 0) {
            continue;  // reported as a skip below
        }
        TempDir dir;
        fs::permissions(dir.path(), fs::perms::all);
        std::string make;
        for (const Kind& kind : kinds) {
            make += "tar('" + kind.entry + ".tar', " + kind.member + ")\n";
        }
        python(dir.path(), make);
        EXPECT_EQ(runInChild([&] { return extractAll(kinds, dir.path()); },
                             asRoot ? std::function<std::string()>() : dropPrivileges),
                  expectedLines(kinds, asRoot))
            << (asRoot ? "as root" : "as nobody");
    }
    if (::geteuid() != 0) {
        GTEST_SKIP() << "not root: only the unprivileged half ran";
    }
}

}  // namespace
}  // namespace tqtest
