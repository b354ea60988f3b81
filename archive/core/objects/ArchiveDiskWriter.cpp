#include <archive/core/objects/ArchiveDiskWriter.hpp>

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/log/LogLevel.hpp>
#include <archive/core/log/LogRecord.hpp>
#include <archive/core/objects/checkOverwritable.hpp>
#include <host/FileSystemError.hpp>

namespace tessel::io::archive::core {

namespace {

// Permissions, times, ACLs and file flags are restored; owners and extended attributes
// are not, and no secure-path or no-overwrite flag is set: existing files are replaced.
constexpr int kDiskWriteOptions =
    ARCHIVE_EXTRACT_PERM | ARCHIVE_EXTRACT_TIME | ARCHIVE_EXTRACT_ACL | ARCHIVE_EXTRACT_FFLAGS;
static_assert(kDiskWriteOptions == 0x66);

constexpr const char* kCannotUnlink = "Can't unlink already-existing object";
constexpr const char* kWriteFailed = "Write failed";
// What libarchive's secure-extraction flags say when they refuse an entry.
constexpr std::string_view kDotDot = "Path contains '..'";
constexpr std::string_view kThroughSymlink = "Cannot extract through symlink ";
constexpr std::string_view kHardlinkToSymlink = "Cannot write hardlink to symlink ";

std::optional<NullArchiveRule> securityRefusal(const std::string& message) {
    if (message == kDotDot) {
        return NullArchiveRule::EntryOutsideFolder;
    }
    if (message.starts_with(kThroughSymlink) || message.starts_with(kHardlinkToSymlink)) {
        return NullArchiveRule::EntryThroughSymlink;
    }
    return std::nullopt;
}

int diskWriteOptions(const ExtractOptions& options) {
    int flags = kDiskWriteOptions;
    if (options.confine) {
        flags |= ARCHIVE_EXTRACT_SECURE_SYMLINKS | ARCHIVE_EXTRACT_SECURE_NODOTDOT;
    }
    if (options.safeWrites) {
        flags |= ARCHIVE_EXTRACT_SAFE_WRITES;
    }
    if (options.keepExisting) {
        flags |= ARCHIVE_EXTRACT_NO_OVERWRITE;
    }
    return flags;
}

// libarchive's secure flags check the whole path, the output folder's own part included,
// so a confined writer works on the folder's canonical form (no symbolic links, no "..").
// Below the current folder it is taken relative to it: the checks then start there, as
// they do for a tool that changes into the folder first, and cost one look per level less.
tessel::host::HostPath canonicalFolder(const tessel::host::HostPath& folder) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path named = folder.empty() ? fs::path(".") : folder.fsPath();
    fs::path canonical = fs::weakly_canonical(fs::absolute(named, error), error);
    if (error) {
        canonical = fs::absolute(named).lexically_normal();
    }
    const fs::path current = fs::current_path(error);
    if (!error) {
        const fs::path below = canonical.lexically_relative(current);
        if (!below.empty() && *below.begin() != "..") {
            return tessel::host::HostPath(below);
        }
    }
    return tessel::host::HostPath(canonical);
}

// libarchive writes a replacement to "<name>.XXXXXX" and keeps it open until the entry is
// finished; the open descriptor is how that temporary is found again.
std::optional<std::string> openTemporaryFor(const std::string& target) {
    std::error_code error;
    for (const auto& link : std::filesystem::directory_iterator("/proc/self/fd", error)) {
        const std::filesystem::path opened = std::filesystem::read_symlink(link.path(), error);
        if (error) {
            continue;
        }
        const std::string& name = opened.native();
        if (name.size() == target.size() + 7 && name.starts_with(target) &&
            name[target.size()] == '.') {
            return name;
        }
    }
    return std::nullopt;
}

bool isStrictGz(const std::optional<ArchiveFormat>& strictFormat) {
    return strictFormat.has_value() && *strictFormat == ArchiveFormat::Gz;
}

// The entry's on-disk path; a missing pathname is a programming error, as when a
// std::string is built from a null pointer.
tessel::host::HostPath entryPath(::archive_entry* entry) {
    const char* name = archive_entry_pathname(entry);
    if (name == nullptr) {
        throw std::logic_error("basic_string: construction from null is not valid");
    }
    return tessel::host::HostPath::fromFileSystem(name).nativeForm();
}

// The status query follows links: a link whose target is not (yet) there is written
// all the same, and is no folder.
bool isFolder(const tessel::host::HostPath& path) {
    try {
        return path.status().isFolder;
    } catch (const tessel::host::FileSystemError& error) {
        if (error.kind() == tessel::host::FileSystemError::NotFound) {
            return false;
        }
        throw;
    }
}

}  // namespace

