#include <archive/core/setEntryOutputPath.hpp>

#include <stdexcept>

#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/log/LogLevel.hpp>
#include <archive/core/log/LogRecord.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

namespace {

void setPathname(::archive_entry* entry, const tessel::host::HostPath& path) {
    archive_entry_set_pathname(entry, path.access().c_str());
    ARCHIVE_LOG(LogStep) << "Archive entry output path-->" << path;
}

// A hard link names another entry of the same archive, which was placed by the rule
// above: its target goes through the same rule, or it would be looked up from the
// current folder instead of the output folder.
void placeHardlinkTarget(::archive_entry* entry, const tessel::host::HostPath& folder,
                         bool underFolder) {
    const char* target = archive_entry_hardlink(entry);
    if (target == nullptr || *target == '\0') {
        return;
    }
    const tessel::host::HostPath path = tessel::host::HostPath::fromFileSystem(target).nativeForm();
    if (underFolder) {
        archive_entry_set_hardlink(entry, (folder / path.relative()).access().c_str());
    } else if (path.isAbsolute()) {
        archive_entry_set_hardlink(entry, path.relative().access().c_str());
    }
}

}  // namespace

void setEntryOutputPath(::archive_entry* entry, const std::u16string& outputFolder) {
    const char* pathname = archive_entry_pathname(entry);
    if (pathname == nullptr) {
        throw std::logic_error("basic_string: construction from null is not valid");
    }
    std::string name(pathname);
    if (name.empty()) {
        throwInternalError(NullArchiveRule::EmptyEntryFilename);
    }

    // Names written on some systems carry a carriage return that no file name should keep.
    bool renamed = false;
    if (name.back() == '\r') {
        name.pop_back();
        warnForName(NullArchiveRule::RemoveControlM, name);
        renamed = true;
        if (name.empty()) {
            throwInternalError(NullArchiveRule::EmptyEntryFilename);
        }
    }

    const tessel::host::HostPath entryPath =
        tessel::host::HostPath::fromFileSystem(name).nativeForm();
    const tessel::host::HostPath folder = tessel::host::HostPath(outputFolder).nativeForm();
    const bool underFolder = !outputFolder.empty() && folder.native() != u".";
    if (underFolder) {
        setPathname(entry, folder / entryPath.relative());
    } else if (entryPath.isAbsolute()) {
        setPathname(entry, entryPath.relative());
    } else if (renamed) {
        archive_entry_set_pathname(entry, name.c_str());
    }
    placeHardlinkTarget(entry, folder, underFolder);
}

}  // namespace tessel::io::archive::core
