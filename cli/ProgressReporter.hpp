#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include <archive/core/Progress.hpp>

namespace tqarchive {

// What a run shows on standard error while the library works, through the options'
// progress callback: with -v each name as it is started; on a terminal, once the work has
// lasted a second, one line redrawn in place with the bytes done of the total, the rate
// and the current entry; nothing with --quiet. The callback also carries Ctrl-C to the
// library: it returns false once a signal came.
class ProgressReporter {
  public:
    ProgressReporter(bool quiet, bool verbose);
    ~ProgressReporter();
    ProgressReporter(const ProgressReporter&) = delete;
    ProgressReporter& operator=(const ProgressReporter&) = delete;

    // Valid while this reporter lives.
    tessel::io::archive::core::ProgressCallback callback();
    // Shows a name as -v does (for work that does not go through the library).
    void started(std::u16string_view name);
    // Clears the progress line, if one is shown.
    void clear();

  private:
    bool update(const tessel::io::archive::core::Progress& progress);
    void draw(const tessel::io::archive::core::Progress& progress);

    using Clock = std::chrono::steady_clock;
    bool verbose_;
    bool drawProgress_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point lastDrawn_{};
    bool lineShown_ = false;
};

}  // namespace tqarchive
