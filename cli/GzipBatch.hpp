#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "CommandLine.hpp"
#include "InputWalker.hpp"
#include "ProgressReporter.hpp"

namespace tqarchive {

// The files of a gzip or gunzip run: inputs expanded (a folder gives the files beneath
// it), one output per file (beside the input, or under -d keeping each file's place
// relative to the folder input's parent), outputs checked, then each file through the
// library, into a file that replaces the output only once complete, or to standard output.
class GzipBatch {
  public:
    explicit GzipBatch(const CommandLine& commandLine);

    void add(const std::string& operand);
    // Raises "tqarchive:duplicateOutput" or "tqarchive:gunzipOutputIsInput" before anything
    // is written when two inputs would produce the same file, or gunzip would write over its
    // input; returns the files written.
    std::vector<std::u16string> run(ProgressReporter& reporter);

  private:
    struct Job {
        std::filesystem::path input;
        std::filesystem::path output;
    };

    bool wanted(const WalkedInput& input) const;
    std::vector<Job> plan() const;
    void process(const Job& job, ProgressReporter& reporter) const;

    const CommandLine& commandLine_;
    bool decompress_;
    InputWalker walker_;
};

}  // namespace tqarchive
