#include "GzipBatch.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <system_error>

#include <archive/core/archivecore.hpp>
#include <host/TextConversion.hpp>

#include "CliMessages.hpp"
#include "Command.hpp"
#include "InterruptFlag.hpp"
#include "ReplacementFile.hpp"
#include "StandardOutput.hpp"

namespace tqarchive {

namespace fs = std::filesystem;
namespace core = tessel::io::archive::core;
using tessel::host::fromFileSystemText;

namespace {

std::u16string text(const fs::path& path) {
    return fromFileSystemText(path.string());
}

bool endsInGz(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return name.ends_with(".gz");
}

// Whether writing output would replace input: the same file reached by another route (a
// linked folder, "..", a hard link). An output that does not exist yet is input only if
// its folder is the input's folder and the names match.
bool sameFile(const fs::path& output, const fs::path& input) {
    struct stat in {};
    if (::stat(input.c_str(), &in) != 0) {
        return false;
    }
    struct stat out {};
    if (::stat(output.c_str(), &out) == 0) {
        return out.st_dev == in.st_dev && out.st_ino == in.st_ino;
    }
    struct stat outFolder {};
    struct stat inFolder {};
    const auto folderOf = [](const fs::path& path) {
        return path.has_parent_path() ? path.parent_path() : fs::path(".");
    };
    return output.filename() == input.filename() &&
           ::stat(folderOf(output).c_str(), &outFolder) == 0 &&
           ::stat(folderOf(input).c_str(), &inFolder) == 0 && outFolder.st_dev == inFolder.st_dev &&
           outFolder.st_ino == inFolder.st_ino;
}

}  // namespace

GzipBatch::GzipBatch(const CommandLine& commandLine)
    : commandLine_(commandLine), decompress_(commandLine.command->action == Action::Decompress) {
    walker_.skipLinksBeneathFolders();
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
    return endsInGz(input.diskPath.filename().string()) == decompress_;
}

std::vector<GzipBatch::Job> GzipBatch::plan() const {
    std::vector<Job> jobs;
    std::map<fs::path, fs::path> producedBy;
    for (const WalkedInput& input : walker_.inputs()) {
        if (!wanted(input)) {
            continue;
        }
        fs::path folder = input.diskPath.parent_path();
        if (commandLine_.outputFolder) {
            folder = fs::path(*commandLine_.outputFolder) / fs::path(input.name).parent_path();
        }
        // The library names the outputs; the batch only places them.
        const std::u16string name = decompress_ ? core::gunzipOutputName(text(input.diskPath))
                                                : core::gzipOutputName(text(input.diskPath));
        Job job{input.diskPath, folder / fs::path(tessel::host::toUtf8(name))};
        if (!commandLine_.toStdout) {
            const fs::path output = InputWalker::normal(job.output);
            if (output == InputWalker::normal(job.input) || sameFile(job.output, job.input)) {
                raiseError("gunzipOutputIsInput", {text(job.input)});
            }
            const auto [previous, fresh] = producedBy.emplace(output, job.input);
            if (!fresh) {
                raiseError("duplicateOutput",
                           {text(output), text(previous->second), text(job.input)});
            }
        }
        jobs.push_back(std::move(job));
    }
    return jobs;
}

void GzipBatch::process(const Job& job, ProgressReporter& reporter) const {
    InterruptFlag::check();
    std::optional<ReplacementFile> file;
    if (!commandLine_.toStdout) {
        file.emplace(job.output, decompress_ ? "TESSEL:io:archive:gunzip:javaOutputOpenError"
                                             : "TESSEL:io:archive:gzip:javaOutputOpenError");
        // As gzip does: the output keeps the input's permissions and modification time, so
        // a private file never gives a readable one.
        struct stat input {};
        if (::stat(job.input.c_str(), &input) == 0) {
            file->takeAttributesOf(input);
        }
    }
    const int descriptor = file ? file->descriptor() : STDOUT_FILENO;
    // What the library's messages name as the output.
    const std::u16string output = file ? text(job.output) : kStandardOutputName;
    if (decompress_) {
        core::ExtractOptions options;
        options.outputDescriptor = descriptor;
        options.progress = reporter.callback();
        core::uncompressgzWithOptions({text(job.input)}, output, true, options);
    } else {
        core::CreateOptions options;
        options.outputDescriptor = descriptor;
        options.level = commandLine_.level;
        options.reportFinalClose = true;
        options.skipRefusedEntries = true;
        options.progress = reporter.callback();
        core::compressgzToFile(text(job.input), output, options);
    }
    if (file) {
        file->commit();
    }
}

std::vector<std::u16string> GzipBatch::run(ProgressReporter& reporter) {
    const std::vector<Job> jobs = plan();
    if (commandLine_.toStdout) {
        StandardOutput::requireOpen();
    }
    if (commandLine_.toStdout && !decompress_ && ::isatty(STDOUT_FILENO) == 1) {
        raiseError("terminalOutput", {commandLine_.command->name});
    }
    for (const Job& job : jobs) {
        std::error_code error;
        const fs::path folder = job.output.parent_path();
        if (!commandLine_.toStdout && !folder.empty() && !fs::is_directory(folder, error)) {
            fs::create_directories(folder, error);
            if (error) {
                raiseError("outputFolder", {text(folder), error.message()});
            }
        }
    }
    std::vector<std::u16string> written;
    for (const Job& job : jobs) {
        process(job, reporter);
        if (!commandLine_.toStdout) {
            written.push_back(text(job.output));
        }
    }
    return written;
}

}  // namespace tqarchive
