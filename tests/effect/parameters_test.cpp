// SPDX-License-Identifier: MIT
#include "base/float_mode.h"
#include "effect/avocafade.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace vocafade::test {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
using Calls = std::vector<RecordingHost::Call>;

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

    RecordingHost host;
    AVocafade effect{RecordingHost::Callback};
};

/// What an editor hears: a parameter's new value and the one that the effect has at that moment.
struct Word {
    std::int32_t index;
    float value;
    float held;
    bool operator==(const Word&) const = default;
};
constexpr Word kModified{-1, 0.0f, 0.0f}; ///< that the program changed

struct Listener : EffectListener {
    explicit Listener(AVocafade& of) : effect(of) { effect.SetListener(this); }
    ~Listener() override { effect.SetListener(nullptr); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    void UpdateControl(std::int32_t index, float value) override {
        words.push_back({index, value, effect.getParameter(index)});
    }
    void UpdateModify() override { words.push_back(kModified); }
    std::vector<Word> Take() { return std::exchange(words, {}); }

    AVocafade& effect;
    std::vector<Word> words;
};

/// A record as a host may leave it before it asks.
VstParameterProperties Unasked() {
    VstParameterProperties properties;
    std::fill_n(reinterpret_cast<unsigned char*>(&properties), sizeof properties, 0xAA);
    return properties;
}

TEST(ParameterConversions, MatchTheTable) {
    EXPECT_FLOAT_EQ(ValToNormalizeValue(1, 1.0f), 0.4997498749374687f);
    EXPECT_FLOAT_EQ(ValToNormalizeValue(3, 400.0f), 0.01901901901901902f);
    EXPECT_FLOAT_EQ(ValToNormalizeValue(4, 9000.0f), 0.4494494494494494f);
    EXPECT_FLOAT_EQ(ValToNormalizeValue(5, 64.0f), 0.5039370078740157f);
    EXPECT_EQ(ValToNormalizeValue(3, 5.0f), 0.0f);
    EXPECT_EQ(ValToNormalizeValue(4, 1e9f), 1.0f);
    EXPECT_GT(ValToNormalizeValue(0, 3.0f), 1.0f) << "stepped parameters are not clamped";

    EXPECT_FLOAT_EQ(NormalizeValToInternalVal(1, 0.0f), -59.794705707972525f);
    EXPECT_FLOAT_EQ(NormalizeValToInternalVal(3, 0.5f), 10010.0f);
    EXPECT_EQ(NormalizeValToInternalVal(5, 0.5f), 63.5f) << "Position moves freely";
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
        float range[2] = {};
        GetParamMinMax(index, &range[0], &range[1]);
        for (const int end : {0, 1})
            EXPECT_FLOAT_EQ(range[end], NormalizeValToInternalVal(index, static_cast<float>(end))) << index;
    }
}

TEST_F(Parameters, ShowNamesUnitsAndValues) {
    const char* shown[] = {"ON/OFF ON ",      "Output 0.0 dB",    "Input 0.0 dB",
                           "LoFreq 400.0 Hz", "HiFreq 9000.0 Hz", "Position 64.0 "};
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        char name[64] = "x";
        char label[64] = "x";
        effect.getParameterName(i, name);
        effect.getParameterLabel(i, label);
        EXPECT_EQ(name + (" " + Display(i)) + " " + label, shown[i]);
    }
    EXPECT_EQ(Display(6), "untouched");
    EXPECT_EQ(effect.getParameter(6), 0.0f);
    EXPECT_EQ(effect.getParameter(-1), 0.0f);

    effect.setParameter(1, std::nextafter(ValToNormalizeValue(1, 1.0f), 0.0f));
    EXPECT_EQ(Display(1), "0.0") << "never -0.0";
    effect.setParameter(0, 0.5f);
    EXPECT_EQ(Display(0), "OFF");
    effect.setParameter(3, 0.25f);
    EXPECT_NEAR(effect.getParameterDisplayVal(3), 5015.05f, 1e-3f);
}

TEST_F(Parameters, AreStoredInTheCurrentProgramAndToldToWhoDidNotSetThem) {
    Listener listener(effect);
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        const float before = effect.getParameter(i);
        effect.setParameter(i, 0.25f);
        EXPECT_EQ(listener.Take(), (std::vector<Word>{{i, 0.25f, before}})) << "told first";
        EXPECT_EQ(effect.getParameter(i), 0.25f);
        EXPECT_EQ(effect.Program(0).values[static_cast<std::size_t>(i)], 0.25f);
    }
    EXPECT_TRUE(host.calls.empty()) << "the host knows what it set";
    effect.setParameterFormUI(4, 0.75f);
    EXPECT_EQ(effect.getParameter(4), 0.75f);
    EXPECT_TRUE(listener.words.empty()) << "and so does the editor";
    EXPECT_EQ(host.calls, (Calls{{audioMasterAutomate, 4, 0.75f}}));
    effect.setParameter(17, 0.5f);
    EXPECT_EQ(effect.getParameter(17), 0.0f);
}

