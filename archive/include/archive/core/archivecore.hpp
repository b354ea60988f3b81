#pragma once

// The public entry points of libtqarchivecore and the host's builtin gateways.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <archive/core/ArchiveType.hpp>
#include <archive/core/CreateOptions.hpp>
#include <archive/core/EntryInfo.hpp>
#include <archive/core/ExtractOptions.hpp>
#include <archive/core/StreamCompressor.hpp>
#include <archive/core/TestReport.hpp>
#include <archive/core/api.hpp>
#include <archive/core/builtins.hpp>

namespace tessel::io::archive::core {

// Packs each file under the entry name at the same position into a new archive.
// format: "zip", "tar", "gz", "tgz", "all"; any other text chooses by the archive's extension.
// Returns the entry names written, in input order.
TQARCHIVE_API std::vector<std::u16string> createArchive(
    const std::u16string& archivePath, const std::vector<std::u16string>& files,
    const std::vector<std::u16string>& entryNames, const std::u16string& format);

// The same, with a passphrase and a zip encryption method ("zipcrypt", "aes128", "aes256").
TQARCHIVE_API std::vector<std::u16string> createArchive(
    const std::u16string& archivePath, const std::vector<std::u16string>& files,
    const std::vector<std::u16string>& entryNames, const std::u16string& format,
    const std::u16string& password, const std::u16string& encryptionMethod);

// Gzips each file to <name>.gz in outputFolder (beside the input when empty).
TQARCHIVE_API std::vector<std::u16string> compressgz(const std::vector<std::u16string>& files,
                                                     const std::u16string& outputFolder);

// Extracts every entry of an archive into outputFolder; returns the paths written.
TQARCHIVE_API std::vector<std::u16string> extractArchive(const std::u16string& archivePath,
                                                         const std::u16string& outputFolder,
                                                         const std::u16string& format,
                                                         const std::u16string& password);

// Extracts only the named entries.
TQARCHIVE_API std::vector<std::u16string> extractArchive(
    const std::u16string& archivePath, const std::u16string& outputFolder,
    const std::u16string& format, const std::vector<std::u16string>& entryNames,
    const std::u16string& password);

// Decompresses each gzip file; with exactOutputPath, outputFolder names the output file.
TQARCHIVE_API std::vector<std::u16string> uncompressgz(const std::vector<std::u16string>& files,
                                                       const std::u16string& outputFolder,
                                                       bool exactOutputPath);

// Raises the extraction error when the password does not open the first entry.
TQARCHIVE_API void sampleReadWithPassword(const std::u16string& archivePath,
                                          const std::u16string& outputFolder,
                                          const std::u16string& format,
                                          const std::u16string& password);

// ---- Calls with options, and helpers beside the entry points above ----

// extractArchive with options: confinement and safe modes, selection by pattern,
// keep-existing, safe writes, cleanup on failure, progress and cancellation, reading
// from a descriptor. With default options it behaves as the four-argument extractArchive
// (selection aside: see ExtractOptions::select).
TQARCHIVE_API ExtractResult extractArchiveWithOptions(const std::u16string& archivePath,
                                                      const std::u16string& outputFolder,
                                                      const std::u16string& format,
                                                      const ExtractOptions& options);

// createArchive with options: compression filter and level, encryption, a reported final
// close, progress and cancellation, writing to a descriptor.
TQARCHIVE_API std::vector<std::u16string> createArchiveWithOptions(
    const std::u16string& archivePath, const std::vector<std::u16string>& files,
    const std::vector<std::u16string>& entryNames, const std::u16string& format,
    const CreateOptions& options);

// Gzips one file to exactly outputPath (or to options.outputDescriptor); returns the path.
TQARCHIVE_API std::u16string compressgzToFile(const std::u16string& file,
                                              const std::u16string& outputPath,
                                              const CreateOptions& options);

// uncompressgz with options (progress, cancellation, reading from or writing to a
// descriptor); the gzip trailers are checked as by uncompressgz.
TQARCHIVE_API std::vector<std::u16string> uncompressgzWithOptions(
    const std::vector<std::u16string>& files, const std::u16string& outputFolder,
    bool exactOutputPath, const ExtractOptions& options);

// The names compressgz and uncompressgz give their outputs: the input's file name with
// ".gz" appended; the input's file name without its last extension.
TQARCHIVE_API std::u16string gzipOutputName(const std::u16string& inputPath);
TQARCHIVE_API std::u16string gunzipOutputName(const std::u16string& inputPath);

// What an archive's name says it is (ArchiveType.hpp lists the extensions).
TQARCHIVE_API std::optional<ArchiveType> archiveTypeFromName(std::u16string_view name);

// Calls visit for every entry, in archive order, reading headers only.
using EntryVisitor = std::function<void(const EntryInfo&)>;
TQARCHIVE_API void listArchive(const std::u16string& archivePath, const std::u16string& format,
                               const ExtractOptions& options, const EntryVisitor& visit);

// Reads every entry's data and checks it (zip CRCs, decryption, gzip trailers); format
// "gz" tests a gzip file. Damage is reported, not raised; an archive that cannot be opened
// or read on raises the extraction errors.
TQARCHIVE_API TestReport testArchive(const std::u16string& archivePath,
                                     const std::u16string& format, const ExtractOptions& options,
                                     const EntryVisitor& visit = {});

}  // namespace tessel::io::archive::core
