#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <host/HostError.hpp>

namespace tqtest {

namespace fs = std::filesystem;

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const fs::path& path() const noexcept { return path_; }
    fs::path operator/(const fs::path& child) const { return path_ / child; }

  private:
    fs::path path_;
};

// UTF-16 text of a path (the form the library's entry points take).
std::u16string u16(const fs::path& path);
std::u16string u16(const std::string& utf8);
std::u16string u16(const char* utf8);
std::string utf8(const std::u16string& text);
std::vector<std::u16string> u16list(const std::vector<std::string>& utf8);

// The texts in order with the separator between them. (boost::algorithm::join inserts
// into a string in a way g++ 12 at -O3 warns about with a false -Wrestrict.)
template <typename Texts>
std::string join(const Texts& texts, std::string_view separator) {
    std::string joined;
    bool first = true;
    for (const auto& text : texts) {
        if (!first) {
            joined.append(separator);
        }
        joined.append(text);
        first = false;
    }
    return joined;
}

// Makes a folder the current one until the returned guard goes.
std::shared_ptr<void> enter(const fs::path& folder);

void writeFile(const fs::path& path, const std::string& bytes);
std::string readFile(const fs::path& path);
// Deterministic bytes that do not compress.
std::string randomBytes(std::size_t size, unsigned seed = 1);
// Permission bits of a path (st_mode & 07777), without following a final link.
unsigned fileMode(const fs::path& path);

struct CommandResult {
    int status = -1;     // exit status, or -1 when the command did not exit normally
    std::string output;  // standard output and standard error together
};
// Runs a shell command line (sh -c) and collects its output.
CommandResult runCommand(const std::string& commandLine);
// Single-quotes a text for the shell.
std::string shellQuote(const std::string& text);
bool toolAvailable(const std::string& tool);

// What a host error looked like: its identifier and UTF-8 arguments.
struct RaisedError {
    std::string identifier;
    std::vector<std::string> arguments;
    std::string text;
};
// Runs the call; returns the host error it raised, or nothing when it returned.
std::optional<RaisedError> raisedBy(const std::function<void()>& call);

// Runs the body in a forked child and returns the text it produced. The child's setup
// runs first (for example dropping privileges); a failed setup yields "setup-failed: ...".
std::string runInChild(const std::function<std::string()>& body,
                       const std::function<std::string()>& setup = {});
// Setup: drop to user and group 65534 (nobody), as CI runs as root.
std::string dropPrivileges();
// Setup: a private mount namespace with a tmpfs of the size mounted on the folder.
std::function<std::string()> mountTinyTmpfs(fs::path folder, std::size_t bytes);
// Whether the process may create a private mount namespace (root with CAP_SYS_ADMIN).
bool canMountTmpfs();

}  // namespace tqtest
