#pragma once

#include <string_view>

namespace tessel::host {

// Writes the text to standard error with one write where possible. A reader that closed
// the other end of a pipe loses the text but never raises SIGPIPE in the host.
void writeStandardError(std::string_view text) noexcept;

}  // namespace tessel::host
