#include <errno.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <string>

#include <host/HostError.hpp>
#include <host/MessageIdError.hpp>

#include "StandardError.hpp"

namespace tessel::host {

void writeStandardError(std::string_view text) noexcept {
    const int savedErrno = errno;
    // SIGPIPE is blocked on this thread while writing; one raised by the write stays
    // pending and is taken back below, unless it was pending before for another reason.
    sigset_t pipeSignal;
    sigset_t previousMask;
    sigset_t pending;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal, &previousMask);
    sigpending(&pending);
    const bool pendingBefore = sigismember(&pending, SIGPIPE) == 1;
    bool readerGone = false;
    while (!text.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            readerGone = errno == EPIPE;
            break;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    if (readerGone && !pendingBefore) {
        const timespec noWait{0, 0};
        while (sigtimedwait(&pipeSignal, nullptr, &noWait) < 0 && errno == EINTR) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
    errno = savedErrno;
}

void writeNotice(const MessageIdError& problem) {
    const std::string identifier = problem.identifier();
    writeStandardError("Warning: " + lookupMessageUtf8(identifier, problem.arguments()) + " [" +
                       identifier + "]\n");
}

}  // namespace tessel::host