TEST_F(Parameters, EditorHearsOfSwitchesAndProgramsOnceTheyHold) {
    Listener listener(effect);
    effect.setParameter(0, 0.0f);
    listener.Take();
    effect.resume();
    EXPECT_EQ(listener.Take(), (std::vector<Word>{{0, 1.0f, 1.0f}}));
    EXPECT_EQ(effect.Program(0).values[0], 0.0f) << "the record is not touched";
    effect.setProgram(0);
    EXPECT_EQ(effect.getParameter(0), 0.0f);
    effect.resume();
    effect.suspend();
    EXPECT_EQ(listener.Take().back(), (Word{0, 0.0f, 0.0f}));
    effect.resume();
    listener.Take();
    std::vector<Word> all(kParameterCount + 1, kModified);
    for (std::int32_t i = 0; i < kParameterCount; ++i)
        all[static_cast<std::size_t>(i)] = {i, DefaultNormalizedValue(i), DefaultNormalizedValue(i)};
    effect.setProgram(3);
    EXPECT_EQ(listener.Take(), all);
    host.calls.clear();
    effect.CopyPgFrom(2);
    EXPECT_EQ(listener.Take(), all);
    effect.ProgramToFactory();
    all.push_back(kModified);
    EXPECT_EQ(listener.Take(), all);
    EXPECT_EQ(host.Calls(audioMasterUpdateDisplay).size(), 2U);
}

TEST_F(Parameters, TypedValuesAreShownAsTypedAndLimitedInEffect) {
    Listener listener(effect);
    effect.setParameterFromDiaplay(1, 9.0f);
    EXPECT_EQ(Display(1), "9.0");
    EXPECT_EQ(effect.getParameter(1), 1.0f);
    EXPECT_EQ(listener.words.back().value, 1.0f);
    EXPECT_EQ(host.calls, (Calls{{audioMasterAutomate, 1, 1.0f}, {audioMasterEndEdit, 1, 0.0f}}));
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
    EXPECT_EQ(host.calls, (Calls{{audioMasterAutomate, 9, 3.5f}, {audioMasterEndEdit, 9, 0.0f}}));
}

TEST_F(Parameters, NanCountsAsTheMinimumAndInfinityIsClamped) {
    const auto shown = [this](std::int32_t index, float value) {
        effect.setParameter(index, value);
        return Display(index);
    };
    const char* least[] = {"OFF", "-59.8", "-59.8", "20.0", "20.0", "0.0"};
    const char* most[] = {"OFF", "6.0", "0.0", "20000.0", "20000.0", "127.0"};
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        for (const float low : {kNan, -kInfinity, -1e30f, -3.0f, 0.0f})
            EXPECT_EQ(shown(i, low), least[i]) << low;
        for (const float high : {kInfinity, 1e30f})
            EXPECT_EQ(shown(i, high), most[i]) << high;
    }
    for (const float bad : {kNan, -kInfinity}) {
        effect.setParameterFromDiaplay(4, bad);
        effect.setParameterFormUI(2, bad);
    }
    EXPECT_EQ(ValToNormalizeValue(3, kInfinity), 1.0f);
    EXPECT_EQ(NormalizeValToDWValue(3, kInfinity), 20000U * 65536U);
    effect.setParameterFromDiaplay(1, kInfinity);
    EXPECT_EQ(effect.getParameter(1), 1.0f);
}

TEST_F(Parameters, DescribeTheirRangesInWholeNumbers) {
    constexpr std::int32_t minima[] = {0, 0, 0, 20, 20, 0};
    constexpr std::int32_t maxima[] = {1, 2, 1, 20000, 20000, 127};
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        VstParameterProperties p = Unasked();
        ASSERT_TRUE(effect.getParameterProperties(i, &p));
        EXPECT_EQ(p.minInteger, minima[i]);
        EXPECT_EQ(p.maxInteger, maxima[i]);
        EXPECT_EQ(p.stepInteger, 128);
        EXPECT_EQ(p.largeStepInteger, 256);
        EXPECT_EQ(p.displayIndex, i);
        EXPECT_EQ(p.flags, kVstParameterUsesIntegerMinMax | kVstParameterUsesIntStep |
                               (i == 0 ? kVstParameterIsSwitch : 0));
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
            VstParameterProperties p = Unasked();
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
