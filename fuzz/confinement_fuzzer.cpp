// Extracts arbitrary bytes, as an archive, confined (ExtractOptions::safe()) into a folder
// that already holds files, inside a scratch root that holds files too. Whatever the bytes
// hold, and whether the call succeeds or throws:
//  - nothing may appear outside the output folder;
//  - what was planted outside it (a file beside it, a folder with files, one of which is
//    hard-linked into the output folder) keeps its inode, mode and bytes;
//  - what was planted inside it may be replaced by a new file of the same name, never
//    rewritten in place: each planted file's inode keeps its mode and bytes (watched
//    through a descriptor held open), no planted name is left empty-handed, and a
//    planted file replaced by a file was replaced by an entry of that name that is not
//    a folder (the archive's names are read with libarchive);
//  - no symbolic link in the output folder, other than a planted one where it was
//    planted, leads out of it (a hard link to a planted link included).
// Anything else is a finding (the target aborts). Host errors are the expected outcome
// for bad input.
//
// Run it only inside the sandbox scripts/fuzz.sh sets up: were confinement broken, the
// archive would write wherever it names.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include <archive.h>
#include <archive_entry.h>

#include <archive/core/archivecore.hpp>
#include <host/HostError.hpp>
#include <host/TextConversion.hpp>
#include <host/WarningCapture.hpp>

