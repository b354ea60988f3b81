#pragma once

#include <string_view>

namespace tessel::host {

class MessageIdError;

// Writes the text to standard error with one write where possible. A reader that closed
// the other end of a pipe loses the text but never raises SIGPIPE in the host.
void writeStandardError(std::string_view text) noexcept;

// Tells a problem of the host's own setup (a log setting it cannot use) as a warning line
// on standard error; never to a WarningCapture: it is not about the call that came upon it.
void writeNotice(const MessageIdError& problem);

}  // namespace tessel::host