ArchiveDiskWriter::ArchiveDiskWriter(tessel::host::HostPath outputFolder)
    : outputFolder_(std::move(outputFolder)) {
    open(kDiskWriteOptions);
}

ArchiveDiskWriter::ArchiveDiskWriter(const std::u16string& outputFolder,
                                     const ExtractOptions& options)
    : outputFolder_(tessel::host::HostPath::fromText(outputFolder, "outputFolder")),
      confine_(options.confine),
      safeWrites_(options.safeWrites),
      ownFileForLinkData_(options.safeWrites || options.keepExisting) {
    if (confine_) {
        shownFolder_ = outputFolder;
        outputFolder_ = canonicalFolder(outputFolder_);
    }
    open(diskWriteOptions(options));
}

void ArchiveDiskWriter::open(int flags) {
    flags_ = flags;
    handle_.reset(archive_write_disk_new());
    if (!handle_) {
        throw std::bad_alloc();
    }
    archive_write_disk_set_options(handle_.get(), flags);
    archive_write_disk_set_standard_lookup(handle_.get());
}

ArchiveDiskWriter::~ArchiveDiskWriter() {
    handle_.reset();
}

bool ArchiveDiskWriter::writeHeader(::archive_entry* entry,
                                    std::optional<ArchiveFormat> strictFormat, bool targetAbsent) {
    currentEntryPath_.reset();
    tessel::host::HostPath path = entryPath(entry);

    if (const PathProblem problem = targetAbsent ? std::nullopt : checkOverwritable(path)) {
        if (isStrictGz(strictFormat)) {
            throwArchiveErrorWithMessage(*problem, path.native());
        }
        warnForPath(*problem, path, ArchiveFormat::All);
        return false;
    }

    ::archive* handle = handle_.get();
    if (writeEntryHeader(entry) != ARCHIVE_OK) {
        const std::string message = libarchiveErrorString(handle, 1);
        // A confined writer's refusal is no skipped entry: the archive tried to get out.
        if (const auto refusal = confine_ ? securityRefusal(message) : std::nullopt) {
            throwArchiveErrorForPath(*refusal, handle, entry);
        }
        const NullArchiveRule rule = message == kCannotUnlink ? NullArchiveRule::OverwriteOpenFile
                                                              : NullArchiveRule::InvalidEntryHeader;
        if (isStrictGz(strictFormat)) {
            throwArchiveErrorForPath(rule, handle, entry);
        }
        warnArchiveError(rule, handle, path);
        return false;
    }

    currentEntryPath_ = std::move(path);
    ARCHIVE_LOG(LogStep) << "Wrote extracted entry file to disk-->" << *currentEntryPath_;
    return true;
}

int ArchiveDiskWriter::writeEntryHeader(::archive_entry* entry) {
    ::archive* handle = handle_.get();
    if (optionsChanged_) {
        // The entry before is finished with the options it was begun with.
        archive_write_finish_entry(handle);
        archive_write_disk_set_options(handle, flags_);
        optionsChanged_ = false;
    }
    linkDataToTemporary_ = false;
    if (ownFileForLinkData_ && archive_entry_hardlink(entry) != nullptr &&
        archive_entry_size_is_set(entry) != 0 && archive_entry_size(entry) > 0) {
        return writeLinkThenFile(entry);
    }
    if ((flags_ & ARCHIVE_EXTRACT_SAFE_WRITES) != 0 && archive_entry_filetype(entry) == AE_IFDIR) {
        // Safe writes pick their temporary by what is in the way: over a file, a folder
        // entry would leave an empty file in its place. A folder replaces a file outright.
        useOptionsForThisEntry(flags_ & ~ARCHIVE_EXTRACT_SAFE_WRITES);
    }
    return archive_write_header(handle, entry);
}

