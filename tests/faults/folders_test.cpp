// SPDX-License-Identifier: MIT
// Settings folders as they should not be: closed, missing, misnamed, made of links. A save then fails
// in words or succeeds whole; nothing else happens to the effect or its host.
#include "tests/support/open_effect.h"
#include "tests/support/temp_folder.h"

#include <sys/stat.h>

namespace vocafade::test {
namespace {

namespace fs = std::filesystem;

class Folders : public WithSettings {
  protected:
    static void Point(const std::string& folder) { SetVariable("XDG_CONFIG_HOME", folder); }

    /// Opens an effect, saves into a slot and reports how many messages that gave.
    static int MessagesOfASave(const char* name = "mine") {
        OpenEffect effect;
        effect.setParameter(3, 0.5f);
        effect.SaveProgram(7, name);
        EXPECT_EQ(effect.getParameter(3), 0.5f) << "the edit stays, saved or not";
        EXPECT_EQ(effect.getProgram(), 7);
        return effect.messages;
    }

    static std::string NameAtNextStart() { return OpenEffect().NameAt(7); }
};

TEST_F(Folders, ThatCannotBeMadeGiveOneMessage) {
    WriteFile(settings / "file", "in the way");
    fs::create_directory_symlink(settings / "nowhere/deeper", settings / "dangling");
    fs::create_symlink(settings / "loop-b", settings / "loop-a");
    fs::create_symlink(settings / "loop-a", settings / "loop-b");
    for (const std::string& folder :
         {settings / "file", settings / "file/below", settings / "loop-a", settings / "loop-a/below",
          std::string("/proc/self/nowhere"), std::string("/dev/null"), std::string("/dev/full/x")}) {
        Point(folder);
        EXPECT_EQ(MessagesOfASave(), 1) << folder;
        EXPECT_EQ(NameAtNextStart(), "Empty") << folder;
    }
    EXPECT_EQ(ReadFile(settings / "file"), "in the way");
    // A link that leads nowhere yet is no obstacle where what it names can be made, and else a message.
    Point(settings / "dangling");
    EXPECT_LE(MessagesOfASave(), 1);
    EXPECT_EQ(NameAtNextStart() == "mine", fs::exists(settings / "nowhere/deeper/VocafadeDef.fxb"));
}

TEST_F(Folders, WithHostileNamesAreMadeAndTakenByTheLetter) {
    for (const std::string name : {"a/b/c d/é", "new\nline", "tab\tand\x01", "%2e%2e%2f", "$HOME`x`",
                                   "\xff\xfe no text", "-rf", "file:"}) {
        Point(settings / name);
        EXPECT_EQ(MessagesOfASave(), 0) << name;
        EXPECT_EQ(NamesIn(settings / name), std::set<std::string>{"VocafadeDef.fxb"}) << name;
        EXPECT_EQ(NameAtNextStart(), "mine") << name;
    }
    // Two points go up, as everywhere; they lead where the user pointed.
    Point(settings / "x/../y");
    MessagesOfASave();
    EXPECT_EQ(NameAtNextStart(), "mine");
}

TEST_F(Folders, ThatAreRelativeCountAsUnsetAndTooLongOnesGiveOneMessage) {
    SetVariable("HOME", settings / "home");
    fs::create_directory(settings / "work");
    const fs::path before = fs::current_path();
    fs::current_path(settings / "work");
    Point("relative/folder");
    EXPECT_EQ(MessagesOfASave(), 0);
    EXPECT_TRUE(NamesIn(".").empty()) << "nothing follows the host's current folder";
    EXPECT_TRUE(fs::exists(settings / "home/.config/VocafadeDef.fxb"));
    fs::current_path(before);

    Point(settings / std::string(1500, 'y')); // short enough for us, too long for the system
    EXPECT_EQ(MessagesOfASave(), 1);
}

TEST_F(Folders, BankThatIsNoFileGivesOneMessageAndIsLeftAlone) {
    fs::create_directory(settings / "config");
    fs::create_directory(BankPath());
    EXPECT_EQ(MessagesOfASave(), 1);
    fs::remove(BankPath());
    ASSERT_EQ(::mkfifo(BankPath().c_str(), 0600), 0);
    EXPECT_EQ(MessagesOfASave(), 1);
    fs::remove(BankPath());
    fs::create_symlink("VocafadeDef.fxb", BankPath()); // to itself
    EXPECT_EQ(NameAtNextStart(), "Empty");
    const int messages = MessagesOfASave();
    EXPECT_LE(messages, 1);
    EXPECT_EQ(NameAtNextStart() == "mine", messages == 0);
    EXPECT_EQ(NamesIn(settings / "config").size(), 1U) << "no scraps";
}

TEST_F(Folders, KeepTheBanksPermissionsAndOwner) {
    ASSERT_EQ(MessagesOfASave("old"), 0);
    const bool root = ::geteuid() == 0; // who alone may give files away
    if (root) {
        ASSERT_EQ(::chown(BankPath().c_str(), 12345, 54321), 0);
    }
    ASSERT_EQ(::chmod(BankPath().c_str(), 0640), 0);
    struct stat before {};
    ::stat(BankPath().c_str(), &before);
    ASSERT_EQ(MessagesOfASave("new"), 0);
    struct stat after {};
    ::stat(BankPath().c_str(), &after);
    EXPECT_NE(after.st_ino, before.st_ino) << "it was not replaced";
    EXPECT_EQ(after.st_mode & 07777U, 0640U);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_EQ(NameAtNextStart(), "new");
}

TEST_F(Folders, CurrentOneGivesFactoryProgramsAndIsNeverWritten) {
    ASSERT_EQ(MessagesOfASave("theirs"), 0);
    const std::string bank = ReadFile(BankPath());
    const fs::path before = fs::current_path();
    fs::create_directory(settings / "work");
    fs::current_path(settings / "work");
    const auto factoryValue = [] {
        OpenEffect effect;
        effect.setProgram(7);
        effect.setParameter(3, 0.9f);
        effect.SetFactoryProgram();
        effect.ProgramToFactory();
        return effect.getParameter(3);
    };
    const float builtIn = factoryValue();
    EXPECT_NE(builtIn, 0.5f);
    WriteFile("VocafadeDef.fxb", bank);
    EXPECT_EQ(factoryValue(), 0.5f);
    for (const std::string& broken : {std::string(), bank.substr(0, 100), std::string(4000, '\xff'),
                                      bank.substr(0, 16) + "Else" + bank.substr(20)}) {
        WriteFile("VocafadeDef.fxb", broken);
        EXPECT_EQ(factoryValue(), builtIn);
        EXPECT_EQ(MessagesOfASave(), 0);
        EXPECT_EQ(ReadFile("VocafadeDef.fxb"), broken);
        EXPECT_EQ(NamesIn("."), std::set<std::string>{"VocafadeDef.fxb"});
    }
    fs::current_path(before);
}

} // namespace
} // namespace vocafade::test
