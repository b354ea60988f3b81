#pragma once

#include <string>

#include <archive/core/error/ArchiveException.hpp>

namespace tessel::io::archive::core {

// Whose identifiers a failure of gzip compression is raised under, and what becomes of
// the output being written: compressgz keeps it but for a failure while reading or
// writing that input; compressgzToFile removes it whatever fails.
enum class GzipFailureTable { Compressgz, CompressgzToFile };

// What a failure of compression is about.
struct GzipFailureSubject {
    const std::u16string& input;   // the input's native path
    const std::u16string& output;  // the output as the call names it
    int level;                     // the level asked for
};

// Whether the table removes the output in progress after the failure (nullptr: a failure
// that is not the archive objects', a standard exception say).
bool gzipFailureRemovesOutput(const ArchiveException* failure, GzipFailureTable table);

// Raises the error that stands for the failure in the table, or the internal error when
// the table has no row for it. Never returns.
[[noreturn]] void raiseGzipFailure(const ArchiveException& failure, GzipFailureTable table,
                                   const GzipFailureSubject& subject);

}  // namespace tessel::io::archive::core
