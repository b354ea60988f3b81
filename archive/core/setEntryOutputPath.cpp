#include <archive/core/setEntryOutputPath.hpp>

#include <algorithm>
#include <stdexcept>
#include <string_view>

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

// The name without its first count components; empty when it has no more than that.
std::string withoutLeadingComponents(std::string_view name, unsigned count) {
    std::size_t start = 0;
    while (start < name.size()) {
        const std::size_t end = std::min(name.find('/', start), name.size());
        const std::string_view component = name.substr(start, end - start);
        if (!component.empty() && component != ".") {
            if (count == 0) {
                return std::string(name.substr(start));
            }
            --count;
        }
        start = end + 1;
    }
    return std::string();
}

}  // namespace

bool setEntryOutputPath(::archive_entry* entry, const std::u16string& outputFolder,
                        unsigned stripComponents) {
    const char* pathname = archive_entry_pathname(entry);
    if (pathname == nullptr) {
        throw std::logic_error("basic_string: construction from null is not valid");
    }
    std::string name(pathname);
    if (stripComponents > 0) {
        name = withoutLeadingComponents(name, stripComponents);
        const char* target = archive_entry_hardlink(entry);
        const std::string strippedTarget = target != nullptr && *target != '\0'
                                               ? withoutLeadingComponents(target, stripComponents)
                                               : std::string("-");
        if (name.empty() || strippedTarget.empty()) {
            return false;
        }
        archive_entry_set_pathname(entry, name.c_str());
        if (target != nullptr && *target != '\0') {
            archive_entry_set_hardlink(entry, strippedTarget.c_str());
        }
    }
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
    return true;
}

}  // namespace tessel::io::archive::core
