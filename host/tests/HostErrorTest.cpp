#include <future>

#include <gtest/gtest.h>
#include <boost/algorithm/string/replace.hpp>

#include <host/HostError.hpp>
#include <host/WarningCapture.hpp>

#include "archive/tests/support/TestSupport.hpp"

using namespace tessel::host;
using Texts = std::vector<std::string>;

// Each text numbers its placeholders {1}..{n} without a gap (no text holds a literal brace);
// given n arguments, each placeholder holds its own argument and nothing else changes. Which
// identifiers the library raises or warns is checked against its message classes.
TEST(MessageCatalogue, FillsEveryPlaceholderOfEveryTextElseFallsBack) {
    for (const std::string& identifier : catalogueIdentifiers()) {
        std::string text = lookupMessageUtf8(identifier);
        std::vector<MessageArgument> arguments;
        for (std::string n = "1"; text.find("{" + n + "}") != std::string::npos;
             n = std::to_string(arguments.size() + 1)) {
            arguments.emplace_back("<" + n + "é>");
            boost::algorithm::replace_all(text, "{" + n + "}", "<" + n + "é>");
        }
        EXPECT_EQ(text.find('{'), std::string::npos) << text;
        EXPECT_EQ(lookupMessageUtf8(identifier, arguments), text);
    }
    EXPECT_EQ(lookupMessageUtf8("TESSEL:no:where", {std::string("a"), std::u16string(u"b")}),
              "Unknown message identifier 'TESSEL:no:where' (arguments: a, b)");
    EXPECT_EQ(lookupMessageUtf8(""), "Unknown message identifier '' (no arguments)");
}

const MessageIdError kNotGzip("TESSEL:io:archive:gunzip", "notGzipFormat",
                              {std::u16string(u"/tmp/été.txt")});
const std::string kNotGzipText = lookupMessageUtf8(kNotGzip.identifier(), kNotGzip.arguments());

// A raised error shows the identifier it was raised under and that identifier's text; an
// override the catalogue lacks keeps the text of the error itself.
TEST(HostError, ShowsIdentifierArgumentsAndTextUnderAnyOverride) {
    const std::string zipOpen = "TESSEL:io:archive:zip:openError";
    const std::pair<std::string, std::string> cases[] = {
        {kNotGzip.identifier(), kNotGzipText},  // raised without an override
        {zipOpen, lookupMessageUtf8(zipOpen, kNotGzip.arguments())},
        {"TESSEL:custom:x", kNotGzipText},
    };
    for (const auto& [id, text] : cases) {
        const auto raised = tqtest::raisedBy([&, &id = id] {
                                id == kNotGzip.identifier() ? kNotGzip.raise() : kNotGzip.raise(id);
                            }).value_or(tqtest::RaisedError{});
        EXPECT_EQ(std::tie(raised.identifier, raised.text, raised.arguments),
                  std::make_tuple(id, text, Texts{"/tmp/été.txt"}));
    }
}

// "identifier=arguments" of every warning the capture recorded.
static Texts recorded(const WarningCapture& capture) {
    Texts ids;
    for (const IssuedWarning& warning : capture.warnings()) {
        ids.push_back(warning.identifier + "=" + tqtest::join(warning.arguments, ","));
    }
    return ids;
}

TEST(Warnings, InnermostCaptureOfTheCallingThreadRecords) {
    testing::internal::CaptureStderr();
    WarningCapture outer;
    kNotGzip.warn();
    {
        WarningCapture inner;
        kNotGzip.warn("TESSEL:inner:id");
        EXPECT_EQ(recorded(inner), Texts{"TESSEL:inner:id=/tmp/été.txt"});
    }
    issueHostWarning(MessageIdError("TESSEL:io:archive:extractArchive", "internalError"));
    auto theirs = std::async(std::launch::async, [] {
        kNotGzip.warn("TESSEL:uncaptured:thread");  // no capture on this thread: printed
        WarningCapture own;
        kNotGzip.warn("TESSEL:captured:thread");
        return recorded(own);
    });
    EXPECT_EQ(theirs.get(), Texts{"TESSEL:captured:thread=/tmp/été.txt"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Warning: " + kNotGzipText + " [TESSEL:uncaptured:thread]\n");
    EXPECT_EQ(recorded(outer), (Texts{"TESSEL:io:archive:gunzip:notGzipFormat=/tmp/été.txt",
                                      "TESSEL:io:archive:extractArchive:internalError="}));
}

// Captures destroyed out of order, or on another thread than their own, leave their
// thread's captures cleanly: the next warning goes to the innermost capture still alive,
// or is printed. (The sanitizer build catches a capture that is used after it was freed.)
TEST(Warnings, CapturesDestroyedOutOfOrderOrOnAnotherThreadLeaveCleanly) {
    testing::internal::CaptureStderr();
    auto outer = std::make_unique<WarningCapture>();
    auto middle = std::make_unique<WarningCapture>();
    auto inner = std::make_unique<WarningCapture>();
    middle.reset();
    kNotGzip.warn("TESSEL:to:inner");
    EXPECT_EQ(recorded(*inner), Texts{"TESSEL:to:inner=/tmp/été.txt"});
    inner.reset();
    kNotGzip.warn("TESSEL:to:outer");
    EXPECT_EQ(recorded(*outer), Texts{"TESSEL:to:outer=/tmp/été.txt"});
    // Made on a thread that then ends; destroyed here. A thread started after it (which may
    // get the ended thread's id) has no capture, so its warning is printed.
    auto orphan = std::async(std::launch::async, [] {
                      auto capture = std::make_unique<WarningCapture>();
                      kNotGzip.warn("TESSEL:to:orphan");
                      return capture;
                  }).get();
    std::async(std::launch::async, [] { kNotGzip.warn("TESSEL:printed:thread"); }).get();
    EXPECT_EQ(recorded(*orphan), Texts{"TESSEL:to:orphan=/tmp/été.txt"});
    // This thread's own capture destroyed on another thread.
    std::async(std::launch::async, [&] { outer.reset(); }).get();
    kNotGzip.warn("TESSEL:printed:main");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Warning: " + kNotGzipText + " [TESSEL:printed:thread]\nWarning: " + kNotGzipText +
                  " [TESSEL:printed:main]\n");
}

TEST(Warnings, EightThreadsEachRecordExactlyTheirOwn) {
    std::vector<std::future<Texts>> threads;
    for (int t = 0; t < 8; ++t) {
        threads.push_back(std::async(std::launch::async, [t] {
            WarningCapture own;
            for (int i = 0; i < 200; ++i) {
                MessageIdError("TESSEL:thread", std::to_string(t)).warn();
            }
            return recorded(own);
        }));
    }
    for (int t = 0; t < 8; ++t) {
        EXPECT_EQ(threads[t].get(), Texts(200, "TESSEL:thread:" + std::to_string(t) + "="));
    }
}
