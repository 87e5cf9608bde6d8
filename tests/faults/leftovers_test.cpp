// SPDX-License-Identifier: MIT
// What saves that were killed left behind goes with a later save; what somebody still needs does not.
#include "base/file_replacement.h"
#include "tests/support/open_effect.h"
#include "tests/support/temp_folder.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace vocafade::test {
namespace {

namespace fs = std::filesystem;

class Leftovers : public WithSettings {
  protected:
    Leftovers() { fs::create_directory(settings / "config"); }

    void Save() {
        OpenEffect effect;
        effect.SaveProgram(3, "saved");
        EXPECT_EQ(effect.messages, 0);
    }
    std::string Beside(const std::string& name) const { return settings / ("config/" + name); }
    std::set<std::string> Names() const { return NamesIn(settings / "config"); }
};

TEST_F(Leftovers, OfTheDeadGoWhenTheyAreOld) {
    WriteFile(Beside(".VocafadeDef.fxb.123.tmp"), "half");
    WriteFile(Beside(".VocafadeDef.fxb.4000000000.tmp"), "");
    MakeOld(settings.path() / "config");
#if !defined(_WIN32) // where nobody can remove it then
    ::chmod(Beside(".VocafadeDef.fxb.123.tmp").c_str(), 0444);
#endif
    WriteFile(Beside(".VocafadeDef.fxb.77.tmp"), "begun just now, perhaps on another machine");
    Save();
    EXPECT_EQ(Names(), (std::set<std::string>{"VocafadeDef.fxb", ".VocafadeDef.fxb.77.tmp"}));
    MakeOld(settings.path() / "config");
    Save();
    EXPECT_EQ(Names(), std::set<std::string>{"VocafadeDef.fxb"});
}

#if !defined(_WIN32) // where nobody else can change a file that is being written, nor its time
TEST_F(Leftovers, OfTheLivingStayHoweverOld) {
    FileReplacement slow;
    ASSERT_TRUE(slow.Begin(BankPath()));
    ASSERT_TRUE(slow.file().Write("a writer that was stopped", 25));
    slow.file().GetLength(); // hands it to the system
    MakeOld(settings.path() / "config");
    Save();
    EXPECT_EQ(Names().size(), 2U);
    EXPECT_TRUE(slow.Commit());
    EXPECT_EQ(ReadFile(BankPath()), "a writer that was stopped");
    EXPECT_EQ(Names().size(), 1U);
}
#endif

TEST_F(Leftovers, OfOtherNamesAreLeftAlone) {
    const std::set<std::string> others = {".VocafadeDef.fxb.tmp",     ".VocafadeDef.fxb..tmp",
                                          ".VocafadeDef.fxb.1a.tmp",  ".VocafadeDef.fxb.-1.tmp",
                                          "VocafadeDef.fxb.1.tmp",    ".VocafadeDef.fxb.1.tmp~",
                                          ".vocafadedef.fxb.1.tmp",   ".VocafadeDef.fxb2.1.tmp",
                                          ".VocafadeDef.fxb.1.2.tmp", "important"};
    for (const std::string& name : others)
        WriteFile(Beside(name), name);
    MakeOld(settings.path() / "config");
    fs::create_directory(Beside(".VocafadeDef.fxb.3.tmp"));
#if !defined(_WIN32)
    fs::create_symlink("important", Beside(".VocafadeDef.fxb.2.tmp"));
    ASSERT_EQ(::mkfifo(Beside(".VocafadeDef.fxb.4.tmp").c_str(), 0600), 0);
#endif
    std::set<std::string> expected = Names();
    expected.insert("VocafadeDef.fxb");
    Save();
    EXPECT_EQ(Names(), expected);
    EXPECT_EQ(ReadFile(Beside("important")), "important");
}

} // namespace
} // namespace vocafade::test
