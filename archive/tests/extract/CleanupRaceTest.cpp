// A failed extraction takes back what it made while another process swaps a folder it made
// with a link to a folder elsewhere, again and again (renameat2 with RENAME_EXCHANGE): the
// folder elsewhere keeps every file.
#include <gtest/gtest.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

extern char** environ;

namespace tqtest {
namespace {

constexpr int kFiles = 8000;

// The racing process, killed when the test is done with it.
class Racer {
  public:
    Racer(const fs::path& script, const fs::path& out, const fs::path& other) {
        const std::string python = "python3";
        std::vector<std::string> args = {python, script.string(), out.string(), other.string()};
        std::vector<char*> argv;
        for (std::string& arg : args) {
            argv.push_back(arg.data());
        }
        argv.push_back(nullptr);
        if (::posix_spawnp(&pid_, python.c_str(), nullptr, nullptr, argv.data(), environ) != 0) {
            pid_ = -1;
        }
    }
    ~Racer() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            int status = 0;
            ::waitpid(pid_, &status, 0);
        }
    }
    Racer(const Racer&) = delete;
    Racer& operator=(const Racer&) = delete;

    bool started() const noexcept { return pid_ > 0; }

  private:
    pid_t pid_ = -1;
};

std::size_t filesIn(const fs::path& folder) {
    std::size_t count = 0;
    for (const auto& item : fs::directory_iterator(folder)) {
        count += item.is_regular_file() ? 1 : 0;
    }
    return count;
}

TEST(CleanupRace, AFolderSwappedWithALinkDuringTheCleanupLosesNothingOfTheOtherFolder) {
    REQUIRE_TOOLS("python3");
    TempDir dir;
    // The entry that gets out comes last, so the cleanup has thousands of files to take back.
    python(dir.path(),
           "tar('race.tar', folder('d'), *[reg('d/f%05d' % n, b'ours') for n in "
           "range(" +
               std::to_string(kFiles) + ")], reg('../x', b'out'))");
    writeFile(dir / "racer.py", kFolderSwapRacer);
    for (int attempt = 0; attempt < 3; ++attempt) {
        SCOPED_TRACE("attempt " + std::to_string(attempt));
        const fs::path out = dir / ("out" + std::to_string(attempt));
        const fs::path other = dir / ("other" + std::to_string(attempt));
        fs::create_directories(out);
        fs::create_directories(other);
        python(other,
               "import os\nos.makedirs('.', exist_ok=True)\n[open('f%05d' % n, 'w').write("
               "'theirs') for n in range(" +
                   std::to_string(kFiles) + ")]");
        {
            const Racer racer(dir / "racer.py", out, other);
            ASSERT_TRUE(racer.started());
            // Started before the call, so that it swaps from the moment the folder is made.
            for (int wait = 0; wait < 1000 && !fs::exists(out.string() + ".ready"); ++wait) {
                ::usleep(10000);
            }
            const auto raised = raisedBy([&] {
                core::extractArchiveWithOptions(u16(dir / "race.tar"), u16(out), u"tar",
                                                core::ExtractOptions::safe());
            });
            EXPECT_TRUE(raised.has_value());
            EXPECT_TRUE(fs::exists(out.string() + ".racing")) << "the racer never began";
        }
        // Counted, not read: libarchive checks a path for links before it opens it, and a swap
        // in between may still let one entry's data through the link (no cleanup's doing).
        EXPECT_EQ(filesIn(other), static_cast<std::size_t>(kFiles))
            << "the cleanup removed files of the other folder";
    }
}

}  // namespace
}  // namespace tqtest
