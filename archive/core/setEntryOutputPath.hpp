#pragma once

#include <string>

#include <archive_entry.h>

namespace tessel::io::archive::core {

// Re-roots the entry's pathname under the output folder (any root of the entry name is
// stripped first) and drops one trailing carriage return with a warning; a hard link's
// target is placed by the same rule. "." and ".." components are kept: the result is not
// confined to the output folder.
void setEntryOutputPath(::archive_entry* entry, const std::u16string& outputFolder);

}  // namespace tessel::io::archive::core
