// SPDX-License-Identifier: MIT
#include "base/float_mode.h"
#include "effect/avocafade.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace vocafade::test {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

class Parameters : public WithSettings {
  protected:
    Parameters() {
        effect.open();
        host.calls.clear();
    }

    std::string Display(std::int32_t index) {
        char text[64] = "untouched";
        effect.getParameterDisplay(index, text);
        return text;
    }

    float Internal(std::int32_t index, float normalised) {
        effect.setParameter(index, normalised);
        return std::stof(Display(index));
    }

    RecordingHost host;
    AVocafade effect{RecordingHost::Callback};
};

/// Hears what an editor would, and sees what the effect holds at that moment.
struct Listener : EffectListener {
    explicit Listener(AVocafade& of) : effect(of) { effect.SetListener(this); }
    ~Listener() override { effect.SetListener(nullptr); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    void UpdateControl(std::int32_t index, float value) override {
        updates.emplace_back(index, value);
        held.push_back(effect.getParameter(index));
    }
    void UpdateModify() override { modifiedAfter.push_back(updates.size()); }

    AVocafade& effect;
    std::vector<std::pair<std::int32_t, float>> updates;
    std::vector<float> held;                ///< the parameter's value in the effect, at each update
    std::vector<std::size_t> modifiedAfter; ///< how many updates came before each UpdateModify
};

TEST(ParameterConversions, MatchTheTable) {
    EXPECT_FLOAT_EQ(ValToNormalizeValue(1, 1.0f), 0.4997498749374687f);
    EXPECT_EQ(ValToNormalizeValue(2, 1.0f), 1.0f);
    EXPECT_FLOAT_EQ(ValToNormalizeValue(3, 400.0f), 0.01901901901901902f);
    EXPECT_FLOAT_EQ(ValToNormalizeValue(4, 9000.0f), 0.4494494494494494f);
    EXPECT_FLOAT_EQ(ValToNormalizeValue(5, 64.0f), 0.5039370078740157f);
    EXPECT_EQ(ValToNormalizeValue(3, 5.0f), 0.0f);
    EXPECT_EQ(ValToNormalizeValue(4, 1e9f), 1.0f);
    EXPECT_GT(ValToNormalizeValue(0, 3.0f), 1.0f) << "stepped parameters are not clamped";
    EXPECT_EQ(ValToNormalizeValue(5, 200.0f), 1.0f);

    EXPECT_FLOAT_EQ(NormalizeValToInternalVal(1, 0.0f), -59.794705707972525f);
    EXPECT_FLOAT_EQ(NormalizeValToInternalVal(1, 1.0f), 6.0f);
    EXPECT_FLOAT_EQ(NormalizeValToInternalVal(2, 1.0f), 0.0f);
    EXPECT_FLOAT_EQ(NormalizeValToInternalVal(3, 0.5f), 10010.0f);
    EXPECT_EQ(NormalizeValToInternalVal(5, 0.5f), 63.5f) << "Position moves freely";
    EXPECT_EQ(NormalizeValToInternalVal(5, 2.0f), 127.0f);
    EXPECT_EQ(NormalizeValToInternalVal(0, 0.5f), 1.0f);
    for (std::int32_t index = 1; index < kParameterCount; ++index) {
        for (int step = 0; step <= 127; ++step) { // there and back
            const float n = static_cast<float>(step) / 127.0f;
            const float internal = NormalizeValToInternalVal(index, n);
            const float value = index <= 2 ? std::exp2(internal / 6.0f) : internal;
            EXPECT_NEAR(ValToNormalizeValue(index, value), n, 1e-6f) << index;
        }
    }
    for (const std::int32_t index : {-1, 6, 7, 8, 1000}) {
        EXPECT_EQ(ValToNormalizeValue(index, 1.0f), 0.0f);
        EXPECT_EQ(NormalizeValToInternalVal(index, 1.0f), 0.0f);
        EXPECT_EQ(NormalizeValToDWValue(index, 1.0f), 0U);
    }
}

TEST(ParameterConversions, KeepWhatIsTypedWhole) {
    // The engine cuts these to whole numbers; whether a reader multiplies in single or in double precision.
    for (const std::int32_t index : {kParameterLoFreq, kParameterPosition}) {
        const ParameterRange& row = ParameterRow(index);
        const auto span = static_cast<float>(row.maximum - row.minimum);
        const auto least = static_cast<float>(row.minimum);
        for (int value = static_cast<int>(row.minimum); value <= static_cast<int>(row.maximum); ++value) {
            const float normalised = NormalizeWholeDisplayValue(index, static_cast<float>(value));
            ASSERT_EQ(static_cast<int>((row.maximum - row.minimum) * normalised + row.minimum), value);
            ASSERT_EQ(static_cast<int>(span * normalised + least), value);
        }
        EXPECT_EQ(NormalizeWholeDisplayValue(index, kNan), 0.0f);
        EXPECT_EQ(NormalizeWholeDisplayValue(index, kInfinity), 1.0f);
        EXPECT_EQ(NormalizeWholeDisplayValue(index, 1e9f), 1.0f);
        EXPECT_EQ(NormalizeWholeDisplayValue(index, -1e9f), 0.0f);
        const AudioFloatMode mode; // in which 127 times a denormal is 0
        EXPECT_EQ(NormalizeWholeDisplayValue(index, 1e-37f), 0.0f) << "not the end of a long way upwards";
    }
    EXPECT_FLOAT_EQ(NormalizeWholeDisplayValue(kParameterOutput, 0.0f), 0.49974987f);
    EXPECT_EQ(NormalizeWholeDisplayValue(kParameterOutput, 6.0f), 1.0f);
    EXPECT_NEAR(NormalizeWholeDisplayValue(kParameterInput, -100.0f), 0.0f, 1e-10f) << "the gain is a float";
    EXPECT_EQ(NormalizeWholeDisplayValue(kParameterOnOff, 3.0f), 1.0f);
}

TEST(ParameterConversions, GiveFixedPointAndRanges) {
    EXPECT_EQ(NormalizeValToDWValue(0, 1.0f), 1U);
    EXPECT_EQ(NormalizeValToDWValue(5, 0.5f), 127U * 32768U);
    EXPECT_EQ(NormalizeValToDWValue(3, 1.0f), 20000U * 65536U);
    EXPECT_EQ(NormalizeValToDWValue(1, 1.0f), 6U * 65536U);
    const auto lowest = static_cast<std::int32_t>(NormalizeValToDWValue(2, 0.0f));
    EXPECT_EQ(lowest, static_cast<std::int32_t>(-59.794705707972525 * 65536.0)) << "cut towards zero";

    for (std::int32_t index = 1; index < kParameterCount; ++index) {
        float minimum = -1.0f;
        float maximum = -1.0f;
        GetParamMinMax(index, &minimum, &maximum);
        EXPECT_FLOAT_EQ(minimum, NormalizeValToInternalVal(index, 0.0f)) << index;
        EXPECT_FLOAT_EQ(maximum, NormalizeValToInternalVal(index, 1.0f)) << index;
    }
}

TEST_F(Parameters, ShowNamesUnitsAndValues) {
    const char* names[] = {"ON/OFF", "Output", "Input", "LoFreq", "HiFreq", "Position"};
    const char* labels[] = {"", "dB", "dB", "Hz", "Hz", ""};
    const char* values[] = {"ON", "0.0", "0.0", "400.0", "9000.0", "64.0"};
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        char text[64] = "x";
        effect.getParameterName(i, text);
        EXPECT_STREQ(text, names[i]);
        effect.getParameterLabel(i, text);
        EXPECT_STREQ(text, labels[i]);
        EXPECT_EQ(Display(i), values[i]);
    }
    EXPECT_EQ(Display(6), "untouched");
    EXPECT_EQ(effect.getParameter(6), 0.0f);
    EXPECT_EQ(effect.getParameter(-1), 0.0f);

