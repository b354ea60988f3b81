#pragma once

#include <string>

#include <archive_entry.h>

namespace tessel::io::archive::core {

// Re-roots the entry's pathname under the output folder (any root of the entry name is
// stripped first) and drops one trailing carriage return with a warning; a hard link's
// target is placed by the same rule. "." and ".." components are kept: the result is not
// confined to the output folder. With stripComponents, that many leading components of
// the name and of a hard link's target go first ("/" and "." are no components); false
// when nothing is left of either, and the entry is then left as it was.
bool setEntryOutputPath(::archive_entry* entry, const std::u16string& outputFolder,
                        unsigned stripComponents = 0);

}  // namespace tessel::io::archive::core
