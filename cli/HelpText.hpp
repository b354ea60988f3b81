#pragma once

#include <string>

namespace tqarchive {

// The help of one command, or the program's overview for an empty command.
std::string helpText(const std::string& command);

}  // namespace tqarchive
