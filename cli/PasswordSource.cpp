#include "PasswordSource.hpp"

#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "CliMessages.hpp"
#include "InterruptFlag.hpp"

namespace tqarchive {

namespace {

// Turns terminal echo off for its lifetime.
class EchoOff {
  public:
    explicit EchoOff(int fd) : fd_(fd) {
        if (tcgetattr(fd_, &saved_) == 0) {
            termios quiet = saved_;
            quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            active_ = tcsetattr(fd_, TCSAFLUSH, &quiet) == 0;
        }
    }
    ~EchoOff() {
        if (active_) {
            tcsetattr(fd_, TCSAFLUSH, &saved_);
        }
    }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

  private:
    int fd_;
    termios saved_{};
    bool active_ = false;
};

void dropLineEnd(std::string& line) {
    // A file written on Windows ends its line in "\r\n"; neither byte is the password's.
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
}

}  // namespace

std::optional<std::string> PasswordSource::resolve(const CommandLine& commandLine, bool confirm) {
    if (commandLine.password) {
        return commandLine.password;
    }
    if (commandLine.passwordFile) {
        return fromFile(*commandLine.passwordFile);
    }
    if (commandLine.promptForPassword) {
        return fromTerminal(confirm);
    }
    return std::nullopt;
}

std::string PasswordSource::fromFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        raiseError("passwordFile", {path, std::string(std::strerror(errno))});
    }
    std::string line;
    if (!std::getline(in, line) && !in.eof()) {
        raiseError("passwordFile", {path, std::string(std::strerror(errno))});
    }
    dropLineEnd(line);
    return line;
}

std::string PasswordSource::fromTerminal(bool confirm) {
    if (!isatty(STDIN_FILENO)) {
        raiseUsageError("passwordNeedsTerminal");
    }
    const std::string password = ask("Password: ");
    if (confirm && ask("Repeat the password: ") != password) {
        raiseError("passwordMismatch");
    }
    return password;
}

std::string PasswordSource::ask(const char* prompt) {
    std::cerr << prompt << std::flush;
    std::string line;
    {
        EchoOff echoOff(STDIN_FILENO);
        std::getline(std::cin, line);
    }
    std::cerr << '\n';
    // Ctrl-C at the prompt ends the read; the run stops here.
    InterruptFlag::check();
    dropLineEnd(line);
    return line;
}

}  // namespace tqarchive
