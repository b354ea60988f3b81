// gunzip never writes over its own input, whatever route the output takes to it.

#include <gtest/gtest.h>

#include "CliRun.hpp"

using namespace clitest;

namespace {

struct SelfOverwrite {
    std::string setup;  // run in the folder holding "noext", a gzip file with no suffix
    std::string args;   // whose output is the input itself
};

}  // namespace

TEST(GunzipOutputIsInput, AnOutputReachingTheInputThroughLinksIsRefusedAndTheInputKept) {
    const SelfOverwrite cases[] = {
        {"ln -s . link-to-here", "gunzip noext -d link-to-here"},
        {"mkdir sub && ln -s .. sub/up", "gunzip noext -d sub/up"},
        {"true", "gunzip noext -d ../work"},
        {"true", "gunzip noext -d \"$PWD\""},
        {"mkdir out && ln noext out/noext", "gunzip noext -d out"},
        {"mv noext noext.gz && ln noext.gz noext", "gunzip noext.gz"},
    };
    for (const SelfOverwrite& self : cases) {
        SCOPED_TRACE(self.setup + "; " + self.args);
        TempDir dir;
        sh(dir.path(),
           "mkdir work && cd work && echo text | gzip -c > noext && cp noext ../copy && " +
               self.setup);
        const auto run = tqarchive(dir / "work", self.args);
        EXPECT_TRUE(run.status == 1 && reports(run, "tqarchive:gunzipOutputIsInput"))
            << run.status << ": " << run.output << run.err;
        EXPECT_EQ(readFile(dir / "work/noext"), readFile(dir / "copy"));
    }
}
