#pragma once

#include <string>
#include <variant>

namespace tessel::host {

// One argument of a message-identified error: alternative 0 UTF-16, alternative 1 UTF-8.
using MessageArgument = std::variant<std::u16string, std::string>;

// The argument as UTF-8.
std::string argumentText(const MessageArgument& argument);

}  // namespace tessel::host
