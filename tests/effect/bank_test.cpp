// SPDX-License-Identifier: MIT
// The bank file that survives restarts.
#include "base/file.h"
#include "persistence/settings_folder.h"
#include "tests/support/open_effect.h"
#include "tests/support/temp_folder.h"

namespace vocafade::test {
namespace {

class Bank : public WithSettings {
  protected:
    /// Saves one program in the user's folder and returns the file's bytes.
    std::string SavedBank() {
        AVocafade effect(RecordingHost::Callback);
        effect.open();
        effect.setParameter(3, 0.5f);
        effect.SaveProgram(7, "My song");
        return ReadFile(BankPath());
    }

    /// Moves a saved bank to another place.
    void SaveBankAs(const std::string& path) {
        SavedBank();
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::filesystem::rename(BankPath(), path);
    }

    /// The name of program 7 in an effect that is opened now, and whether the factory's has the saved value.
    std::pair<std::string, bool> SeventhAndFactorys() {
        AVocafade effect(RecordingHost::Callback);
        effect.open();
        effect.setProgram(7);
        const std::string name = effect.ProgramName(7).str();
        effect.setParameter(3, 0.1f);
        effect.ProgramToFactory();
        return {name, effect.getParameter(3) == 0.5f};
    }

    RecordingHost host;
};

TEST_F(Bank, IsWrittenByteForByteAndReadBackAtTheNextStart) {
    const std::string bytes = SavedBank();
    ASSERT_EQ(bytes.size(), 3488U);
    EXPECT_EQ(bytes.substr(0, 32), std::string("CcnK\0\0\0\0FBCh\0\0\0\1VfdQ\0\0\0\1\0\0\0\x40\0\0\0\0", 32));
    EXPECT_EQ(bytes.substr(28, 128), std::string(128, '\0'));
    EXPECT_EQ(bytes.substr(156, 4), std::string("\0\0\x0D\0", 4));
    EXPECT_EQ(bytes.substr(160 + 7 * 52 + 24, 8), std::string("My song\0", 8));
    EXPECT_EQ(bytes[160 + 48], 7) << "the current program";
    EXPECT_EQ(host.Calls(audioMasterUpdateDisplay).size(), 1U);

    OpenEffect next;
    EXPECT_EQ(next.getProgram(), 7);
    EXPECT_EQ(next.ProgramName(7), "My song");
    EXPECT_EQ(next.getParameter(3), 0.5f);
    EXPECT_FALSE(next.IsProgramChanged());
    for (const std::int32_t nowhere : {64, -1})
        next.SaveProgram(nowhere, "nowhere");
    EXPECT_EQ(next.getProgram(), 7);
    next.setProgram(0);
    EXPECT_EQ(next.getParameter(3), DefaultNormalizedValue(3))
        << "the edited slot went back to what was stored";
}

TEST_F(Bank, BesideThePlugInFillsTheFactoryProgramsOnlyWithoutTheUsersOwn) {
    const std::string folder = settings / "bundle";
    SaveBankAs(folder + "/VocafadeDef.fxb");
    for (const auto& [answer, found] : {std::pair{folder + "/", true},
                                        {folder + "/Vocafade.so", true}, // cut behind the last slash
                                        {folder, false},
                                        {std::string("/"), false},
                                        {std::string(), false},
                                        {std::string("nowhere"), false},
                                        {std::string(5000, 'z'), false}}) {
        host.directory = answer;
        EXPECT_EQ(SeventhAndFactorys(), std::pair(std::string(found ? "My song" : "Empty"), found)) << answer;
    }
    // With a bank of the user's own the plug-in's folder is never looked at.
    host.directory = folder + "/";
    OpenEffect saver;
    saver.SaveProgram(7, "Mine");
    const auto asked = host.Calls(audioMasterGetDirectory).size();
    EXPECT_EQ(SeventhAndFactorys(), std::pair(std::string("Mine"), false));
    EXPECT_EQ(host.Calls(audioMasterGetDirectory).size(), asked + 1) << "asked, but only as a courtesy";
}

TEST_F(Bank, OfAnotherKindLoadsNothingButLetsTheFactoryProgramsIn) {
    // The bank in the user's folder is of another kind; the one in the current folder is whole.
    SaveBankAs(settings / "VocafadeDef.fxb");
    std::string other = SavedBank();
    WriteFile(BankPath(), other.replace(8, 4, "FxBk"));
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(settings.path());
    EXPECT_EQ(SeventhAndFactorys(), std::pair(std::string("Empty"), true));
    std::filesystem::current_path(before);
}

TEST_F(Bank, IgnoresWhatIsNotItsOwn) {
    const std::string good = SavedBank();
    const auto nameAfter = [&](const std::string& bytes) {
        WriteFile(BankPath(), bytes);
        OpenEffect effect;
        EXPECT_FALSE(effect.IsProgramChanged());
        EXPECT_EQ(effect.ProgramName(63), "Empty");
        return effect.ProgramName(7).str();
    };
    const auto changed = [&](std::size_t at, const std::string& text) {
        std::string bytes = good;
        return bytes.replace(at, text.size(), text);
    };
    for (const std::string& other : {changed(0, "RIFF"), changed(8, "FxBk"), changed(16, "Else")})
        EXPECT_EQ(nameAfter(other), "Empty") << other.substr(0, 20);
    const std::string ofRecordsAndABit = good.substr(0, 160 + 7 * 52 + 24 + 4);
    EXPECT_EQ(nameAfter(ofRecordsAndABit), "Empty") << "the rest of the declared chunk is missing";
    for (std::size_t length = 0; length < 160; length += 13)
        EXPECT_EQ(nameAfter(good.substr(0, length)), "Empty") << length;
    EXPECT_EQ(nameAfter(std::string(ofRecordsAndABit).replace(156, 4, std::string("\0\0\1\x88", 4))), "My sy")
        << "a chunk that is complete counts to its last byte";
    for (const auto& [bytes, why] : {std::pair{good, "whole"},
                                     {changed(4, "\x7f\x7f\x7f\x7f"), "sizes and versions are not looked at"},
                                     {changed(156, "\xff\xff\xff\xff"), "a declared size is bounded"},
                                     {good + std::string(100000, 'x'), "what stands behind the bank"},
                                     {good.substr(0, 160 + 8 * 52 + 30), "whole records of a short file"}})
        EXPECT_EQ(nameAfter(bytes), "My song") << why;
}

#if !defined(_WIN32) // where the C++ library makes no links
TEST_F(Bank, ReplacesWhatALinkPointsTo) {
    SavedBank();
    std::filesystem::create_directory(settings / "dotfiles");
    std::filesystem::rename(BankPath(), settings / "dotfiles/bank");
    std::filesystem::create_symlink("../dotfiles/bank", BankPath());
    OpenEffect effect;
    effect.SaveProgram(2, "linked");
    EXPECT_TRUE(std::filesystem::is_symlink(BankPath()));
    EXPECT_NE(ReadFile(settings / "dotfiles/bank").find("linked"), std::string::npos);
}
#endif

TEST_F(Bank, CreatingAFileLeavesItsOtherNamesTheirContent) {
    WriteFile(settings / "one", "old");
    std::filesystem::create_hard_link(settings / "one", settings / "other");
    CFile file;
    ASSERT_TRUE(file.Open((settings / "one").c_str(), CFile::modeCreate | CFile::modeWrite));
    file.Write("new", 3);
    file.Close();
    EXPECT_EQ(ReadFile(settings / "one"), "new");
    EXPECT_EQ(ReadFile(settings / "other"), "old");
}

TEST_F(Bank, LivesInTheUsersConfigurationFolder) {
    const auto folderFor = [](const std::string& value) {
        SetVariable(kConfigurationVariable, value);
        GetMy_SHFOLDER_PathName();
        return SettingsFolder();
    };
#if defined(_WIN32)
    EXPECT_EQ(folderFor("D:\\Benutzer\\\xE6\xAD\x8C").substr(0, 12), "D:/Benutzer/");
    for (const char* unusable : {"", "relative\\path"})
        EXPECT_TRUE(folderFor(unusable).ends_with("/AppData/Roaming/")) << SettingsFolder();
#else
    SetVariable("HOME", "/home/somebody");
    EXPECT_EQ(folderFor("/some/where/"), "/some/where/") << "no second slash";
    EXPECT_EQ(folderFor(""), "/home/somebody/.config/");
    EXPECT_EQ(folderFor("relative/path"), "/home/somebody/.config/");
    EXPECT_EQ(folderFor("/" + std::string(3000, 'x')), "/home/somebody/.config/")
        << "what does not fit leaves the last one";
#endif
}

} // namespace
} // namespace vocafade::test
