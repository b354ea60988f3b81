#pragma once

#include <stdexcept>
#include <string>

namespace tessel::host {

// The host's file-system failure. Only the access-denied kind is told apart by callers.
class FileSystemError : public std::runtime_error {
  public:
    static constexpr int AccessDenied = 6;
    static constexpr int NotFound = 2;
    static constexpr int Other = 1;

    FileSystemError(int kind, const std::string& what);

    int kind() const noexcept { return kind_; }

  private:
    int kind_;
};

}  // namespace tessel::host
