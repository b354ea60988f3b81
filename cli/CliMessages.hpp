#pragma once

#include <string>
#include <vector>

#include <host/HostError.hpp>
#include <host/MessageArgument.hpp>
#include <host/MessageIdError.hpp>

namespace tqarchive {

// The program's own message identifiers: "tqarchive:<mnemonic>" for a run that failed,
// "tqarchive:usage:<mnemonic>" for a command line that cannot be run (exit status 2).
inline constexpr const char* kComponent = "tqarchive";
inline constexpr const char* kUsageComponent = "tqarchive:usage";

// How messages name standard output when it is what is being written.
inline constexpr const char16_t* kStandardOutputName = u"standard output";

[[noreturn]] void raiseError(const char* mnemonic,
                             std::vector<tessel::host::MessageArgument> arguments = {});
[[noreturn]] void raiseUsageError(const char* mnemonic,
                                  std::vector<tessel::host::MessageArgument> arguments = {});
void issueWarning(const char* mnemonic, std::vector<tessel::host::MessageArgument> arguments);

bool isUsageError(const tessel::host::HostError& error);

// "Error: TEXT [IDENTIFIER]" on standard error, for an error reported without ending the run.
void printError(const tessel::host::MessageIdError& error);

}  // namespace tqarchive
