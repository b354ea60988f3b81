#include <archive/core/archivecore.hpp>

#include <string>
#include <vector>

using tessel::host::hxArray;

// Host arguments: files [, output folder].
// The output folder slot is read whatever nrhs says. The host's calling convention gives
// every gateway room for its maximum number of inputs and fills the slots past nrhs with
// an empty text, so one input means "beside each input". A host that leaves the slot
// null gets its own "TESSEL:host:expectedString" error from the read, never a crash.
void compressgzBuiltin(int nlhs, hxOutput* plhs, int nrhs, const hxArray** prhs) {
    using namespace tessel::host;
    checkBuiltinArrays(nlhs, plhs, nrhs, prhs);
    if (nlhs > 1) {
        errorTooManyOutputs();
    }
    if (nrhs > 2) {
        errorTooManyInputs();
    }
    if (nrhs < 1) {
        errorTooFewInputs();
    }

    const std::vector<std::u16string> files = readHostStringArray(prhs[0]);
    const std::u16string outputFolder = readHostString(prhs[1]);

    const std::vector<std::u16string> written =
        tessel::io::archive::core::compressgz(files, outputFolder);
    if (plhs != nullptr) {
        plhs[0].reset(createHostCell(written));
    }
}
