#pragma once

#include <string>

#include <archive/core/archivecore.hpp>

namespace tessel::io::archive::core {

// The host arguments of the gateways that only read an archive (listing, testing):
// archive path, format [, password], with at most one output.
struct ReadingArguments {
    std::u16string archivePath;
    std::u16string format;
    ExtractOptions options;  // the password, when given

    // Checks the arrays and counts, as every gateway does first, then reads the inputs.
    static ReadingArguments read(int nlhs, hxOutput* plhs, int nrhs,
                                 const tessel::host::hxArray** prhs);
};

}  // namespace tessel::io::archive::core
