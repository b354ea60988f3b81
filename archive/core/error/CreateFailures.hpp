#pragma once

#include <string>

#include <archive/core/CreateOptions.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/types/ArchiveFormat.hpp>

namespace tessel::io::archive::core {

// Whose identifiers a failure of archive creation is raised under: createArchive's (both
// overloads), or those of the calls with options (createArchiveWithOptions and
// StreamCompressor), which add cancellation, write errors and a refused filter or level.
enum class CreateFailureTable { CreateArchive, OptionCalls };

// What a failure of creation is about.
struct CreateFailureSubject {
    const std::u16string& archivePath;  // as the caller gave it, relative or not
    ArchiveFormat format;
    const CreateOptions& options;  // a refused level names the filter and level
};

// Raises the error that stands for the failure in the table, or the internal error when
// the table has no row for it. Never returns.
[[noreturn]] void raiseCreateFailure(const ArchiveException& failure, CreateFailureTable table,
                                     const CreateFailureSubject& subject);

}  // namespace tessel::io::archive::core
