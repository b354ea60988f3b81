#include <archive/core/EntrySafety.hpp>

#include <sys/stat.h>

#include <filesystem>

#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/error/messages/extractArchive.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

constexpr mode_t kRestrictedBits = S_ISUID | S_ISGID | S_ISVTX | S_IWGRP | S_IWOTH;

bool isSpecialFile(::archive_entry* entry) {
    switch (archive_entry_filetype(entry)) {
        case AE_IFBLK:
        case AE_IFCHR:
        case AE_IFIFO:
        case AE_IFSOCK:
            return true;
        default:
            return false;
    }
}

}  // namespace

EntrySafety::EntrySafety(const ExtractOptions& options, tessel::host::HostPath outputFolder)
    : skipSpecialFiles_(options.skipSpecialFiles),
      restrictPermissions_(options.restrictPermissions),
      refuseOutwardLinks_(options.refuseOutwardLinks),
      outputFolder_(outputFolder.access()) {
    while (outputFolder_.size() > 1 && outputFolder_.back() == '/') {
        outputFolder_.pop_back();
    }
}

bool EntrySafety::review(::archive_entry* entry, const std::u16string& storedName) const {
    if (skipSpecialFiles_ && isSpecialFile(entry)) {
        TESSEL::io::archive::extractArchive::specialFileSkipped(storedName).warn();
        return false;
    }
    if (restrictPermissions_) {
        archive_entry_set_perm(entry, archive_entry_perm(entry) & ~kRestrictedBits);
    }
    const char* target = archive_entry_symlink(entry);
    if (refuseOutwardLinks_ && target != nullptr &&
        !linkStaysInside(archive_entry_pathname(entry), target)) {
        throwArchiveErrorWithMessage(NullArchiveRule::LinkOutsideFolder,
                                     tessel::host::fromFileSystemText(target));
    }
    return true;
}

// The target is resolved from the link's own folder. Climbing with ".." is allowed only
// at its start, where it climbs real folders (the writer never writes through a link);
// a ".." after a name could climb back out through a link made later.
bool EntrySafety::linkStaysInside(const std::string& linkPath, const std::string& target) const {
    namespace fs = std::filesystem;
    if (target.empty() || target.front() == '/') {
        return false;
    }
    // How deep below the output folder the link's folder lies.
    const fs::path place = fs::path(linkPath).lexically_normal();
    const fs::path inside = place.lexically_relative(outputFolder_.empty() ? "." : outputFolder_);
    long depth = -1;  // the link's own name does not count
    for (const fs::path& part : inside) {
        if (part == "..") {
            return false;
        }
        if (part != "." && !part.empty()) {
            ++depth;
        }
    }
    if (depth < 0) {
        return false;
    }
    bool seenName = false;
    for (const fs::path& part : fs::path(target)) {
        if (part == "..") {
            if (seenName || --depth < 0) {
                return false;
            }
        } else if (part != "." && !part.empty()) {
            seenName = true;
        }
    }
    return true;
}

}  // namespace tessel::io::archive::core
