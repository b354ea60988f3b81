#pragma once

#include <optional>

#include <archive/core/error/NullArchiveRule.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

// Why the path cannot be read as an input, or nothing when it can: PermissionDenied when
// its status is refused, InvalidEntryHeader when the status fails otherwise (a missing
// path), OpenEntryError when the owner may not read it. The owner-read bit is looked at
// whoever the process runs as, so root skips such a file too.
std::optional<NullArchiveRule> checkReadable(const tessel::host::HostPath& path);

}  // namespace tessel::io::archive::core
