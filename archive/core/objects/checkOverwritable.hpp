#pragma once

#include <optional>

#include <archive/core/error/NullArchiveRule.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

// The rule a path check found, or nothing when there is no problem.
using PathProblem = std::optional<NullArchiveRule>;

// Whether an entry may be written at path: a missing path or an owner-writable one is
// fine; an existing file without owner-write is never replaced, even though libarchive
// would unlink it.
PathProblem checkOverwritable(const tessel::host::HostPath& path);

}  // namespace tessel::io::archive::core