namespace {

namespace fs = std::filesystem;
namespace core = tessel::io::archive::core;

const char16_t* const kFormats[] = {u"zip", u"tar", u"tgz", u"all"};

std::u16string u16(const fs::path& path) {
    return tessel::host::fromFileSystemText(path.native());
}

// Everything below a folder, links not followed.
std::set<fs::path> contentsOf(const fs::path& folder) {
    std::set<fs::path> paths;
    std::error_code error;
    for (auto item = fs::recursive_directory_iterator(folder, error);
         !error && item != fs::recursive_directory_iterator(); item.increment(error)) {
        paths.insert(item->path());
    }
    return paths;
}

bool isUnder(const fs::path& path, const fs::path& folder) {
    const auto [end, unused] =
        std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return end == folder.end();
}

// A unit libFuzzer itself added to its corpus: named by the SHA-1 of its content.
bool isCorpusUnit(const fs::path& path) {
    const std::string name = path.filename().string();
    return path.parent_path().filename() == "corpus" && name.size() == 40 &&
           name.find_first_not_of("0123456789abcdef") == std::string::npos;
}

[[noreturn]] void finding(const char* what, const fs::path& path) {
    std::fprintf(stderr, "confinement broken: %s: %s\n", what, path.c_str());
    std::abort();
}

std::string bytesAt(int descriptor) {
    std::string bytes;
    char buffer[4096];
    for (off_t offset = 0;;) {
        const ssize_t got = ::pread(descriptor, buffer, sizeof buffer, offset);
        if (got <= 0) {
            return bytes;
        }
        bytes.append(buffer, static_cast<std::size_t>(got));
        offset += got;
    }
}

void writeFile(const fs::path& path, const std::string& bytes, fs::perms mode) {
    std::ofstream(path, std::ios::binary) << bytes;
    fs::permissions(path, mode);
}

// The names of the entries that are not folders, as extraction places them under the
// output folder (one trailing carriage return dropped, absolute names made relative),
// lexically normal: read by the library's own listing with the format the extraction uses,
// so both see the same archive (a tar in front of a zip is a zip to "zip"). Names read
// before damage count: extraction gets as far.
std::set<fs::path> fileEntryNames(const fs::path& input, const std::u16string& format) {
    std::set<fs::path> names;
    const auto visit = [&](const core::EntryInfo& entry) {
        if (entry.type == core::EntryType::Folder) {
            return;
        }
        std::string placed = tessel::host::toFileSystemName(entry.name, "name");
        if (!placed.empty() && placed.back() == '\r') {
            placed.pop_back();
        }
        fs::path path = fs::path(placed).relative_path().lexically_normal();
        names.insert(path.has_filename() ? path : path.parent_path());
    };
    try {
        core::listArchive(u16(input), format, core::ExtractOptions(), visit);
    } catch (const tessel::host::HostError&) {
        // Damage or a name no file system takes: the names before it stand.
    }
    return names;
}

// One thing that existed before the call, as it was.
struct Planted {
    fs::path path;
    bool inside = false;  // in the output folder: may be replaced, never modified
    struct stat before {};
    std::string bytes;    // a file's
    fs::path target;      // a symbolic link's
    int descriptor = -1;  // a file's, to see its inode whatever happens to its name
};

// The output folder and its surroundings, filled before each call. The names are those
// hostile archives aim at (fuzz/hostile_seeds.py uses them).
std::vector<Planted> plant(const fs::path& scratch, const fs::path& out) {
    fs::create_directories(out / "dir");
    fs::create_directories(scratch / "outside");
    writeFile(scratch / "beside.txt", "beside the output folder\n", fs::perms(0644));
    writeFile(scratch / "outside/target.txt", "a symbolic link's target\n", fs::perms(0644));
    writeFile(scratch / "outside/shared.txt", "hard-linked into the output folder\n",
              fs::perms(0600));
    writeFile(out / "a.txt", "planted a\n", fs::perms(0644));
    writeFile(out / "dir/b.txt", "planted b\n", fs::perms(0640));
    fs::create_hard_link(scratch / "outside/shared.txt", out / "shared.txt");
    fs::create_directory_symlink("../outside", out / "escape");
    fs::create_symlink("../beside.txt", out / "up.txt");
    fs::create_symlink(scratch / "outside/target.txt", out / "abs.txt");

    std::vector<Planted> planted;
    for (const char* name : {"beside.txt", "outside", "outside/target.txt", "outside/shared.txt",
                             "out/a.txt", "out/dir", "out/dir/b.txt", "out/shared.txt",
                             "out/escape", "out/up.txt", "out/abs.txt"}) {
        Planted item;
        item.path = scratch / name;
        item.inside = isUnder(item.path, out);
        if (::lstat(item.path.c_str(), &item.before) != 0) {
            finding("could not plant", item.path);
        }
        if (S_ISREG(item.before.st_mode)) {
            item.descriptor = ::open(item.path.c_str(), O_RDONLY | O_CLOEXEC);
            item.bytes = bytesAt(item.descriptor);
        } else if (S_ISLNK(item.before.st_mode)) {
            item.target = fs::read_symlink(item.path);
        }
        planted.push_back(std::move(item));
    }
    return planted;
}

void expectUnchanged(const std::vector<Planted>& planted, const fs::path& out,
                     const std::set<fs::path>& fileEntries) {
    for (const Planted& item : planted) {
        struct stat now {};
        const bool exists = ::lstat(item.path.c_str(), &now) == 0;
        if (!exists && !S_ISDIR(item.before.st_mode)) {
            finding(item.inside ? "a file in the output folder disappeared"
                                : "a file outside the output folder disappeared",
                    item.path);
        }
        if (!item.inside &&
            (!exists || now.st_dev != item.before.st_dev || now.st_ino != item.before.st_ino)) {
            finding("replaced outside the output folder", item.path);
        }
        if (!item.inside && now.st_mode != item.before.st_mode) {
            finding("mode changed outside the output folder", item.path);
        }
        if (!item.inside && S_ISLNK(item.before.st_mode) &&
            fs::read_symlink(item.path) != item.target) {
            finding("a link outside the output folder changed", item.path);
        }
        if (item.descriptor >= 0) {
            // The inode as planted, whatever name it has now (a hard link from outside
            // included): rewriting it in place changes a file the archive does not own.
            struct stat inode {};
            if (::fstat(item.descriptor, &inode) != 0 || inode.st_mode != item.before.st_mode) {
                finding("an existing file's mode was changed in place", item.path);
            }
            if (bytesAt(item.descriptor) != item.bytes) {
                finding("an existing file was rewritten in place", item.path);
            }
        }
        if (item.inside && S_ISREG(item.before.st_mode) && exists && S_ISREG(now.st_mode) &&
            now.st_ino != item.before.st_ino &&
            !fileEntries.contains(item.path.lexically_relative(out))) {
            finding("an existing file was replaced by a file no entry of that name holds",
                    item.path);
        }
    }
    std::error_code error;
    for (auto link = fs::recursive_directory_iterator(out, error);
         !error && link != fs::recursive_directory_iterator(); link.increment(error)) {
        if (!link->is_symlink()) {
            continue;
        }
        const bool plantedHere = std::ranges::any_of(planted, [&](const Planted& item) {
            return item.path == link->path() && S_ISLNK(item.before.st_mode);
        });
        const fs::path target = link->path().parent_path() / fs::read_symlink(link->path());
        if (!plantedHere && !isUnder(target.lexically_normal(), out)) {
            finding("a link leading out of the output folder was made", link->path());
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The folders around the scratch root, as they were before any input ran.
    static const fs::path work = fs::current_path();
    static const std::set<fs::path> around = contentsOf(work.parent_path());
    const fs::path scratch = work / "confinement-scratch";
    const fs::path input = work / "confinement-input";
    const fs::path out = scratch / "out";
    std::error_code ignored;
    {
        std::ofstream file(input, std::ios::binary);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    const std::u16string format = kFormats[size > 0 ? data[0] % 4 : 3];
    const std::set<fs::path> fileEntries = fileEntryNames(input, format);

    tessel::host::WarningCapture warnings;
    for (const bool withPermissions : {false, true}) {
        fs::remove_all(scratch, ignored);
        const std::vector<Planted> planted = plant(scratch, out);
        core::ExtractOptions options = core::ExtractOptions::safe();
        options.restrictPermissions = !withPermissions;
        options.select = withPermissions ? std::vector<std::u16string>{u"a*", u"dir/"}
                                         : std::vector<std::u16string>{};
        try {
            core::extractArchiveWithOptions(u16(input), u16(out), format, options);
        } catch (const tessel::host::HostError&) {
            // The identified error bad or hostile input is meant to get.
        }
        expectUnchanged(planted, out, fileEntries);
        for (const fs::path& path : contentsOf(work.parent_path())) {
            const bool wasPlanted = std::ranges::any_of(
                planted, [&](const Planted& item) { return item.path == path; });
            if (!around.contains(path) && path != input && path != scratch && !wasPlanted &&
                !isUnder(path, out) && !isCorpusUnit(path)) {
                finding("appeared outside the output folder", path);
            }
        }
        for (const Planted& item : planted) {
            if (item.descriptor >= 0) {
                ::close(item.descriptor);
            }
        }
    }

    fs::remove_all(scratch, ignored);
    fs::remove(input, ignored);
    return 0;
}
