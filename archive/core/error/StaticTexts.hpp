#pragma once

#include <string>

namespace tessel::io::archive::core {

// Texts shared by the status checks, initialised once on first use and never destroyed:
// a failure in a call made while the process exits still reads them.
const std::string& libarchiveMessagePrefix();  // "[LIBARCHIVE_MESSAGE]: "
const std::string& fallbackText0();            // ""
const std::string& fallbackText1();            // archive_error_string returned NULL
const std::string& fallbackText2();            // invalid rule value

inline constexpr const char* kLibarchiveErrnoLabel = "[LIBARCHIVE_ERRNO]: ";
inline constexpr const char* kInternalMessageLabel = "[INTERNAL_MESSAGE]: ";
inline constexpr const char* kInternalErrorMessageLabel = "[INTERNAL ERROR MESSAGE]: ";

}  // namespace tessel::io::archive::core
