#include "StandardOutput.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>

#include "CliMessages.hpp"

namespace tqarchive {

namespace {

bool outputWasClosed = false;

}  // namespace

void StandardOutput::reserveClosedDescriptors() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1 && errno == EBADF) {
            // open returns the lowest free descriptor: this one.
            ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
            if (descriptor == STDOUT_FILENO) {
                outputWasClosed = true;
            }
        }
    }
}

void StandardOutput::requireOpen() {
    if (outputWasClosed) {
        raiseError("standardOutputClosed");
    }
}

void StandardOutput::finish() {
    std::cout.flush();
    const bool failed = !std::cout || std::fflush(stdout) != 0 || std::ferror(stdout) != 0;
    if (failed) {
        const int code = errno;
        // Report once: the error path must not find the same failure again.
        std::cout.clear();
        std::clearerr(stdout);
        raiseError("standardOutputError",
                   {std::string(outputWasClosed ? std::strerror(EBADF) : std::strerror(code))});
    }
}

}  // namespace tqarchive
