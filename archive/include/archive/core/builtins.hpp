#pragma once

// The host's builtin gateways: each checks the argument counts, reads the host arrays,
// makes one library call and hands the result back as a host array.

#include <memory>

#include <archive/core/api.hpp>
#include <host/hxArray.hpp>

using hxOutput = std::unique_ptr<tessel::host::hxArray, tessel::host::hxArrayDeleter>;

TQARCHIVE_API void createArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs,
                                        const tessel::host::hxArray** prhs);
TQARCHIVE_API void extractArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs,
                                         const tessel::host::hxArray** prhs);
TQARCHIVE_API void compressgzBuiltin(int nlhs, hxOutput* plhs, int nrhs,
                                     const tessel::host::hxArray** prhs);
TQARCHIVE_API void uncompressgzBuiltin(int nlhs, hxOutput* plhs, int nrhs,
                                       const tessel::host::hxArray** prhs);

// Gateways of the calls with options, in the same style: counts first, then the inputs,
// then one call.
// listArchiveBuiltin(archive, format [, password]) -> the entry names.
TQARCHIVE_API void listArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs,
                                      const tessel::host::hxArray** prhs);
// testArchiveBuiltin(archive, format [, password]) -> the names of damaged entries (empty
// when sound); each damage is also issued as a warning.
TQARCHIVE_API void testArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs,
                                      const tessel::host::hxArray** prhs);
// extractArchiveConfinedBuiltin(archive, outputFolder, format [, patterns [, password]]):
// extraction with ExtractOptions::safe(); a pattern matching nothing raises entryNotFound
// after the rest is extracted.
TQARCHIVE_API void extractArchiveConfinedBuiltin(int nlhs, hxOutput* plhs, int nrhs,
                                                 const tessel::host::hxArray** prhs);
