#pragma once

#include <optional>
#include <string>

#include "Command.hpp"

namespace tqarchive {

// The spelling of an option the command takes (any command's when command is null) that
// is nearest to an unknown one, when it is near enough to be what the user meant: at most
// two letters added, dropped or changed ("--exlude" gives "--exclude").
std::optional<std::string> nearestOption(const std::string& unknown, const Command* command);

}  // namespace tqarchive
