#include <archive/core/archivecore.hpp>

#include <string>
#include <vector>

using tessel::host::hxArray;

// Host arguments: archive path, output folder, format [, patterns [, password]].
// Extraction as a careful tool does it (ExtractOptions::safe()): nothing lands outside
// the output folder or goes through a symbolic link, device files are skipped, set-ID
// bits cleared, and a failed call leaves nothing it created. A pattern that selected no
// entry raises entryNotFound once the rest is extracted.
void extractArchiveConfinedBuiltin(int nlhs, hxOutput* plhs, int nrhs, const hxArray** prhs) {
    using namespace tessel::host;
    namespace core = tessel::io::archive::core;
    checkBuiltinArrays(nlhs, plhs, nrhs, prhs);
    if (nlhs > 1) {
        errorTooManyOutputs();
    }
    if (nrhs > 5) {
        errorTooManyInputs();
    }
    if (nrhs < 3) {
        errorTooFewInputs();
    }

    const std::u16string archivePath = readHostString(prhs[0]);
    const std::u16string outputFolder = readHostString(prhs[1]);
    const std::u16string format = readHostString(prhs[2]);
    core::ExtractOptions options = core::ExtractOptions::safe();
    if (nrhs >= 4) {
        options.select = readHostStringArray(prhs[3]);
    }
    if (nrhs == 5) {
        options.password = readHostString(prhs[4]);
    }

    const core::ExtractResult result =
        core::extractArchiveWithOptions(archivePath, outputFolder, format, options);
    if (!result.notFound.empty()) {
        result.notFound.front().raise();
    }

    if (plhs != nullptr) {
        plhs[0].reset(createHostCell(result.written));
    }
}
