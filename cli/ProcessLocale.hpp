#pragma once

namespace tqarchive {

// Sets the process locale from the environment and falls back to C.UTF-8 when that fails
// or yields a codeset other than UTF-8: libarchive converts entry names through LC_CTYPE,
// so non-ASCII names need a UTF-8 locale. Returns whether a UTF-8 locale is in effect.
bool useUtf8Locale();

}  // namespace tqarchive
