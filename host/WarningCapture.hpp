#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tessel::host {

struct IssuedWarning {
    std::string identifier;
    std::vector<std::string> arguments;  // UTF-8
};

// While alive, records the warnings issued on the thread that made it instead of printing
// them. Captures nest: the innermost one of a thread records. A capture may be destroyed
// in any order and on any thread: it leaves its thread's captures wherever it sits.
class WarningCapture {
  public:
    WarningCapture();
    ~WarningCapture();
    WarningCapture(const WarningCapture&) = delete;
    WarningCapture& operator=(const WarningCapture&) = delete;

    // The warnings recorded so far, in order (a copy: its thread may still be adding).
    std::vector<IssuedWarning> warnings() const;

    // Used by issueHostWarning: records the warning in the innermost capture of the
    // calling thread; false when the thread has none.
    static bool recordOnThisThread(IssuedWarning& warning);

  private:
    std::uint64_t thread_;
    std::vector<IssuedWarning> warnings_;
};

}  // namespace tessel::host
