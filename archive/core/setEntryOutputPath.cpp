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
    if (!outputFolder.empty() && folder.native() != u".") {
        setPathname(entry, folder / entryPath.relative());
    } else if (entryPath.isAbsolute()) {
        setPathname(entry, entryPath.relative());
    } else if (renamed) {
        archive_entry_set_pathname(entry, name.c_str());
    }
}

}  // namespace tessel::io::archive::core
