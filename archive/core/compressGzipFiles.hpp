#pragma once

#include <optional>
#include <string>
#include <vector>

#include <archive/core/CreateOptions.hpp>
#include <archive/core/error/GzipFailures.hpp>

namespace tessel::io::archive::core {

// Where each input's gzip goes.
struct GzipOutputs {
    // The folder of every output, named after its input (gzipOutputName); empty: beside
    // the input.
    std::u16string folder;
    // Set: the one input's output is exactly this path, which also names it in messages.
    std::optional<std::u16string> exactPath;
};

// The one loop of gzip compression, behind compressgz and compressgzToFile: each input is
// read strictly (an unreadable input is an error) and written as one gzip stream, with the
// options' level, descriptor, progress and final close. Returns the outputs written
// (those of empty inputs aside). What becomes of the output after a failure is the
// table's to say.
std::vector<std::u16string> compressGzipFiles(const std::vector<std::u16string>& files,
                                              const GzipOutputs& outputs,
                                              const CreateOptions& options,
                                              GzipFailureTable failures);

}  // namespace tessel::io::archive::core
