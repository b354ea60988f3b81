#include "makePipe.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tqarchive {

std::pair<int, int> makePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    // A smaller pipe (the limit may forbid a megabyte) only costs speed.
    ::fcntl(ends[1], F_SETPIPE_SZ, 1 << 20);
    return {ends[0], ends[1]};
}

}  // namespace tqarchive
