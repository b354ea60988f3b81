#include "TestSupport.hpp"

#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#include <host/TextConversion.hpp>

namespace tqtest {

TempDir::TempDir() {
    std::string pattern = (fs::temp_directory_path() / "tqarchive-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    // Give back permissions a test took away, so that everything can be removed.
    for (auto it = fs::recursive_directory_iterator(
             path_, fs::directory_options::skip_permission_denied, ignored);
         it != fs::recursive_directory_iterator(); it.increment(ignored)) {
        if (!it->is_symlink(ignored)) {
            fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
        }
    }
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(path_, ignored);
}

std::shared_ptr<void> enter(const fs::path& folder) {
    const fs::path saved = fs::current_path();
    fs::current_path(folder);
    return std::shared_ptr<void>(nullptr, [saved](void*) { fs::current_path(saved); });
}

std::u16string u16(const fs::path& path) {
    return tessel::host::fromUtf8(path.string());
}
std::u16string u16(const std::string& utf8) {
    return tessel::host::fromUtf8(utf8);
}
std::u16string u16(const char* utf8) {
    return tessel::host::fromUtf8(utf8);
}
std::string utf8(const std::u16string& text) {
    return tessel::host::toUtf8(text);
}

std::vector<std::u16string> u16list(const std::vector<std::string>& utf8) {
    std::vector<std::u16string> result;
    for (const auto& item : utf8) {
        result.push_back(u16(item));
    }
    return result;
}

void writeFile(const fs::path& path, const std::string& bytes) {
    if (path.has_parent_path()) {
        fs::create_directories(path.parent_path());
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw std::runtime_error("cannot read " + path.string());
    }
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string randomBytes(std::size_t size, unsigned seed) {
    std::mt19937 generator(seed);
    std::string bytes(size, '\0');
    for (auto& byte : bytes) {
        byte = static_cast<char>(generator() & 0xff);
    }
    return bytes;
}

unsigned fileMode(const fs::path& path) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) {
        throw std::runtime_error("cannot stat " + path.string());
    }
    return info.st_mode & 07777;
}

CommandResult runCommand(const std::string& commandLine) {
    CommandResult result;
    const std::string full = commandLine + " 2>&1";
    FILE* pipe = popen(full.c_str(), "r");
    if (pipe == nullptr) {
        return result;
    }
    std::array<char, 4096> buffer{};
    std::size_t count = 0;
    while ((count = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
        result.output.append(buffer.data(), count);
    }
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

std::string shellQuote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

bool toolAvailable(const std::string& tool) {
    return runCommand("command -v " + shellQuote(tool) + " >/dev/null").status == 0;
}

std::optional<RaisedError> raisedBy(const std::function<void()>& call) {
    try {
        call();
    } catch (const tessel::host::HostError& error) {
        return RaisedError{error.GetID(), error.arguments(), error.what()};
    }
    return std::nullopt;
}

namespace {

void writeAll(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n <= 0) {
            return;
        }
        done += static_cast<std::size_t>(n);
    }
}

}  // namespace

std::string runInChild(const std::function<std::string()>& body,
                       const std::function<std::string()>& setup) {
    int fds[2];
    if (pipe(fds) != 0) {
        throw std::runtime_error("pipe failed");
    }
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid < 0) {
        throw std::runtime_error("fork failed");
    }
    if (pid == 0) {
        ::close(fds[0]);
        std::string text;
        try {
            const std::string problem = setup ? setup() : std::string();
            text = problem.empty() ? body() : "setup-failed: " + problem;
        } catch (const std::exception& error) {
            text = std::string("exception: ") + error.what();
        } catch (...) {
            text = "exception: unknown";
        }
        writeAll(fds[1], text);
        ::close(fds[1]);
        _exit(0);
    }
    ::close(fds[1]);
    std::string text;
    std::array<char, 4096> buffer{};
    ssize_t n = 0;
    while ((n = ::read(fds[0], buffer.data(), buffer.size())) > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(n));
    }
    ::close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (!WIFEXITED(status)) {
        return "child-crashed";
    }
    return text;
}

std::string dropPrivileges() {
    if (getuid() != 0) {
        return {};  // already unprivileged
    }
    if (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0) {
        return "cannot drop privileges";
    }
    return {};
}

std::function<std::string()> mountTinyTmpfs(fs::path folder, std::size_t bytes) {
    return [folder, bytes]() -> std::string {
        if (unshare(CLONE_NEWNS) != 0) {
            return "unshare failed";
        }
        if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
            return "cannot make mounts private";
        }
        fs::create_directories(folder);
        const std::string options = "size=" + std::to_string(bytes);
        if (mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()) != 0) {
            return "cannot mount tmpfs";
        }
        return {};
    };
}

bool canMountTmpfs() {
    static const bool can = [] {
        TempDir dir;
        return runInChild([] { return std::string("ok"); },
                          mountTinyTmpfs(dir.path() / "m", 65536)) == "ok";
    }();
    return can;
}

}  // namespace tqtest
