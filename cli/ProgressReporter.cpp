#include "ProgressReporter.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>

#include <host/TextConversion.hpp>

#include "InterruptFlag.hpp"

namespace tqarchive {

namespace core = tessel::io::archive::core;

namespace {

constexpr auto kQuietPeriod = std::chrono::seconds(1);  // short work shows nothing
constexpr auto kRedrawPeriod = std::chrono::milliseconds(200);

std::string amount(double bytes) {
    const char* units[] = {"B", "KiB", "MiB", "GiB", "TiB"};
    int unit = 0;
    while (bytes >= 1024 && unit < 4) {
        bytes /= 1024;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
    return text;
}

std::size_t terminalWidth() {
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

// The text cut to at most width characters (UTF-8 continuation bytes take no column).
std::string fitted(const std::string& text, std::size_t width) {
    std::size_t columns = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if ((static_cast<unsigned char>(text[at]) & 0xC0) != 0x80 && ++columns > width) {
            return text.substr(0, at);
        }
    }
    return text;
}

void write(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

}  // namespace

ProgressReporter::ProgressReporter(bool quiet, bool verbose)
    : verbose_(verbose), drawProgress_(!quiet && ::isatty(STDERR_FILENO) == 1) {}

ProgressReporter::~ProgressReporter() {
    clear();
}

core::ProgressCallback ProgressReporter::callback() {
    return [this](const core::Progress& progress) { return update(progress); };
}

void ProgressReporter::started(std::u16string_view name) {
    if (verbose_) {
        clear();
        write(tessel::host::toDisplayText(name) + "\n");
    }
}

void ProgressReporter::clear() {
    if (lineShown_) {
        write("\r\033[K");
        lineShown_ = false;
    }
}

bool ProgressReporter::update(const core::Progress& progress) {
    if (InterruptFlag::signal() != 0) {
        return false;
    }
    if (progress.entryStarted) {
        started(progress.entry);
    }
    const Clock::time_point now = Clock::now();
    if (drawProgress_ && now - start_ >= kQuietPeriod && now - lastDrawn_ >= kRedrawPeriod) {
        lastDrawn_ = now;
        draw(progress);
    }
    return true;
}

void ProgressReporter::draw(const core::Progress& progress) {
    const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
    std::string line = amount(static_cast<double>(progress.bytesDone));
    if (progress.bytesTotal > 0) {
        char percent[16];
        std::snprintf(percent, sizeof percent, "%3.0f%% ",
                      100.0 * static_cast<double>(progress.bytesDone) /
                          static_cast<double>(progress.bytesTotal));
        line = percent + line + " of " + amount(static_cast<double>(progress.bytesTotal));
    }
    line += ", " + amount(static_cast<double>(progress.bytesDone) / seconds) + "/s  " +
            tessel::host::toDisplayText(progress.entry);
    std::string shown = "\r";
    shown += fitted(line, terminalWidth() - 1);
    shown += "\033[K";
    write(shown);
    lineShown_ = true;
}

}  // namespace tqarchive
