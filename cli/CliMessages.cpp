#include "CliMessages.hpp"

#include <host/MessageIdError.hpp>

namespace tqarchive {

using tessel::host::MessageArgument;
using tessel::host::MessageIdError;

void raiseError(const char* mnemonic, std::vector<MessageArgument> arguments) {
    MessageIdError(kComponent, mnemonic, std::move(arguments)).raise();
}

void raiseUsageError(const char* mnemonic, std::vector<MessageArgument> arguments) {
    MessageIdError(kUsageComponent, mnemonic, std::move(arguments)).raise();
}

void issueWarning(const char* mnemonic, std::vector<MessageArgument> arguments) {
    MessageIdError(kComponent, mnemonic, std::move(arguments)).warn();
}

bool isUsageError(const tessel::host::HostError& error) {
    return error.GetBaseMsgIDObj().component() == kUsageComponent;
}

}  // namespace tqarchive
