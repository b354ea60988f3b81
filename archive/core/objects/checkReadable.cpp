#include <archive/core/objects/checkReadable.hpp>

#include <host/FileSystemError.hpp>

namespace tessel::io::archive::core {

std::optional<NullArchiveRule> checkReadable(const tessel::host::HostPath& path) {
    try {
        if (!path.status().ownerRead) {
            return NullArchiveRule::OpenEntryError;
        }
    } catch (const tessel::host::FileSystemError& error) {
        return error.kind() == tessel::host::FileSystemError::AccessDenied
                   ? NullArchiveRule::PermissionDenied
                   : NullArchiveRule::InvalidEntryHeader;
    }
    return std::nullopt;
}

}  // namespace tessel::io::archive::core