// libarchive writes the data of a hard link into the file it links to, in place: into every
// other name of that file as well, outside the output folder too. The link is made alone
// first, so that its target is judged (and refused) as any link's; then the data goes to a
// file of its own, which replaces the link through a temporary and a rename.
int ArchiveDiskWriter::writeLinkThenFile(::archive_entry* entry) {
    ::archive* handle = handle_.get();
    const la_int64_t size = archive_entry_size(entry);
    archive_entry_set_size(entry, 0);
    int status = archive_write_header(handle, entry);
    archive_entry_set_size(entry, size);
    if (status != ARCHIVE_OK) {
        return status;
    }
    status = archive_write_finish_entry(handle);
    if (status != ARCHIVE_OK) {
        return status;
    }
    archive_entry_set_hardlink(entry, nullptr);
    archive_entry_set_filetype(entry, AE_IFREG);
    // The link just made is in the way whether or not existing files are kept.
    useOptionsForThisEntry((flags_ | ARCHIVE_EXTRACT_SAFE_WRITES) & ~ARCHIVE_EXTRACT_NO_OVERWRITE);
    linkDataToTemporary_ = true;
    return archive_write_header(handle, entry);
}

void ArchiveDiskWriter::useOptionsForThisEntry(int flags) {
    archive_write_disk_set_options(handle_.get(), flags);
    optionsChanged_ = true;
}

int ArchiveDiskWriter::writeDataBlock(const void* buffer, std::size_t size, la_int64_t offset) {
    ::archive* handle = handle_.get();
    const auto status = static_cast<int>(archive_write_data_block(handle, buffer, size, offset));
    if (status == ARCHIVE_OK) {
        return status;
    }
    const std::string text = libarchiveErrorString(handle, 1);
    if (archive_errno(handle) == ENOSPC && text == kWriteFailed) {
        throwArchiveError(NullArchiveRule::DiskSpaceFull, handle);
    }
    return status;
}

void ArchiveDiskWriter::recordWrittenFile(::archive_entry* entry) {
    // The entry whose header was written last, already converted then.
    const tessel::host::HostPath path = currentEntryPath_ ? *currentEntryPath_ : entryPath(entry);
    std::u16string text = path.native();
    const char16_t separator = tessel::host::HostPath::separator();
    // A regular file just written is no folder; anything else (a link may lead to one)
    // is asked. Folder entries often carry their separator already ("dir/"): list it once.
    const bool regular = archive_entry_filetype(entry) == AE_IFREG;
    if (!regular && isFolder(path) && (text.empty() || text.back() != separator)) {
        text.push_back(separator);
    }
    writtenFiles_.push_back(shown(std::move(text)));
}

std::u16string ArchiveDiskWriter::shown(std::u16string path) const {
    if (!shownFolder_) {
        return path;
    }
    const char16_t separator = tessel::host::HostPath::separator();
    const std::u16string& folder = outputFolder_.native();
    // The path below the folder the writer works on ("." writes relative paths).
    std::u16string below;
    if (folder == u".") {
        below = std::move(path);
    } else if (path.size() > folder.size() && path.starts_with(folder) &&
               path[folder.size()] == separator) {
        below = path.substr(folder.size() + 1);
    } else {
        return path;
    }
    // "" and "." name the current folder: its entries are listed relative, as without
    // confinement.
    const std::u16string& name = *shownFolder_;
    if (name.empty() || name == u".") {
        return below;
    }
    return name.back() == separator ? name + below : name + separator + below;
}

void ArchiveDiskWriter::abandonReplacement() {
    if (!currentEntryPath_) {
        return;
    }
    if (safeWrites_) {
        const tessel::host::HostPath absolute = currentEntryPath_->absolute();
        if (const auto temporary = openTemporaryFor(absolute.access())) {
            // Gone before the entry is finished, so libarchive's rename fails and the file
            // under the entry's name is never replaced.
            ::unlink(temporary->c_str());
        }
    }
    archive_write_finish_entry(handle_.get());
    currentEntryPath_.reset();
}

void ArchiveDiskWriter::finishLastEntry() {
    if (currentEntryPath_) {
        archive_write_finish_entry(handle_.get());
    }
}

void ArchiveDiskWriter::deleteCurrentEntryFile() {
    if (!currentEntryPath_) {
        return;
    }
    // The file must be closed before it can go; a warning still means it was closed.
    if (archive_write_finish_entry(handle_.get()) < ARCHIVE_WARN) {
        ARCHIVE_LOG(LogStep) << "Unable to close file before deletion";
        return;
    }
    const tessel::host::HostPath path = std::move(*currentEntryPath_);
    currentEntryPath_.reset();
    try {
        path.remove();
    } catch (const tessel::host::FileSystemError&) {
        // Cleanup on a failure path: the failure being reported matters more.
    }
    ARCHIVE_LOG(LogStep) << "Successfully deleted file from disk-->" << path;
}

}  // namespace tessel::io::archive::core
