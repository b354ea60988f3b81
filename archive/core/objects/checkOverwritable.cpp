#include <archive/core/objects/checkOverwritable.hpp>

#include <host/FileSystemError.hpp>

namespace tessel::io::archive::core {

PathProblem checkOverwritable(const tessel::host::HostPath& path) {
    try {
        const std::optional<tessel::host::FileStatus> status = path.statusIfExists();
        if (!status || status->ownerWrite) {
            return std::nullopt;
        }
        return NullArchiveRule::UnableToOverwrite;
    } catch (const tessel::host::FileSystemError& error) {
        if (error.kind() == tessel::host::FileSystemError::AccessDenied) {
            return NullArchiveRule::PermissionDenied;
        }
        return NullArchiveRule::InvalidEntryHeader;
    }
}

}  // namespace tessel::io::archive::core
