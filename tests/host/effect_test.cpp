// SPDX-License-Identifier: MIT
#include "host/effect.h"
#include "host/host_error.h"
#include "tests/host/fake_effect.h"
#include "tests/support/temp_folder.h"
#include "vst/opcodes.h"

#include <dlfcn.h>
#include <filesystem>

namespace vocafade::host {
namespace {

namespace fs = std::filesystem;

fs::path FakePath(int kind) { return fs::path(FAKE_FOLDER) / ("fake" + std::to_string(kind) + ".so"); }

/// Keeps a fake in memory beyond its effects, so that its log can be read when they are gone.
class KeptFake {
  public:
    ~KeptFake() { ::dlclose(handle_); }
    fake::Log* log() { return reinterpret_cast<fake::LogFunction>(::dlsym(handle_, "FakeLog"))(); }

  private:
    void* handle_ = ::dlopen(FakePath(0).c_str(), RTLD_NOW | RTLD_LOCAL);
};

void ExpectRefused(const fs::path& path, const char* reason) {
    try {
        const Effect effect(path);
        ADD_FAILURE() << path << " was loaded";
    } catch (const HostError& error) {
        EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << path << ": " << error.what();
    }
}

TEST(Effect, LivesInOneOrder) {
    KeptFake kept;
    {
        Effect effect(FakePath(0));
        EXPECT_THROW(effect.Start(), HostError) << "before it knows its rate";
        effect.Configure(48000.0, 64);
        effect.Start();
        std::vector<float> left(64, 1.0f);
        std::vector<float> right = left;
        float* both[] = {left.data(), right.data()};
        effect.Process(both, both, 64);
        effect.Process(both, both, 10);
        EXPECT_FLOAT_EQ(left[0], 0.25f);
        EXPECT_FLOAT_EQ(right[63], 0.5f);
        effect.Configure(44100.0, 32, Precision::float64); // stops by itself
    }
    const std::vector<std::int32_t> order = {
        effOpen,          effSetSampleRate, effSetBlockSize,        effSetProcessPrecision,
        effMainsChanged,  effStartProcess,  effStopProcess,         effMainsChanged,
        effSetSampleRate, effSetBlockSize,  effSetProcessPrecision, effClose};
    EXPECT_EQ(kept.log()->opcodes, order);
    // The song's position moves with the blocks; the level is that of offline, inside a block.
    EXPECT_EQ(kept.log()->blocks, (std::vector<std::pair<std::int64_t, std::intptr_t>>{{0, 4}, {64, 4}}));
}

TEST(Effect, IsAnsweredWhileItIsMade) {
    KeptFake kept;
    const Effect effect(FakePath(0));
    const std::vector<std::string> expected = {
        "version=2400", "rate=44100", "block=512",
        "vendor=1",     "Vocafade",   "canTime=1",
        "canDance=0",   "unknown=0",  fs::absolute(FAKE_FOLDER).string() + "/"};
    EXPECT_EQ(kept.log()->answers, expected);
}

TEST(Effect, ToldThingsReachItsListenerOnly) {
    struct Ear : HostListener {
        std::string heard;
        void ParameterAutomated(std::int32_t index, float value) override {
            heard += "set" + std::to_string(index) + "=" + std::to_string(value).substr(0, 4) + " ";
        }
        void EditBegun(std::int32_t) override { heard += "begin "; }
        void EditEnded(std::int32_t) override { heard += "end "; }
        void DisplayChanged() override { heard += "display "; }
        bool ResizeEditor(std::int32_t width, std::int32_t height) override {
            return width == 320 && height == 200;
        }
    };
    Ear first;
    Ear second;
    Effect one(FakePath(0), &first);
    Effect two(FakePath(0), &second);
    Effect alone(FakePath(0));
    EXPECT_EQ(one.Dispatch(effVendorSpecific, 3), 1);
    EXPECT_EQ(first.heard, "begin set3=0.75 end display ");
    EXPECT_EQ(second.heard, "");
    EXPECT_EQ(alone.Dispatch(effVendorSpecific, 3), 0);
}

TEST(Effect, OlderEntryAndBundlesLoad) {
    const Effect old(FakePath(1));
    EXPECT_EQ(old.uniqueId(), fake::kId);
    const test::TempFolder folder;
    const fs::path bundle = folder / "Some.vst";
    fs::create_directory(bundle);
    fs::copy_file(FakePath(0), bundle / "Some.so");
    const Effect bundled(bundle.string() + "/");
    EXPECT_EQ(bundled.file(), bundle / "Some.so");
    fs::copy_file(FakePath(0), bundle / "Two.so");
    fs::rename(bundle / "Some.so", bundle / "One.so");
    ExpectRefused(bundle, "no 'Some.so'");
}

TEST(Effect, WhatIsNoEffectIsRefusedWithAReason) {
    ExpectRefused("/nowhere/at/all.so", "there is no plug-in");
    ExpectRefused(fs::temp_directory_path(), "is no plug-in bundle");
    ExpectRefused("/proc/self/status", "cannot be loaded");
    ExpectRefused("libm.so.6", "there is no plug-in"); // never from the system's library folders
    ExpectRefused(FakePath(2), "refused");
    ExpectRefused(FakePath(3), "does not begin with VstP");
    ExpectRefused(FakePath(4), "failed while it was being made");
}

TEST(Effect, UnrulyAnswersStayHarmless) {
    Effect effect(FakePath(0));
    EXPECT_EQ(effect.parameterName(0), std::string(200, 'x'));
    EXPECT_EQ(effect.parameterName(1), "");
    EXPECT_EQ(effect.parameter(-1), 0.0f);
    effect.setParameter(77, 1.0f);
    EXPECT_THROW(effect.chunk(false), HostError);
    EXPECT_FALSE(effect.editorRect().has_value());
    EXPECT_FALSE(effect.OpenEditor(nullptr));
    EXPECT_THROW(effect.Configure(0.0, 512), HostError);
    EXPECT_THROW(effect.Configure(44100.0, 0), HostError);
}

} // namespace
} // namespace vocafade::host
