#pragma once

#include <string>
#include <vector>

#include <archive/core/ExtractOptions.hpp>
#include <archive/core/error/GunzipFailures.hpp>

namespace tessel::io::archive::core {

// The one loop of gzip decompression, behind uncompressgz and uncompressgzWithOptions:
// one reader per input, one disk writer for the call, the output named after the input
// (or the output folder taken as the file), each member checked against its trailer;
// progress, cancellation, descriptors and cleanup as the options say.
std::vector<std::u16string> decompressGzipFiles(const std::vector<std::u16string>& files,
                                                const std::u16string& outputFolder,
                                                bool exactOutputPath, const ExtractOptions& options,
                                                GunzipFailureTable failures);

}  // namespace tessel::io::archive::core
