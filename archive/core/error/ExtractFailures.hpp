#pragma once

#include <string>

#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/types/ArchiveFormat.hpp>

namespace tessel::io::archive::core {

// Whose identifiers a failure of reading an archive is raised under:
// - ExtractArchive: both extractArchive forms and sampleReadWithPassword;
// - OptionCalls: extractArchiveWithOptions and listArchive, which report a damaged archive
//   as damaged whatever the format text, and give the refusals of confinement, the safe
//   modes and cancellation identifiers of their own;
// - Testing: testArchive, as the option calls, but a gzip file ("gz") that cannot be
//   opened or is no gzip file is reported as gunzip reports it.
enum class ExtractFailureTable { ExtractArchive, OptionCalls, Testing };

// What a failure of reading is about.
struct ExtractFailureSubject {
    const std::u16string& archivePath;  // as the caller gave it
    ArchiveFormat format;
    const std::u16string& entry;  // the entry being processed, as stored; empty before the first
    bool readFailed = false;      // its data could not be read (as opposed to written)
};

// Raises the error that stands for the failure in the table, or the internal error when
// the table has no row for it. Never returns.
[[noreturn]] void raiseExtractFailure(const ArchiveException& failure, ExtractFailureTable table,
                                      const ExtractFailureSubject& subject);

}  // namespace tessel::io::archive::core
