#include <archive/core/archivecore.hpp>

#include <string>
#include <vector>

using tessel::host::hxArray;

// Host arguments: files, output folder, exact-output-path flag (first element, nonzero
// meaning the output folder argument names the output file itself).
void uncompressgzBuiltin(int nlhs, hxOutput* plhs, int nrhs, const hxArray** prhs) {
    using namespace tessel::host;
    checkBuiltinArrays(nlhs, plhs, nrhs, prhs);
    if (nlhs > 1) {
        errorTooManyOutputs();
    }
    if (nrhs > 3) {
        errorTooManyInputs();
    }
    if (nrhs != 3) {
        errorTooFewInputs();
    }

    const std::vector<std::u16string> files = readHostStringArray(prhs[0]);
    const std::u16string outputFolder = readHostString(prhs[1]);
    const std::vector<unsigned char> flags = readHostLogicals(prhs[2]);
    // An empty logical array has no first byte; it reads as false.
    const bool exactOutputPath = !flags.empty() && flags.front() != 0;

    const std::vector<std::u16string> written =
        tessel::io::archive::core::uncompressgz(files, outputFolder, exactOutputPath);
    if (plhs != nullptr) {
        plhs[0].reset(createHostCell(written));
    }
}
