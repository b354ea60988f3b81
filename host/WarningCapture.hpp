#pragma once

#include <string>
#include <vector>

namespace tessel::host {

struct IssuedWarning {
    std::string identifier;
    std::vector<std::string> arguments;  // UTF-8
};

// While alive, records the warnings issued on its thread instead of printing them.
// Captures nest: the innermost one records.
class WarningCapture {
  public:
    WarningCapture();
    ~WarningCapture();
    WarningCapture(const WarningCapture&) = delete;
    WarningCapture& operator=(const WarningCapture&) = delete;

    const std::vector<IssuedWarning>& warnings() const noexcept { return warnings_; }

    // Used by issueHostWarning: the innermost capture of this thread, or null.
    static WarningCapture* current() noexcept;
    void record(IssuedWarning warning) { warnings_.push_back(std::move(warning)); }

  private:
    std::vector<IssuedWarning> warnings_;
    WarningCapture* previous_;
};

}  // namespace tessel::host
