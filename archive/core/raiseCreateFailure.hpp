#pragma once

#include <string>

#include <archive/core/CreateOptions.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/objects/ArchiveFormat.hpp>

namespace tessel::io::archive::core {

// Raises what a failure of createArchiveWithOptions stands for: createArchive's own
// identifiers first, then those of the additions (cancelled, writeError, a filter or
// level refused), else the internal error.
[[noreturn]] void raiseCreateFailure(const ArchiveException& failure,
                                     const std::u16string& archivePath, ArchiveFormat format,
                                     const CreateOptions& options);

}  // namespace tessel::io::archive::core
