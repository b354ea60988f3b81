#pragma once

#include <string>

#include "Command.hpp"

namespace tqarchive {

// The help of one command, or the program's overview for none (null).
std::string helpText(const Command* command);

}  // namespace tqarchive
