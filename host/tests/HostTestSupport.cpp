#include "HostTestSupport.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <host/HostError.hpp>

namespace hosttest {

TempFolder::TempFolder() {
    std::string pattern = (fs::temp_directory_path() / "tqhost-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
    path_ = pattern;
    fs::permissions(path_, fs::perms(0755));
}

void writeFile(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string readFile(const fs::path& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

std::optional<Raised> raisedBy(const std::function<void()>& call) {
    try {
        call();
    } catch (const tessel::host::HostError& error) {
        return Raised{error.GetID(), error.arguments(), error.what()};
    }
    return std::nullopt;
}

ChildResult runChild(const std::function<int()>& body) {
    int fds[2];
    if (pipe(fds) != 0) {
        throw std::runtime_error("pipe failed");
    }
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(fds[1], STDOUT_FILENO);
        dup2(fds[1], STDERR_FILENO);
        ::close(fds[0]);
        ::close(fds[1]);
        int status = 2;
        try {
            status = body();
        } catch (const std::exception& error) {
            std::printf("exception: %s", error.what());
        }
        std::fflush(nullptr);
        _exit(status);
    }
    ::close(fds[1]);
    ChildResult result;
    char buffer[4096];
    for (ssize_t n; (n = ::read(fds[0], buffer, sizeof buffer)) > 0;) {
        result.output.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

ChildResult runRole(const std::string& role,
                    const std::vector<std::pair<std::string, std::string>>& env) {
    return runChild([&] {
        setenv("TQHOST_TEST_ROLE", role.c_str(), 1);
        for (const auto& [name, value] : env) {
            setenv(name.c_str(), value.c_str(), 1);
        }
        char name[] = "host_tests";
        char* const argv[] = {name, nullptr};
        execv("/proc/self/exe", argv);
        return 127;
    });
}

}  // namespace hosttest
