#include <host/MessageIdError.hpp>
#include <host/hxArray.hpp>

namespace tessel::host {

void errorTooManyOutputs() {
    MessageIdError("TESSEL:host", "tooManyOutputs").raise();
}

void errorTooManyInputs() {
    MessageIdError("TESSEL:host", "tooManyInputs").raise();
}

void errorTooFewInputs() {
    MessageIdError("TESSEL:host", "tooFewInputs").raise();
}

}  // namespace tessel::host
