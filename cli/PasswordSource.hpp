#pragma once

#include <optional>
#include <string>

#include "CommandLine.hpp"

namespace tqarchive {

// Where the password of a run comes from: --password P, --password-file F (its first
// line), or a prompt on the terminal for a bare --password. Nothing when none was asked.
// When creating (confirm), the prompt asks twice: a mistyped password would lock the
// archive for good.
class PasswordSource {
  public:
    static std::optional<std::string> resolve(const CommandLine& commandLine, bool confirm);

  private:
    static std::string fromFile(const std::string& path);
    static std::string fromTerminal(bool confirm);
    static std::string ask(const char* prompt);
};

}  // namespace tqarchive
