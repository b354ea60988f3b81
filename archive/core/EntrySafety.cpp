#include <archive/core/EntrySafety.hpp>

#include <sys/stat.h>

#include <filesystem>
#include <system_error>

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
      outwardLinks_(options.outwardLinks),
      outputFolder_(outputFolder.access()) {
    while (outputFolder_.size() > 1 && outputFolder_.back() == '/') {
        outputFolder_.pop_back();
    }
    if (outwardLinks_ != OutwardLinks::Keep) {
        std::error_code error;
        const std::filesystem::path folder =
            std::filesystem::absolute(outputFolder_.empty() ? "." : outputFolder_, error);
        canonicalFolder_ = std::filesystem::weakly_canonical(folder, error);
        if (error) {
            canonicalFolder_ = folder.lexically_normal();
        }
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
    if (outwardLinks_ == OutwardLinks::Keep) {
        return true;
    }
    const std::optional<std::string> target = linkLeftBy(entry);
    if (!target) {
        return true;
    }
    const std::string path = archive_entry_pathname(entry);
    if (linkStaysInside(path, *target) && resolvesInside(path, *target)) {
        return true;
    }
    const std::u16string shownTarget = tessel::host::fromFileSystemText(*target);
    if (outwardLinks_ == OutwardLinks::Refuse) {
        throwArchiveErrorWithMessage(NullArchiveRule::LinkOutsideFolder, shownTarget);
    }
    TESSEL::io::archive::extractArchive::outwardLinkSkipped(storedName, shownTarget).warn();
    return false;
}

// A hard link to a symbolic link is a second symbolic link with the same target, read from
// another folder: "../.." two levels down points at the output folder, at its top above it.
std::optional<std::string> EntrySafety::linkLeftBy(::archive_entry* entry) {
    if (const char* target = archive_entry_symlink(entry); target != nullptr) {
        return std::string(target);
    }
    const char* original = archive_entry_hardlink(entry);
    if (original == nullptr || *original == '\0') {
        return std::nullopt;
    }
    std::error_code error;
    if (!std::filesystem::is_symlink(std::filesystem::symlink_status(original, error))) {
        return std::nullopt;
    }
    std::filesystem::path target = std::filesystem::read_symlink(original, error);
    if (error) {
        return std::nullopt;  // gone meanwhile: the writer finds nothing to link either
    }
    return target.native();
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

// A link the archive cannot see: one already on disk on the way (the user's own, say),
// followed as the target would be followed; what is not there yet is taken as named.
bool EntrySafety::resolvesInside(const std::string& linkPath, const std::string& target) const {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path folder = fs::path(linkPath).parent_path();
    const fs::path from = fs::absolute(folder.empty() ? "." : folder, error);
    if (error) {
        return false;
    }
    const fs::path reached = fs::weakly_canonical(from / target, error);
    if (error) {
        return false;
    }
    const fs::path below = reached.lexically_relative(canonicalFolder_);
    return !below.empty() && *below.begin() != "..";
}

}  // namespace tessel::io::archive::core
