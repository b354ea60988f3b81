#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tessel::host {

// Linux names are bytes, host text is UTF-16. The conversions below carry any byte
// sequence through UTF-16 and back unchanged: a byte that is not part of valid UTF-8
// becomes the lone surrogate U+DC80-U+DCFF of the same low byte, and goes back as that
// byte (the mapping Python calls surrogateescape).

// UTF-16 to UTF-8. An escaped byte (U+DC80-U+DCFF) is written as the byte itself; any
// other lone surrogate, which no file name can hold, becomes U+FFFD.
std::string toUtf8(std::u16string_view text);

// UTF-8 to UTF-16. Each byte that does not start a valid sequence is escaped.
std::u16string fromUtf8(std::string_view text);

// Whether bytes are valid UTF-8 throughout (what fromUtf8 decodes without escaping).
bool isValidUtf8(std::string_view text);

// The host's default UTF-16 to narrow conversion (UTF-8 on Linux).
std::string toNarrow(std::u16string_view text);

// Decodes text read from the file system (bytes, UTF-8 by convention) into UTF-16.
std::u16string fromFileSystemText(std::string_view text);

// Why a text cannot name a file as it is written.
enum class PathTextProblem {
    NulCharacter,   // the operating system would cut the name there
    LoneSurrogate,  // neither half of a pair nor an escaped byte
};
struct PathTextFault {
    PathTextProblem problem;
    std::size_t position;  // UTF-16 code unit
};
std::optional<PathTextFault> findPathTextFault(std::u16string_view text);

// Every conversion of host text into a file-system name goes through here. Text holding a
// NUL character or a lone surrogate that is not an escaped byte is refused with
// "TESSEL:host:pathHasNulCharacter" or "TESSEL:host:pathHasLoneSurrogate", whose arguments
// are the argument's name (say "archivePath" or "files[2]") and the text shown readably.
std::string toFileSystemName(std::u16string_view text, std::string_view argument);
// Raises the same error without converting.
void requireFileSystemName(std::u16string_view text, std::string_view argument);

// Text for people to read, UTF-8: control characters, backslashes and escaped bytes are
// shown as backslash escapes ("\n", "\033", "\\", "\351"), so that a name can neither
// drive the terminal nor split a line, and bytes that are not UTF-8 stay visible.
std::string toDisplayText(std::u16string_view text);
// The same for bytes (a name from the file system or a UTF-8 argument).
std::string toDisplayText(std::string_view bytes);

}  // namespace tessel::host
