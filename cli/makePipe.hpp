#pragma once

#include <utility>

namespace tqarchive {

// A pipe that hands a stream between the library and a thread of this program's: closed on
// exec, with room for a megabyte so that the threads hand over few, large blocks. Returns
// the read end and the write end; throws std::system_error when no pipe can be made.
std::pair<int, int> makePipe();

}  // namespace tqarchive
