#pragma once

#include <archive/core/ExtractOptions.hpp>

#include "CommandLine.hpp"
#include "ProgressReporter.hpp"

namespace tqarchive {

// What list and test read with: the password, standard input for "-", and the reporter's
// callback, which stops the reading on Ctrl-C. Raises "tqarchive:archiveNotFound" for an
// archive that is not a file.
tessel::io::archive::core::ExtractOptions readingOptions(const CommandLine& commandLine,
                                                         ProgressReporter& reporter);

}  // namespace tqarchive
