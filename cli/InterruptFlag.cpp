#include "InterruptFlag.hpp"

#include <atomic>
#include <csignal>

#include "CliMessages.hpp"

namespace tqarchive {

namespace {

std::atomic<int> received{0};
static_assert(std::atomic<int>::is_always_lock_free, "the signal handler needs a lock-free flag");

extern "C" void onSignal(int number) {
    received.store(number, std::memory_order_relaxed);
}

}  // namespace

void InterruptFlag::install() {
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    // No SA_RESTART: a password prompt waiting on the terminal returns at once. The handler
    // is reset after the first signal, so a second one ends a run that does not stop.
    action.sa_flags = SA_RESETHAND;
    for (const int number : {SIGINT, SIGTERM}) {
        // A signal ignored by whoever started the program (nohup, a shell's background
        // job) stays ignored.
        struct sigaction previous {};
        if (sigaction(number, nullptr, &previous) == 0 && previous.sa_handler != SIG_IGN) {
            sigaction(number, &action, nullptr);
        }
    }
}

int InterruptFlag::signal() noexcept {
    return received.load(std::memory_order_relaxed);
}

void InterruptFlag::check() {
    if (const int number = signal()) {
        raiseError("interrupted", {std::string(number == SIGINT ? "SIGINT" : "SIGTERM")});
    }
}

int InterruptFlag::exitStatus() noexcept {
    return 128 + signal();
}

}  // namespace tqarchive
