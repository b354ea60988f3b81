#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <archive/core/CompressedStreamCheck.hpp>
#include <archive/core/Progress.hpp>
#include <archive/core/api.hpp>
#include <host/MessageIdError.hpp>

namespace tessel::io::archive::core {

// What becomes of a symbolic link that would point outside the output folder from where it
// lands: a symbolic link entry whose target, resolved from the link's own folder, lies
// outside it (absolute targets included, and routes through links already on disk), and a
// hard link to a symbolic link whose target, resolved from the hard link's folder, does.
enum class OutwardLinks {
    // Written as stored, as extractArchive does. With confine nothing is ever written
    // through one.
    Keep,
    // Left out with an outwardLinkSkipped warning naming it; the rest is extracted.
    Skip,
    // Fails the call with a linkOutsideFolder error naming it, as confine refuses names.
    Refuse,
};

// How extractArchiveWithOptions (and listing, testing and uncompressgzWithOptions, which
// read the same way) behave. Every field defaults to what extractArchive does.
struct ExtractOptions {
    std::u16string password;

    // Which entries: empty selects all. A pattern selects each entry whose name as stored,
    // or one of the folders above it, matches: a name ("docs/a.txt"), a folder with or
    // without its "/" (everything beneath it), or a shell wildcard ("*", "?", "[...]";
    // "*" also matches "/"). Patterns that select nothing are reported in the result.
    std::vector<std::u16string> select;
    // Drop this many leading folders from each entry's name (and hard-link target) before
    // it is placed, as tar's --strip-components does: "project-1.2/src/a.c" with 1 becomes
    // "src/a.c". An entry with no more components than that is not extracted. Selection
    // still matches the names as stored.
    unsigned stripComponents = 0;

    // Refuse, as it is reached, an entry whose name or hard-link target would land
    // outside the output folder or that would be written through a symbolic link (one on
    // disk or one an earlier entry made): libarchive's secure-extraction flags. The call
    // then fails with an extractArchive error naming the entry.
    bool confine = false;
    // Skip block and character devices and FIFOs, with a warning each.
    bool skipSpecialFiles = false;
    // Clear set-user-ID, set-group-ID and sticky bits and group and other write
    // permission on everything created.
    bool restrictPermissions = false;
    OutwardLinks outwardLinks = OutwardLinks::Keep;
    // Leave existing files alone, with a warning each (folders are merged as always).
    bool keepExisting = false;
    // Replace an existing file through a temporary and a rename (libarchive's safe
    // writes), so a failure leaves the old file whole.
    bool safeWrites = false;
    // On failure (any error, cancellation included) remove every file and folder this
    // call created; files it replaced stay replaced.
    bool removeCreatedOnFailure = false;

    // Read the archive from this open descriptor (0: standard input) instead of opening
    // the archive path, which then only names it in messages. The descriptor stays open.
    int inputDescriptor = -1;
    // uncompressgzWithOptions only: write the one decompressed file here instead.
    int outputDescriptor = -1;
    // uncompressgzWithOptions: a file it writes takes its input's permission bits and
    // modification time, as gzip does, so a private input never gives a readable output.
    // uncompressgz turns this off: its outputs get mode 0644.
    bool gunzipKeepsInputMode = true;

    // listArchive: read each zip entry's data to measure its compressed size, which
    // libarchive does not report (costs a decompression of every entry).
    bool measureCompressedSizes = false;

    ProgressCallback progress;
    // The gzip trailer check (empty: makeGzipStreamCheck).
    StreamCheckFactory gzipCheck;
    // For an archive read from inputDescriptor that another thread fills (a gunzip of the
    // archive into a pipe, say): asked once the input has been read to its end; a text is
    // damage found there, and fails the call as damaged data would.
    std::function<std::optional<std::string>()> upstreamVerdict;

    // What a careful command-line tool wants: confine, skipSpecialFiles,
    // restrictPermissions, outward links skipped, safeWrites and removeCreatedOnFailure.
    TQARCHIVE_API static ExtractOptions safe();
    // safe() without confinement and the safe modes: for archives the user trusts. Safe
    // writes and the cleanup on failure stay.
    TQARCHIVE_API static ExtractOptions unsafe();
};

struct ExtractResult {
    // The paths written, as extractArchive returns them (folders end in a separator).
    std::vector<std::u16string> written;
    // One "TESSEL:io:archive:extractArchive:entryNotFound" error for each pattern of
    // ExtractOptions::select that matched no entry; the call raises none of them.
    std::vector<tessel::host::MessageIdError> notFound;
    // The entries (names as stored) left out with a warning each: skipped by the safe modes
    // or refused by the disk. Files kept by keepExisting are not among them.
    std::vector<std::u16string> skipped;
};

}  // namespace tessel::io::archive::core
