#pragma once

// The public entry points of libtqarchivecore and the host's builtin gateways.

#include <memory>
#include <string>
#include <vector>

#include <host/hxArray.hpp>

#if defined(TQARCHIVE_BUILDING)
#define TQARCHIVE_API __attribute__((visibility("default")))
#else
#define TQARCHIVE_API
#endif

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

}  // namespace tessel::io::archive::core

// The host's builtin gateways.
using hxOutput = std::unique_ptr<tessel::host::hxArray, tessel::host::hxArrayDeleter>;

TQARCHIVE_API void createArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs,
                                        const tessel::host::hxArray** prhs);
TQARCHIVE_API void extractArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs,
                                         const tessel::host::hxArray** prhs);
TQARCHIVE_API void compressgzBuiltin(int nlhs, hxOutput* plhs, int nrhs,
                                     const tessel::host::hxArray** prhs);
TQARCHIVE_API void uncompressgzBuiltin(int nlhs, hxOutput* plhs, int nrhs,
                                       const tessel::host::hxArray** prhs);
