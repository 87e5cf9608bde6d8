// SPDX-License-Identifier: MIT
// Copying and saving programs from the panel: the menu, the dialog and the bank file.
#include "tests/editor/panel_picture.h"

#include <cstring>

namespace vocafade::test {
namespace {

constexpr std::size_t kChunkAt = 160;
constexpr std::size_t kRecord = 52;
constexpr std::size_t kNameAt = 24;

class Programs : public OpenEditorTest {
  protected:
    void Name(std::int32_t program, const char* name, float loFreq) {
        const VstIntPtr current = editor.Ask(effGetProgram);
        editor.Ask(effSetProgram, 0, program);
        editor.Ask(effSetProgramName, 0, 0, const_cast<char*>(name));
        editor.SetValue(3, loFreq);
        editor.Ask(effSetProgram, 0, current);
        editor.Settle();
        Forget();
    }
    std::string BankRecord(std::size_t program) {
        const std::string bank = ReadFile(BankPath());
        EXPECT_EQ(bank.size(), 3488U);
        return bank.size() == 3488 ? bank.substr(kChunkAt + program * kRecord, kRecord) : std::string(52, 0);
    }
    std::string BankName(std::size_t program) { return BankRecord(program).c_str() + kNameAt; }
    float BankLoFreq(std::size_t program) {
        float value = 0.0f;
        std::memcpy(&value, BankRecord(program).data() + 12, sizeof value);
        return value;
    }
};

TEST_F(Programs, MenuCopiesAnotherProgramOverTheCurrentOne) {
    Name(2, "Third", 0.75f);
    editor.Click(kCopy);
    const xcb_window_t menu = Popup();
    ASSERT_NE(menu, 0U);
    EXPECT_EQ(user.BoundsOf(menu).x, 20 + 91);
    PanelState state = PanelState::Of(editor);
    state.copyOpen = true; // the button stays down as long as the menu is open
    EXPECT_TRUE(SamePicture(editor.LookAtPanel(), ExpectedPanel(state), {0, 0, 91, 214}));
    editor.Play(0.5f);                          // audio goes on meanwhile
    editor.Keys({XK_Down, XK_Down, XK_Return}); // the current program is passed over
    EXPECT_EQ(Popup(), 0U);
    EXPECT_EQ(editor.Value(3), 0.75f);
    EXPECT_EQ(editor.ProgramName(0), "Third");
    EXPECT_EQ(editor.Ask(effGetProgram), 0);
    EXPECT_EQ(host.Calls(audioMasterUpdateDisplay).size(), 1U);
    for (int i = 0; i < 200; ++i) { // until the meters have fallen
        editor.Idle();
    }
    EXPECT_TRUE(ShowsItsEffect(editor, true));
}

TEST_F(Programs, SaveStoresTheCurrentSettingsUnderANewName) {
    editor.SetValue(3, 0.5f);
    editor.Settle();
    editor.Click(kSave);
    ASSERT_NE(Popup(), 0U);
    EXPECT_TRUE(ReadFile(BankPath()).empty());
    editor.Type("Chorus of a very long song name\r");
    EXPECT_EQ(Popup(), 0U);
    EXPECT_EQ(BankName(0), "Chorus of a very long s"); // 23 bytes
    EXPECT_EQ(BankLoFreq(0), 0.5f);
    EXPECT_EQ(editor.ProgramName(0), "Chorus of a very long s");
    EXPECT_EQ(host.Calls(audioMasterUpdateDisplay).size(), 1U);
    EXPECT_TRUE(ShowsItsEffect(editor, false));
}

TEST_F(Programs, SaveIntoAnotherSlotLeavesTheEditedOneAsItWas) {
    Name(1, "Second", 0.25f);
    editor.SetValue(3, 0.5f);
    editor.Click(kSave);
    editor.Keys({XK_Down, XK_Return}); // the next slot: its name comes into the field
    EXPECT_EQ(editor.Ask(effGetProgram), 1);
    EXPECT_EQ(BankName(1), "Second");
    EXPECT_EQ(BankLoFreq(1), 0.5f);
    EXPECT_EQ(BankName(0), "Empty");
    EXPECT_EQ(editor.Value(3), 0.5f);
    editor.Ask(effSetProgram, 0, 0);
    EXPECT_EQ(editor.Display(3), "400.0");
    EXPECT_EQ(BankRecord(0).substr(48), std::string("\x01\0\0\0", 4)); // the current program of the bank
}

TEST_F(Programs, SaveCanBeGivenUp) {
    editor.SetValue(3, 0.5f);
    editor.Click(kSave);
    editor.Key(XK_Escape);
    EXPECT_EQ(Popup(), 0U);
    EXPECT_FALSE(std::filesystem::exists(BankPath()));
    EXPECT_TRUE(ShowsItsEffect(editor, true));
    editor.Press({280, 40}); // only a release on the button opens it
    editor.Release({280, 60});
    EXPECT_EQ(Popup(), 0U);
}

TEST_F(Programs, NamesKeepTheirBytesWhateverTheyAre) {
    const std::string japanese = "\x83\x7B\x81\x5B\x83\x4A\x83\x8B"; // "vocal", in Shift-JIS
    const std::string neither = "\xFF\x80 \x81";                     // no encoding at all
    Name(0, neither.c_str(), 0.5f);
    Name(1, japanese.c_str(), 0.25f);
    editor.Enter(kSave, ""); // unchanged: under its existing name
    EXPECT_EQ(BankName(0), neither);
    EXPECT_EQ(BankName(1), japanese);
    editor.Click(kSave);
    editor.Keys({XK_Down, XK_End, XK_2, XK_Return});
    EXPECT_EQ(BankName(1), japanese + "2"); // through UTF-8 and back
    EXPECT_EQ(BankName(0), neither);
    editor.Click(kCopy); // and they show, without harm
    EXPECT_NE(Popup(), 0U);
    editor.Key(XK_Escape);
}

TEST_F(Programs, NamesWithoutATerminatorEndWithTheirField) {
    std::string chunk(64 * kRecord, '\0');
    chunk.replace(63 * kRecord + kNameAt, 23, std::string(23, 'W'));
    const auto menuWidth = [&] {
        editor.Ask(effSetChunk, 0, static_cast<VstIntPtr>(chunk.size()), chunk.data());
        editor.Click(kCopy);
        const int width = user.BoundsOf(Popup()).width;
        editor.Key(XK_Escape);
        return width;
    };
    const int width = menuWidth();
    chunk.replace(63 * kRecord + kNameAt, 28, std::string(28, 'W')); // and no zero behind it
    EXPECT_EQ(menuWidth(), width);
    editor.Enter(kSave, ""); // of another program
    EXPECT_EQ(BankRecord(63), chunk.substr(63 * kRecord)) << "keeps all bytes";
    editor.Click(kSave);
    for (int i = 0; i < 63; ++i)
        user.Key(XK_Down);
    editor.Keys({XK_End, XK_BackSpace, XK_Return});
    EXPECT_EQ(BankName(63), std::string(22, 'W')) << "the last letter was the field's last";
}

TEST_F(Programs, NamesTakeOnlyWhatCanBeStored) {
    // Letters that no Shift-JIS has, typed on a keyboard that has them, and one that it has.
    constexpr xcb_keysym_t kSong = 0x1006B4C;
    user.AddKeys({XK_eacute, XK_ssharp, kSong});
    editor.Settle();
    editor.Click(kSave); // whose name is selected, so that typing replaces it
    // The accent goes, which the user sees; the sharp s has no other form.
    editor.Keys({XK_C, XK_a, XK_f, XK_eacute, XK_ssharp, XK_question, kSong, XK_Return});
    EXPECT_EQ(BankName(0), "Cafe?\x89\xCC");
    editor.Click(kSave);
    for (int i = 0; i < 13; ++i)
        editor.Key(kSong);
    editor.Type("xy\r"); // one byte is left behind eleven characters
    std::string full;
    for (int i = 0; i < 11; ++i)
        full += "\x89\xCC";
    EXPECT_EQ(BankName(0), full + "x");
}

TEST_F(Programs, TellsWhenTheBankCannotBeSavedAndKeepsTheSettings) {
    WriteFile(settings / "config", "a file where the folder should be");
    editor.SetValue(3, 0.5f);
    editor.Enter(kSave, "");
    editor.Settle();
    const xcb_window_t box = Popup();
    ASSERT_NE(box, 0U);
    EXPECT_GT(user.BoundsOf(box).width, 200);
    EXPECT_EQ(editor.Value(3), 0.5f);
    EXPECT_EQ(host.Calls(audioMasterUpdateDisplay).size(), 1U);
    editor.Key(XK_Return);
    EXPECT_EQ(Popup(), 0U);
    EXPECT_TRUE(ShowsItsEffect(editor, false)); // stored in memory
}

} // namespace
} // namespace vocafade::test
