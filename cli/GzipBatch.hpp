#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "InputWalker.hpp"

namespace tqarchive {

// The files of a gzip or gunzip run: inputs expanded (a folder gives the files beneath
// it), one output folder per file (beside the input, or under -d keeping each file's place
// relative to the folder input's parent), outputs checked for collisions, then the
// gateway called once per run of files sharing an output folder.
class GzipBatch {
  public:
    enum class Direction { Compress, Decompress };

    GzipBatch(Direction direction, std::optional<std::string> outputFolder);

    void add(const std::string& operand);
    // Raises "tqarchive:duplicateOutput" before anything is written when two inputs
    // would produce the same file; returns the names the gateway calls wrote.
    std::vector<std::u16string> run();

  private:
    struct Job {
        std::filesystem::path input;
        std::filesystem::path outputFolder;  // empty: beside the input
    };

    bool wanted(const WalkedInput& input) const;
    std::filesystem::path outputPath(const Job& job) const;

    Direction direction_;
    std::optional<std::filesystem::path> outputFolder_;
    InputWalker walker_;
};

}  // namespace tqarchive
