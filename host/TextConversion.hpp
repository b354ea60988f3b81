#pragma once

#include <string>
#include <string_view>

namespace tessel::host {

// UTF-16 to UTF-8. Invalid input (a lone surrogate) is skipped, never undefined.
std::string toUtf8(std::u16string_view text);

// UTF-8 to UTF-16. Invalid sequences are skipped, never undefined.
std::u16string fromUtf8(std::string_view text);

// The host's default UTF-16 to narrow conversion (UTF-8 on Linux).
std::string toNarrow(std::u16string_view text);

// Decodes text read from the file system (UTF-8 on Linux) into UTF-16.
std::u16string fromFileSystemText(std::string_view text);

}  // namespace tessel::host
