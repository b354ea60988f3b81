#pragma once

// External tools in the tests: skipping when one is missing, shell command lines run in a
// folder, archives written by Python, and passwords other tools refuse.

#include <initializer_list>
#include <string>

#include <gtest/gtest.h>

#include "TestSupport.hpp"

namespace tqtest {

// Skips the current test (from its body) when a tool, or the first word of a command line,
// is missing.
#define REQUIRE_TOOLS(...)                                                            \
    for (const std::string tool_ : std::initializer_list<std::string>{__VA_ARGS__}) { \
        if (!::tqtest::toolAvailable(tool_.substr(0, tool_.find(' ')))) {             \
            GTEST_SKIP() << tool_ << " is not installed";                             \
        }                                                                             \
    }

// Runs a shell command line in a folder and returns what it printed (standard output and
// error together); throws with that output when the command fails.
std::string sh(const fs::path& dir, const std::string& commandLine);

// The same for a command whose failure is no fault: its exit status and what it printed.
CommandResult runIn(const fs::path& dir, const std::string& commandLine);

// Runs Python in a folder with helpers for hostile archives: tar(path, *members) writes a
// GNU tar from reg(name, data, mode), folder(name), sym(name, target), hard(name, target),
// node(name, tarfile.BLKTYPE/CHRTYPE/FIFOTYPE, major, minor, mode); names may be bytes
// that are not UTF-8. Members claim uid and gid 1234 (reg takes another as owner).
// pax(path, *members) writes a pax archive of the same members, or of raw member bytes such
// as linkWithData(name, target, data): a hard link whose size and body are its data, as pax
// allows (tarfile always writes a hard link's size as 0).
std::string python(const fs::path& dir, const std::string& code);

// Python, run as "racer.py OUT OTHER": waits for OUT/d, puts the link OUT/s (to OTHER)
// beside it, then swaps the two names with renameat2's RENAME_EXCHANGE until killed;
// OUT.ready and OUT.racing mark its start and its first swap.
extern const char* const kFolderSwapRacer;

// A password that libarchive refuses at once for the archive in the folder: encryption
// headers are random, so a fixed wrong one passes the header check now and then.
std::string rejectedPassword(const fs::path& dir, const std::string& archive);

}  // namespace tqtest