    effect.setParameter(1, 0.0f);
    EXPECT_EQ(Display(1), "-59.8");
    effect.setParameter(1, 1.0f);
    EXPECT_EQ(Display(1), "6.0");
    effect.setParameter(1, std::nextafter(ValToNormalizeValue(1, 1.0f), 0.0f));
    EXPECT_EQ(Display(1), "0.0") << "never -0.0";
    effect.setParameter(0, 0.5f);
    EXPECT_EQ(Display(0), "OFF");
    effect.setParameter(3, 0.25f);
    EXPECT_NEAR(effect.getParameterDisplayVal(3), 5015.05f, 1e-3f);
    effect.setParameter(2, 0.25f);
    EXPECT_LT(effect.getParameterDisplayVal(2), -12.0f);
}

TEST_F(Parameters, StoreWhatTheHostSetsInTheCurrentProgramAndTellTheEditorFirst) {
    Listener listener(effect);
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        const float before = effect.getParameter(i);
        effect.setParameter(i, 0.25f);
        EXPECT_EQ(listener.held.back(), before);
        EXPECT_EQ(effect.getParameter(i), 0.25f);
        EXPECT_EQ(effect.Program(0).values[static_cast<std::size_t>(i)], 0.25f);
        EXPECT_EQ(listener.updates.back(), std::make_pair(i, 0.25f));
    }
    EXPECT_TRUE(host.calls.empty()) << "the host knows what it set";
    effect.setParameter(17, 0.5f);
    EXPECT_EQ(effect.getParameter(17), 0.0f);
}

