#pragma once

#include <string>

// Programs the tests run as child processes (this test program started again with
// TQHOST_TEST_ROLE set), for faults that are about a whole process: how it starts with
// its environment, how it exits, what its standard error is connected to.
// TQHOST_TEST_DIR names the folder a role works in; it holds in.txt.

// Runs the role; returns the process's exit status.
int runChildRole(const std::string& role);

// The shell command that runs this program in the role, in a clean log environment plus
// `environment` (assignments such as "TQARCHIVE_LOG=/x"), under a time limit that turns
// a hang into exit status 124. `prefix` goes before everything (e.g. a privilege drop).
std::string roleCommand(const std::string& role, const std::string& folder,
                        const std::string& environment = "", const std::string& prefix = "");
