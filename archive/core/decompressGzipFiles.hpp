#pragma once

#include <string>
#include <vector>

#include <archive/core/ExtractOptions.hpp>

namespace tessel::io::archive::core {

// The one loop of gzip decompression, shared by uncompressgz and uncompressgzWithOptions:
// one reader per input, one disk writer for the call, the output named after the input
// (or the output folder taken as the file), each member checked against its trailer.
// withOptions: progress, cancellation, descriptors and cleanup as the options say, and
// cancellation reported as such.
std::vector<std::u16string> decompressGzipFiles(const std::vector<std::u16string>& files,
                                                const std::u16string& outputFolder,
                                                bool exactOutputPath, const ExtractOptions& options,
                                                bool withOptions);

}  // namespace tessel::io::archive::core
