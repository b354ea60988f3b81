#include "GzipBatch.hpp"

#include <system_error>

#include <host/TextConversion.hpp>

#include "CliMessages.hpp"
#include "Commands.hpp"
#include "GatewayCall.hpp"

namespace tqarchive {

namespace fs = std::filesystem;
using tessel::host::fromFileSystemText;

GzipBatch::GzipBatch(Direction direction, std::optional<std::string> outputFolder)
    : direction_(direction) {
    if (outputFolder) {
        outputFolder_ = fs::path(*outputFolder);
    }
}

void GzipBatch::add(const std::string& operand) {
    if (operand.empty()) {
        raiseError("inputNotFound", {operand, std::string("empty name")});
    }
    // Named relative to the input's own folder, so a folder input keeps its name under -d.
    walker_.add(operand, InputWalker::normal(operand).parent_path());
}

bool GzipBatch::wanted(const WalkedInput& input) const {
    if (input.folder) {
        return false;
    }
    if (!input.nested) {
        return true;  // a file named on the command line is always processed
    }
    // Beneath a folder: gzip leaves what is already compressed, gunzip takes only that.
    const bool compressed = hasSuffix(input.diskPath.filename().string(), ".gz");
    return direction_ == Direction::Compress ? !compressed : compressed;
}

fs::path GzipBatch::outputPath(const Job& job) const {
    const fs::path folder = job.outputFolder.empty() ? job.input.parent_path() : job.outputFolder;
    if (direction_ == Direction::Compress) {
        return folder / (job.input.filename().string() + ".gz");
    }
    return folder / job.input.stem();
}

std::vector<std::u16string> GzipBatch::run() {
    std::vector<Job> jobs;
    std::map<fs::path, fs::path> producedBy;
    for (const WalkedInput& input : walker_.inputs()) {
        if (!wanted(input)) {
            continue;
        }
        Job job{input.diskPath, fs::path()};
        if (outputFolder_) {
            const fs::path place = fs::path(input.name).parent_path();
            job.outputFolder = place.empty() ? *outputFolder_ : *outputFolder_ / place;
        }
        const fs::path output = InputWalker::normal(outputPath(job));
        const auto [previous, fresh] = producedBy.emplace(output, job.input);
        if (!fresh) {
            raiseError("duplicateOutput",
                       {output.string(), previous->second.string(), job.input.string()});
        }
        jobs.push_back(std::move(job));
    }

    for (const Job& job : jobs) {
        std::error_code error;
        if (!job.outputFolder.empty() && !fs::is_directory(job.outputFolder, error)) {
            fs::create_directories(job.outputFolder, error);
            if (error) {
                raiseError("outputFolder", {job.outputFolder.string(), error.message()});
            }
        }
    }

    std::vector<std::u16string> written;
    for (auto first = jobs.begin(); first != jobs.end();) {
        auto last = first;
        std::vector<std::u16string> files;
        while (last != jobs.end() && last->outputFolder == first->outputFolder) {
            files.push_back(fromFileSystemText(last->input.string()));
            ++last;
        }
        const std::u16string folder = fromFileSystemText(first->outputFolder.string());
        GatewayCall call;
        std::vector<std::u16string> names;
        if (direction_ == Direction::Compress) {
            names = call.list(files).text(folder).call(compressgzBuiltin);
        } else {
            names = call.list(files).text(folder).flag(false).call(uncompressgzBuiltin);
        }
        written.insert(written.end(), names.begin(), names.end());
        first = last;
    }
    return written;
}

}  // namespace tqarchive
