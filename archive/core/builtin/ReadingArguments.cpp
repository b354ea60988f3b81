#include <archive/core/builtin/ReadingArguments.hpp>

namespace tessel::io::archive::core {

ReadingArguments ReadingArguments::read(int nlhs, hxOutput* plhs, int nrhs,
                                        const tessel::host::hxArray** prhs) {
    using namespace tessel::host;
    checkBuiltinArrays(nlhs, plhs, nrhs, prhs);
    if (nlhs > 1) {
        errorTooManyOutputs();
    }
    if (nrhs > 3) {
        errorTooManyInputs();
    }
    if (nrhs < 2) {
        errorTooFewInputs();
    }
    ReadingArguments arguments;
    arguments.archivePath = readHostString(prhs[0]);
    arguments.format = readHostString(prhs[1]);
    if (nrhs == 3) {
        arguments.options.password = readHostString(prhs[2]);
    }
    return arguments;
}

}  // namespace tessel::io::archive::core
