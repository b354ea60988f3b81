#pragma once

#include <string>

#include <archive/core/error/ArchiveException.hpp>

namespace tessel::io::archive::core {

// Whose identifiers a failure of gzip decompression is raised under: uncompressgz's, or
// those of uncompressgzWithOptions, which reports cancellation as such.
enum class GunzipFailureTable { Uncompressgz, OptionCalls };

// What a failure of decompression is about.
struct GunzipFailureSubject {
    const std::u16string& input;       // the input's native path
    const std::u16string& outputName;  // the output's file name (that of the previous input
                                       // when the failure came before this one's was derived)
};

// Raises the error that stands for the failure in the table, or the internal error when
// the table has no row for it. Never returns.
[[noreturn]] void raiseGunzipFailure(const ArchiveException& failure, GunzipFailureTable table,
                                     const GunzipFailureSubject& subject);

}  // namespace tessel::io::archive::core
