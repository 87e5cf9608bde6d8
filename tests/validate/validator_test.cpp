// SPDX-License-Identifier: MIT
// The validator finds what is wrong with effects that have one fault each, says so in words, and lives on.
#include "tests/support/run_command.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace vocafade::test {
namespace {

struct Case {
    const char* fault;
    const char* check; ///< that finds it
    const char* words; ///< in what is printed
};

Finished Validate(const std::string& arguments) {
    return RunCommand(std::filesystem::path(VOCAFADE_VALIDATE).make_preferred().string() + " " + arguments);
}

#if defined(_WIN32)
constexpr char kSuffix[] = ".dll";
constexpr char kNoPlugin[] = "Z:/etc/passwd";
constexpr char kHandlesLeft[] = "handles, windows and drawing objects are left over";
constexpr char kHandlerChanged[] = "signal 15 has another handler";
constexpr char kInvalidMemory[] = "access violation";
constexpr char kSlept[] = "(Sleep)";
#else
constexpr char kSuffix[] = ".so";
constexpr char kNoPlugin[] = "/etc/passwd";
constexpr char kHandlesLeft[] = "file descriptors are left over";
constexpr char kHandlerChanged[] = "signal 10 has another handler";
constexpr char kInvalidMemory[] = "SIGSEGV";
constexpr char kSlept[] = "(usleep)";
#endif

std::string Fake(const std::string& fault) {
    return std::string(FAULTY_FOLDER) + "/faulty-" + fault + kSuffix;
}

class Validator : public ::testing::TestWithParam<Case> {};

TEST_P(Validator, Finds) {
    const Case& expected = GetParam();
    const Finished run = Validate(std::string("--only ") + expected.check + " " + Fake(expected.fault));
    EXPECT_EQ(run.status, 1) << run.output;
    EXPECT_NE(run.output.find("FAILED"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find(expected.words), std::string::npos) << run.output;
}

constexpr Case kCases[] = {
#ifdef __SANITIZE_THREAD__ // whose own findings end the process
    {"races", "threads", "ended the process with 66"},
#else
    {"no-magic", "descriptor", "does not begin with VstP"},
    {"writes-inputs", "guard-pages", "it writes into the inputs"},
    {"not-in-place", "in-place", "differs from that in separate buffers"},
    {"keeps-nan", "hostile-samples", "still NaN or infinite"},
    {"shares-parameters", "instances", "changes that of another"},
    {"ignores-ends", "parameters", "cannot be set to 0"},
    {"forgets-state", "state", "after it was restored"},
    {"throws", "sound", "threw an exception"},
    {"leaks-key", "loading", "thread-local keys are left over"},
    {"leaks-descriptor", "loading", kHandlesLeft},
    {"signal-handler", "manners", kHandlerChanged},
#ifndef VOCAFADE_SANITIZED // the sanitizers stop at these by themselves, in words of their own
    {"allocates", "audio-thread", "allocated memory"},
    {"leaks-memory", "loading", "bytes of the heap are lost"},
    {"long-names", "texts", "reached behind the buffer for the parameter name"},
    {"writes-behind", "guard-pages", "reached behind output 2"},
    {"reads-in-front", "guard-pages", "reached in front of input 1"},
    {"trusts-state", "damaged-state", "reached behind the saved state"},
    {"crashes-at-close", "descriptor", "while closing it"},
    {"crashes-at-empty-block", "blocks", kInvalidMemory},
    {"sleeps", "audio-thread", kSlept},
    {"prints", "audio-thread", "called for files"},
    {"slow", "timing", "of the time there is"},
    {"hangs", "descriptor", "hung for"},
#elif defined(__SANITIZE_ADDRESS__)
    {"leaks-memory", "programs", "ended the process with"},
#endif
#endif
};

std::string TestName(const ::testing::TestParamInfo<Case>& info) {
    std::string name = std::string(info.param.fault) + "_by_" + info.param.check;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Faulty, Validator, ::testing::ValuesIn(kCases), TestName);

#ifndef __SANITIZE_THREAD__ // it takes no care of threads that set and play at once
TEST(ValidatorItself, FindsNothingInAnEffectWithoutFault) {
    const Finished run = Validate("--level 10 " + Fake("none"));
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(run.output.find("FAILED"), std::string::npos) << run.output;
}
#endif

TEST(ValidatorItself, AnswersForItsCommandLine) {
    EXPECT_EQ(Validate("--level 11").status, 2);
    EXPECT_EQ(Validate("--only soundd " + Fake("none")).status, 2);
    EXPECT_NE(Validate("--only soundd " + Fake("none")).output.find("soundd"), std::string::npos);
    EXPECT_EQ(Validate("--only descriptor /nowhere.so").status, 1);
    const Finished notOne = Validate(std::string("--only descriptor ") + kNoPlugin);
    EXPECT_EQ(notOne.status, 1);
    EXPECT_NE(notOne.output.find("cannot be loaded"), std::string::npos) << notOne.output;
    EXPECT_NE(Validate("--list").output.find("hostile-samples"), std::string::npos);
    EXPECT_EQ(Validate("--help").status, 0);
}

} // namespace
} // namespace vocafade::test
