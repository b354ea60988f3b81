#pragma once

#include <string>

#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/objects/ArchiveFormat.hpp>

namespace tessel::io::archive::core {

// Where an extraction with options stood when it failed.
struct ExtractionFailureContext {
    std::u16string entry;     // the entry being processed, as stored; empty before the first
    bool readFailed = false;  // its data could not be read (as opposed to written)
};

// The additions' translation of an extraction failure: what extractArchive raises for the
// same failure, except that a damaged archive is reported as damaged whatever the format
// text, and the refusals of confinement, safe modes and cancellation get identifiers of
// their own. Ends in the catch-all for anything else. Never returns.
[[noreturn]] void raiseExtractionError(const ArchiveException& failure,
                                       const std::u16string& archivePath, ArchiveFormat format,
                                       const ExtractionFailureContext& context);

}  // namespace tessel::io::archive::core
