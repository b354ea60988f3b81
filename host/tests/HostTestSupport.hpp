#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace hosttest {

namespace fs = std::filesystem;

// A fresh folder (mode 0755, so an unprivileged child can enter it), removed at the end.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    fs::path operator/(const fs::path& child) const { return path_ / child; }

  private:
    fs::path path_;
};

void writeFile(const fs::path& path, const std::string& bytes);
std::string readFile(const fs::path& path);

// The identifier, UTF-8 arguments and text of the host error a call raised, or nothing.
struct Raised {
    std::string identifier;
    std::vector<std::string> arguments;
    std::string text;
};
std::optional<Raised> raisedBy(const std::function<void()>& call);

// Runs the body in a forked child whose standard output and error are collected; the
// body's result is the exit status (-1 when the child dies).
struct ChildResult {
    int status = -1;
    std::string output;
};
ChildResult runChild(const std::function<int()>& body);
// Re-executes this program in a role of main.cpp, with extra environment variables.
ChildResult runRole(const std::string& role,
                    const std::vector<std::pair<std::string, std::string>>& env);

}  // namespace hosttest