TEST_F(Parameters, FromTheEditorReachTheHostButNotTheEditor) {
    Listener listener(effect);
    effect.setParameterFormUI(4, 0.75f);
    EXPECT_EQ(effect.getParameter(4), 0.75f);
    EXPECT_TRUE(listener.updates.empty());
    EXPECT_EQ(host.calls, (std::vector<RecordingHost::Call>{{audioMasterAutomate, 4, 0.75f}}));
}

TEST_F(Parameters, EditorHearsOfSwitchesAndProgramsOnceTheyHold) {
    Listener listener(effect);
    const auto expectSince = [&](const std::vector<std::pair<std::int32_t, float>>& updates,
                                 const std::vector<std::size_t>& modifiedAfter) {
        EXPECT_EQ(listener.updates, updates);
        EXPECT_EQ(listener.modifiedAfter, modifiedAfter);
        listener.updates.clear();
        listener.modifiedAfter.clear();
    };
    effect.suspend();
    EXPECT_EQ(listener.held.back(), 0.0f) << "heard of it when it was so";
    expectSince({{0, 0.0f}}, {});
    effect.resume();
    EXPECT_EQ(listener.held.back(), 1.0f);
    expectSince({{0, 1.0f}}, {});
    std::vector<std::pair<std::int32_t, float>> all;
    all.reserve(kParameterCount);
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        all.emplace_back(i, DefaultNormalizedValue(i));
    }
    effect.setProgram(3);
    expectSince(all, {6});
    host.calls.clear();
    effect.ProgramToFactory();
    expectSince(all, {6, 6});
    effect.CopyPgFrom(2);
    expectSince(all, {6});
    EXPECT_EQ(host.Calls(audioMasterUpdateDisplay).size(), 2U);
}

TEST_F(Parameters, TypedValuesAreShownAsTypedAndLimitedInEffect) {
    Listener listener(effect);
    effect.setParameterFromDiaplay(1, 9.0f);
    EXPECT_EQ(Display(1), "9.0");
    EXPECT_EQ(effect.getParameter(1), 1.0f);
    EXPECT_EQ(listener.updates.back(), std::make_pair(1, 1.0f));
    EXPECT_EQ(host.calls, (std::vector<RecordingHost::Call>{{audioMasterAutomate, 1, 1.0f},
                                                            {audioMasterEndEdit, 1, 0.0f}}));
    effect.setParameter(1, 1.0f);
    EXPECT_EQ(Display(1), "6.0") << "until the host sets it again";

    effect.setParameterFromDiaplay(3, 1e30f);
    EXPECT_EQ(Display(3), "1000000015047466219876688855040.0");
    effect.setParameterFromDiaplay(2, -6.0f);
    EXPECT_FLOAT_EQ(effect.getParameter(2), (0.5f - 0.001f) / 0.999f);
    effect.setParameterFromDiaplay(3, 400.0f);
    EXPECT_FLOAT_EQ(effect.getParameter(3), 0.01901901901901902f);
    host.calls.clear();
    effect.setParameterFromDiaplay(9, 3.5f); // passed through, as it is
    EXPECT_EQ(host.calls, (std::vector<RecordingHost::Call>{{audioMasterAutomate, 9, 3.5f},
                                                            {audioMasterEndEdit, 9, 0.0f}}));
}

