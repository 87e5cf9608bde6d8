// SPDX-License-Identifier: MIT
// Numbers typed into the read-outs.
#include "tests/editor/panel_picture.h"

#include <algorithm>
#include <random>

namespace vocafade::test {
namespace {

struct Typed {
    CPoint readout;
    std::int32_t parameter;
    const char* text;
    const char* shown; ///< by the read-out afterwards
};

class Entry : public OpenEditorTest {
  protected:
    /// The entry field shows: the panel differs from what the effect alone looks like, at the read-outs.
    bool IsOpen() {
        constexpr std::ptrdiff_t kAbove = 477 * 182;
        const Picture shown = editor.LookAtPanel(), alone = ExpectedPanel(PanelState::Of(editor));
        return shown.pixels.size() == alone.pixels.size() &&
               !std::equal(shown.pixels.begin() + kAbove, shown.pixels.end(), alone.pixels.begin() + kAbove);
    }
};

TEST_F(Entry, TakesWhatIsTypedAndHoldsItInRange) {
    const Typed cases[] = {
        {kLoFreq, 3, "1234.5", "1234.5"},
        {kLoFreq, 3, "99999", "20000.0"},
        {kLoFreq, 3, "1", "20.0"},
        {kLoFreq, 3, "440.78", "440.7"}, // cut, not rounded
        {kLoFreq, 3, "\b", "20.0"},      // empty counts as 0
        {kHiFreq, 4, "8000", "8000.0"},
        {kHiFreq, 4, "500", "2000.0"},
        {kPosition, 5, "20.5", "20.5"},
        {kPosition, 5, "0", "0.0"},
        {kInput, 2, "-12.3", "-12.3"},
        {kInput, 2, "3", "0.0"},
        {kInput, 2, "-70", "-59.8"},
        {kOutput, 1, "5.5", "5.5"},
        {kOutput, 1, "9", "6.0"},
        {kOutput, 1, "-0", "0.0"},
        {kOutput, 1, "\b", "0.0"},
        // The decimal comma of half the world.
        {kLoFreq, 3, "440,5", "440.5"},
        {kOutput, 1, "-3,5", "-3.5"},
        {kInput, 2, "-0,5", "-0.5"},
    };
    for (const Typed& typed : cases) {
        SCOPED_TRACE(std::string(typed.text) + " into parameter " + std::to_string(typed.parameter));
        Forget();
        editor.Click(typed.readout);
        EXPECT_TRUE(IsOpen());
        editor.Type(typed.text);
        EXPECT_TRUE(host.Calls(audioMasterAutomate).empty()); // nothing before Return
        editor.Key(XK_Return);
        EXPECT_EQ(editor.Display(typed.parameter), typed.shown);
        EXPECT_EQ(Automated(typed.parameter), std::vector<float>{editor.Value(typed.parameter)});
        EXPECT_EQ(host.calls.back().opcode, audioMasterEndEdit); // and no beginning
        EXPECT_TRUE(host.Calls(audioMasterBeginEdit).empty());
        EXPECT_TRUE(ShowsItsEffect(editor, true));
    }
}

TEST_F(Entry, OpensOnTheValueThatShowsAndConfirmsItUnchanged) {
    editor.SetValue(3, 0.123f);
    editor.Settle();
    const std::string shown = editor.Display(3);
    editor.Click(kLoFreq);
    editor.Key(XK_KP_Enter);
    EXPECT_EQ(editor.Display(3), shown);
    EXPECT_EQ(Automated(3).size(), 1U);
}

TEST_F(Entry, EscapeAndAPressElsewhereGiveItUp) {
    editor.Click(kOutput);
    editor.Type("3.3\033");
    EXPECT_TRUE(ShowsItsEffect(editor));
    editor.Click(kLoFreq);
    editor.Type("777");
    editor.Click({100, 100});
    EXPECT_TRUE(ShowsItsEffect(editor));
    // What was typed in vain does not come back.
    editor.Enter(kLoFreq, "");
    EXPECT_EQ(editor.Display(3), "400.0");
    // One field opens over another without applying it.
    editor.Click(kLoFreq);
    editor.Type("888");
    editor.Enter(kHiFreq, "9876");
    EXPECT_EQ(editor.Display(3), "400.0");
    EXPECT_EQ(editor.Display(4), "9876.0");
}

TEST_F(Entry, FiltersKeys) {
    editor.Click(kLoFreq);
    editor.Type("12x"); // the stray letter brings the canonical form
    editor.Key(XK_End);
    editor.Type("\b5%'\r");
    EXPECT_EQ(editor.Display(3), "20.0"); // 12.5 is below the range
    editor.Click(kLoFreq);
    editor.Type("600");
    editor.Key(XK_End);
    editor.Type("-");                                           // no sign in this field: 600.0
    editor.Keys({XK_End, XK_Left, XK_Delete, XK_7, XK_Return}); // keys that move stay keys
    EXPECT_EQ(editor.Display(3), "600.7");
}

TEST_F(Entry, TheKeypadsDecimalKeyTypesAPoint) {
    user.AddKeys({XK_KP_Separator, XK_KP_Decimal}); // the first is the one of most layouts with a comma
    editor.Settle();
    for (const std::uint32_t key : {XK_KP_Separator, XK_KP_Decimal}) {
        editor.Click(kPosition);
        editor.Keys({key, XK_5, XK_Return});
        EXPECT_EQ(editor.Display(5), "0.5");
        editor.Click(kPosition);
        editor.Keys({XK_1, XK_2, key, XK_5, XK_Return});
        EXPECT_EQ(editor.Display(5), "12.5");
    }
}

TEST_F(Entry, TabConfirmsAndGoesOnToTheNextReadOut) {
    editor.Click(kInput);
    for (const char* text : {"-6\t", "450\t", "8000\t", "30\t", "3\t"}) // from left to right
        editor.Type(text);
    EXPECT_TRUE(IsOpen()); // at the left end again
    editor.Key(XK_Escape);
    const auto displays = [this] {
        std::string all;
        for (const std::int32_t parameter : {2, 3, 4, 5, 1})
            all += editor.Display(parameter) + " ";
        return all;
    };
    EXPECT_EQ(displays(), "-6.0 450.0 8000.0 30.0 3.0 ");
    EXPECT_TRUE(ShowsItsEffect(editor, true));
    editor.Click(kLoFreq);
    user.KeyDown(XK_Shift_L);
    editor.Type("500\t");
    user.KeyUp(XK_Shift_L);
    editor.Type("\t");
    editor.Type("600\r");
    EXPECT_EQ(displays(), "-6.0 600.0 8000.0 30.0 3.0 ");
    EXPECT_TRUE(ShowsItsEffect(editor, true));
}

TEST_F(Entry, TakesAnyTextAsANumberInRangeOrNotAtAll) {
    struct Field {
        CPoint readout;
        std::int32_t parameter;
        double lowest, highest; ///< that the read-out may show
    };
    // Two of the read-outs show what was typed far beyond their range; what sounds is limited.
    const Field fields[] = {{kInput, 2, -59.8, 0.0},
                            {kOutput, 1, -59.8, 6.0},
                            {kLoFreq, 3, 20.0, 20000.0},
                            {kHiFreq, 4, 2000.0, 200000.0},
                            {kPosition, 5, 0.0, 12700.0}};
    const std::string known[] = {"1e308", "-nan", "inf", "0x1F", "%s%n%d", "1,5", ".", "-", "--1", "1.2.3.4"};
    std::mt19937 random(3);
    for (const Field& field : fields) {
        for (std::size_t i = 0; i < 2 * std::size(known); ++i) {
            std::string text = i < std::size(known) ? known[i] : std::string();
            while (i >= std::size(known) && text.size() < i)
                text += static_cast<char>(random() % 3 == 0 ? ' ' + random() % 95
                                                            : "0123456789.-"[random() % 12]);
            SCOPED_TRACE(text + " into parameter " + std::to_string(field.parameter));
            editor.Enter(field.readout, text);
            const double shown = std::stod(editor.Display(field.parameter));
            EXPECT_GE(shown, field.lowest);
            EXPECT_LE(shown, field.highest);
            EXPECT_GE(editor.Value(field.parameter), 0.0f);
            EXPECT_LE(editor.Value(field.parameter), 1.0f);
        }
    }
    EXPECT_TRUE(ShowsItsEffect(editor, true));
}

TEST_F(Entry, StepsByItsUnitFinelyWithShiftFartherWhileHeldAndStaysInRange) {
    editor.Click(kLoFreq);
    editor.Keys({XK_Up, XK_Up});
    editor.Chord(XK_Shift_L, {XK_Up});
    editor.Key(XK_Page_Up);
    editor.Click(kLoFreq, 4);
    editor.Key(XK_Return);
    EXPECT_EQ(editor.Display(3), "413.1");
    editor.Click(kHiFreq);
    user.Hold(user.Children(editor.parent)[0], XK_Down, 72);
    editor.Key(XK_Return);
    EXPECT_EQ(editor.Display(4), "8370.0") << "9000 less 30, less 40 times 10, less 2 times 100";
    editor.Click(kPosition);
    editor.Keys({XK_Page_Down, XK_Return});
    EXPECT_EQ(editor.Display(5), "54.0");
    editor.Click(kInput);
    editor.Keys({XK_Up, XK_Down, XK_Down, XK_Return}); // from its maximum of 0 dB
    EXPECT_EQ(editor.Display(2), "-0.2");
    editor.Click(kLoFreq);
    editor.Keys({XK_2, XK_0, XK_Down, XK_Return});
    EXPECT_EQ(editor.Display(3), "20.0");
    EXPECT_TRUE(host.Calls(audioMasterBeginEdit).empty());
}

TEST_F(Entry, TakesTheKeyboardAndGivesItBack) {
    const xcb_window_t hosts = user.MakeWindow(600, 500, 50, 50, true, editor.parent);
    user.SetFocus(hosts);
    for (const std::uint32_t end : {XK_Return, XK_Escape}) {
        editor.Click(kLoFreq);
        EXPECT_NE(user.Focus(), hosts);
        editor.Key(end);
        EXPECT_EQ(user.Focus(), hosts);
    }
    editor.Click(kLoFreq);
    editor.Close();
    EXPECT_EQ(user.Focus(), hosts);
    user.DestroyWindow(hosts);
}

} // namespace
} // namespace vocafade::test
