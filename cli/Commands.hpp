#pragma once

#include <string>
#include <vector>

#include "Command.hpp"
#include "CommandLine.hpp"

namespace tqarchive {

// One function per kind of command, the run of its rows in CommandTable; each returns the exit
// status of a run that finished and raises a message-identified error otherwise.

// zip and tar: walks the inputs and packs them.
int createArchiveFromInputs(const CommandLine& commandLine);
// unzip and untar.
int extractArchiveToFolder(const CommandLine& commandLine);
// gzip and gunzip: every input, and every file beneath a folder input.
int runGzipBatch(const CommandLine& commandLine);
int listArchiveEntries(const CommandLine& commandLine);
int testArchiveEntries(const CommandLine& commandLine);

// The format text the library reads the archive with, as the command's format and the
// archive's name say.
std::u16string readFormatFor(const Command& command, const std::string& archive);

// The names written, one a line on standard output, shown readably; nothing when quiet.
void printNames(const std::vector<std::u16string>& names, bool quiet);

}  // namespace tqarchive