TEST_F(Parameters, NanCountsAsTheMinimumAndInfinityIsClamped) {
    for (const float bad : {kNan, -kInfinity}) {
        EXPECT_FLOAT_EQ(Internal(1, bad), -59.8f) << bad;
        EXPECT_FLOAT_EQ(Internal(3, bad), 20.0f) << bad;
        EXPECT_FLOAT_EQ(Internal(5, bad), 0.0f) << bad;
        effect.setParameter(0, bad);
        EXPECT_EQ(Display(0), "OFF");
        effect.setParameterFromDiaplay(4, bad);
        effect.setParameterFormUI(2, bad);
    }
    EXPECT_EQ(Internal(1, kInfinity), 6.0f);
    EXPECT_EQ(Internal(4, kInfinity), 20000.0f);
    EXPECT_EQ(Internal(5, kInfinity), 127.0f);
    EXPECT_EQ(ValToNormalizeValue(3, kInfinity), 1.0f);
    EXPECT_EQ(NormalizeValToDWValue(3, kInfinity), 20000U * 65536U);
    effect.setParameterFromDiaplay(1, kInfinity);
    EXPECT_EQ(effect.getParameter(1), 1.0f);
    EXPECT_FLOAT_EQ(Internal(5, -3.0f), 0.0f);
    EXPECT_FLOAT_EQ(Internal(3, 1e30f), 20000.0f);
    EXPECT_FLOAT_EQ(Internal(3, -1e30f), 20.0f);
}

TEST_F(Parameters, DescribeTheirRangesInWholeNumbers) {
    constexpr std::int32_t minima[] = {0, 0, 0, 20, 20, 0};
    constexpr std::int32_t maxima[] = {1, 2, 1, 20000, 20000, 127};
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        VstParameterProperties p;
        std::fill_n(reinterpret_cast<unsigned char*>(&p), sizeof p, 0xAA); // as a host may leave it
        ASSERT_TRUE(effect.getParameterProperties(i, &p));
        EXPECT_EQ(p.minInteger, minima[i]);
        EXPECT_EQ(p.maxInteger, maxima[i]);
        EXPECT_EQ(p.stepInteger, 128);
        EXPECT_EQ(p.largeStepInteger, 256);
        EXPECT_EQ(p.displayIndex, i);
        const bool stepped = i == 0;
        EXPECT_EQ(p.flags, kVstParameterUsesIntegerMinMax | kVstParameterUsesIntStep |
                               (stepped ? kVstParameterIsSwitch : 0));
        EXPECT_STREQ(p.label, ParameterRow(i).unit);
        EXPECT_EQ(p.future[15], 0);
    }
    VstParameterProperties p;
    EXPECT_TRUE(effect.getParameterProperties(99, &p));
    EXPECT_EQ(p.maxInteger, 0);
    EXPECT_EQ(host.Calls(audioMasterGetProductString).size(), 1U);
}

TEST_F(Parameters, HideTheirRangesFromHostsThatMisreadThem) {
    for (const auto& [product, told] :
         {std::pair("Ardour", false), {"Qtractor", false}, {"Ardour ", true}, {"ardour", true}, {"", true}}) {
        host.product = product;
        AVocafade other(RecordingHost::Callback);
        host.calls.clear();
        for (std::int32_t i = 0; i < kParameterCount; ++i) {
            VstParameterProperties p;
            // cppcheck-suppress memsetClassFloat ; any bytes but zeros serve
            std::memset(&p, 0xAA, sizeof p);
            EXPECT_EQ(other.getParameterProperties(i, &p), told) << product;
            const auto* bytes = reinterpret_cast<const unsigned char*>(&p);
            const bool clear = std::all_of(bytes, bytes + sizeof p, [](unsigned char b) { return b == 0; });
            EXPECT_EQ(clear, !told) << product;
        }
        EXPECT_EQ(host.Calls(audioMasterGetProductString).size(), 1U) << "asked once";
    }
    host.product = std::string(200, 'A'); // longer than the interface allows
    AVocafade other(RecordingHost::Callback);
    EXPECT_EQ(other.getHostProductString(), std::string(kVstMaxProductStrLen - 1, 'A'));
}

} // namespace
} // namespace vocafade::test
