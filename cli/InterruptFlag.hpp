#pragma once

namespace tqarchive {

// SIGINT and SIGTERM ask the run to stop: the handler only records the signal, and the
// work polls it (the progress callback returns false, so the library stops and cleans up;
// no output file is renamed into place). A second signal ends the program at once.
class InterruptFlag {
  public:
    static void install();
    // The signal received, or 0.
    static int signal() noexcept;
    // Raises "tqarchive:interrupted" when a signal was received.
    static void check();
    // The exit status after the signal: 128 + its number (130 for SIGINT, 143 for SIGTERM).
    static int exitStatus() noexcept;
};

}  // namespace tqarchive
