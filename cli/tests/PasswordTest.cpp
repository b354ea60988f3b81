// Passwords from a file and from a terminal prompt without echo; a wrong password leaves
// the output folder untouched.

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "CliRun.hpp"

namespace {

using namespace clitest;
using tqtest::readFile;
using tqtest::TempDir;
using tqtest::writeFile;

// Runs tqarchive on a pseudo-terminal, answers its prompt, returns what the terminal showed.
std::string runOnTerminal(const fs::path& folder, const std::vector<std::string>& args,
                          const std::string& answer, int& status) {
    int master = -1;
    const pid_t pid = forkpty(&master, nullptr, nullptr, nullptr);
    if (pid == 0) {
        if (chdir(folder.c_str()) != 0) {
            _exit(127);
        }
        std::vector<char*> argv{const_cast<char*>(TQARCHIVE_PROGRAM)};
        for (const auto& arg : args) {
            argv.push_back(const_cast<char*>(arg.c_str()));
        }
        argv.push_back(nullptr);
        execv(TQARCHIVE_PROGRAM, argv.data());
        _exit(127);
    }
    std::string shown;
    char buffer[256];
    bool answered = false;
    for (;;) {
        const ssize_t n = read(master, buffer, sizeof buffer);
        if (n <= 0) {
            break;  // EIO once the program has exited
        }
        shown.append(buffer, static_cast<std::size_t>(n));
        if (!answered && shown.find("Password: ") != std::string::npos) {
            // Give the program the moment it needs to turn echo off after the prompt.
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            const std::string line = answer + "\n";
            EXPECT_EQ(write(master, line.data(), line.size()), static_cast<ssize_t>(line.size()));
            answered = true;
        }
    }
    close(master);
    int raw = 0;
    waitpid(pid, &raw, 0);
    status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return shown;
}

TEST(PasswordPrompt, AskedOnTheTerminalWithoutEcho) {
    TempDir dir;
    writeFile(dir / "s.txt", "secret data");
    int status = -1;
    const std::string shown =
        runOnTerminal(dir.path(), {"zip", "s.zip", "s.txt", "--password"}, "hunter2", status);
    EXPECT_EQ(status, 0) << shown;
    EXPECT_EQ(shown.find("hunter2"), std::string::npos) << shown;

    writeFile(dir / "pw", "hunter2\n");
    const auto opened = tqarchive(dir.path(), "unzip s.zip -d out --password-file pw");
    ASSERT_EQ(opened.status, 0) << opened.err;
    EXPECT_EQ(readFile(dir / "out/s.txt"), "secret data");
}

TEST(PasswordFile, FirstLineWithoutItsLineEndAndWrongPasswordsWriteNothing) {
    TempDir dir;
    writeFile(dir / "s.txt", "secret data");
    writeFile(dir / "pw", "two words\r\nsecond line\n");
    ASSERT_EQ(tqarchive(dir.path(), "zip s.zip s.txt --password-file pw").status, 0);

    const struct {
        const char* args;
        int status;
        const char* identifier;
    } cases[] = {
        {"--password 'two words'", 0, ""},
        {"--password two", 1, "TESSEL:io:archive:extractArchive:incorrectPassword"},
        {"", 1, "TESSEL:io:archive:extractArchive:unableToWrite"},
        {"--password-file /dev/stdin <pw", 0, ""},
    };
    for (const auto& c : cases) {
        fs::remove_all(dir / "out");
        const auto result = tqarchive(dir.path(), std::string("unzip s.zip -d out ") + c.args);
        EXPECT_EQ(result.status, c.status) << c.args << ": " << result.err;
        if (c.status == 0) {
            EXPECT_EQ(readFile(dir / "out/s.txt"), "secret data");
        } else {
            EXPECT_NE(result.err.find(c.identifier), std::string::npos) << result.err;
            EXPECT_FALSE(fs::exists(dir / "out/s.txt"));
        }
    }
}

}  // namespace
