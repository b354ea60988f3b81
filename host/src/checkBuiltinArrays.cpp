#include <string>

#include <host/MessageIdError.hpp>
#include <host/hxArray.hpp>

namespace tessel::host {

void checkBuiltinArrays(int nlhs, const hxArrayPtr* plhs, int nrhs, const hxArray* const* prhs) {
    if (nlhs > 0 && plhs == nullptr) {
        MessageIdError("TESSEL:host", "nullOutputs", {std::to_string(nlhs)}).raise();
    }
    if (nrhs > 0 && prhs == nullptr) {
        MessageIdError("TESSEL:host", "nullInputs", {std::to_string(nrhs)}).raise();
    }
}

}  // namespace tessel::host
