#include <archive/core/error/FailureTable.hpp>

#include <string>

#include <host/MessageIdError.hpp>

namespace tessel::io::archive::core {

void raiseMessage(const RaisedMessage& message,
                  std::vector<tessel::host::MessageArgument> arguments) {
    const tessel::host::MessageIdError error(message.component, message.mnemonic,
                                             std::move(arguments));
    if (message.identifier != nullptr) {
        error.raise(message.identifier);
    }
    error.raise();
}

}  // namespace tessel::io::archive::core
