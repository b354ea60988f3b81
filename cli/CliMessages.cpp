#include "CliMessages.hpp"

#include <cstdio>

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

void printError(const MessageIdError& error) {
    const std::string line =
        "Error: " + tessel::host::lookupMessageUtf8(error.identifier(), error.arguments()) + " [" +
        error.identifier() + "]\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}

}  // namespace tqarchive
