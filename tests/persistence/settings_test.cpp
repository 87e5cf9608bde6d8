// SPDX-License-Identifier: MIT
// The settings store and the profile calls over it, in configuration folders of the test's own.
#include "persistence/profile.h"
#include "persistence/profile_cache.h"
#include "persistence/settings_places.h"
#include "persistence/settings_store.h"
#include "tests/support/processes.h"
#include "tests/support/temp_folder.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#if !defined(_WIN32)
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace vocafade::test {
namespace {

class Settings : public testing::Test {
  protected:
    Settings() {
        SetVariable(kConfigurationVariable, folder_ / "user");
#if defined(_WIN32)
        SetVariable("ProgramData", folder_ / "system");
#else
        SetVariable("XDG_CONFIG_DIRS", "relative:" + folder_ / "system" + ":/etc/xdg");
#endif
    }

    static std::string Private(const char* section, const char* entry, const char* fallback = "default",
                               const char* file = "app") {
        char text[64];
        const int length = GetPrivateProfileString(section, entry, fallback, text, sizeof text, file);
        EXPECT_EQ(length, static_cast<int>(std::strlen(text)));
        return text;
    }

    static void StoreIn(SettingsScope scope, const std::string& section, const std::string& entry,
                        const std::string& value, const std::string& application = "app") {
        ASSERT_TRUE(SettingsStore(application).Change(scope, [&](SettingsDocument& document) {
            document.Section(section).Set(entry, {value});
        }));
    }

    TempFolder folder_;
};

TEST_F(Settings, TextsAreStoredReplacedListedAndRemoved) {
    EXPECT_EQ(Private("S", "a"), "default");
    EXPECT_EQ(Private("S", "a", nullptr), "");
    EXPECT_TRUE(WritePrivateProfileString("S", "a", "one", "app"));
    EXPECT_TRUE(WritePrivateProfileString("S", "bc", "two words", "app"));
    EXPECT_TRUE(WritePrivateProfileString("S", "a", "1 ", "app"));
    EXPECT_EQ(Private("S", "a"), "1 ");
    EXPECT_EQ(Private("S", "bc"), "two words");
    EXPECT_EQ(Private("s", "a"), "default");
    EXPECT_EQ(Private("S", "a", "default", "other"), "default");

    char list[64];
    std::memset(list, 'x', sizeof list);
    EXPECT_EQ(GetPrivateProfileString("S", nullptr, "", list, sizeof list, "app"), 1);
    EXPECT_EQ(std::memcmp(list, "a\0bc\0\0x", 7), 0);
    std::memset(list, 'x', sizeof list);
    EXPECT_EQ(GetPrivateProfileString("S", nullptr, "", list, 5, "app"), 1);
    EXPECT_EQ(std::memcmp(list, "a\0b\0\0x", 6), 0) << "cut to what fits, with both ends";
    EXPECT_EQ(GetPrivateProfileString("S", "bc", "", list, 4, "app"), 3);
    EXPECT_STREQ(list, "two");
    EXPECT_EQ(GetPrivateProfileString("S", "bc", "", nullptr, 4, "app"), 0);
    EXPECT_EQ(GetPrivateProfileString("S", "bc", "", list, 0, "app"), 0);

    WritePrivateProfileString("S", nullptr, nullptr, "app");
    EXPECT_EQ(Private("S", "a"), "default");
}

TEST_F(Settings, NullsFollowTheirOwnRules) {
    WritePrivateProfileString("S", "a", "1", "app");
    WritePrivateProfileString("S", "a", nullptr, "app");
    EXPECT_EQ(Private("S", "a"), "1") << "a null value changes nothing";
    WritePrivateProfileString("empty", "a", nullptr, "app");
    EXPECT_NE(SettingsStore("app").Read(SettingsScope::userAnyHost)->FindSection("empty"), nullptr);
    EXPECT_EQ(Private("empty", nullptr), "") << "an empty section lists as nothing, not as the default";
    EXPECT_EQ(Private("missing", nullptr), "default");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(WritePrivateProfileString("S", nullptr, "v", "app"));
    EXPECT_TRUE(WritePrivateProfileString(nullptr, "a", "v", "app"));
    EXPECT_TRUE(WriteProfileString(nullptr, "a", "v")); // tells nothing
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "CFStringCreateWithCString((null))\nCFStringCreateWithCString((null))\n");
    EXPECT_EQ(Private(nullptr, "a"), "default");
    EXPECT_TRUE(WritePrivateProfileString("S", "a", "v", ""));
    EXPECT_EQ(Private("S", "a", "default", ""), "default");
}

TEST_F(Settings, LargeFilesAreRead) { // in no time: a search through all names for each would take minutes
    std::string lines;
    for (int i = 0; i < 400000; ++i)
        lines += (i % 2 == 0 ? "[S" + std::to_string(i) + "]\n" : "n" + std::to_string(i) + "=v\n");
    for (int i = 0; i < 400000; ++i)
        lines += "m" + std::to_string(i) + "=" + std::to_string(i) + "\n";
    SettingsDocument document(lines);
    EXPECT_EQ(document.FindSection("S399998")->Find("m399999")->bytes, "399999");
    document.RemoveSection("S0"); // moves what is behind it
    EXPECT_EQ(document.FindSection("S0"), nullptr);
    EXPECT_EQ(document.FindSection("S2")->Find("n3")->bytes, "v");
    document.Section("S0").Set("again", {"yes"});
    EXPECT_EQ(document.sections().back().Find("again")->bytes, "yes");
}

TEST_F(Settings, NumbersAndBytesComeBack) {
    WritePrivateProfileString("S", "n", " -42 px", "app");
    WritePrivateProfileString("S", "huge", "99999999999999999999", "app");
    EXPECT_EQ(GetPrivateProfileInt("S", "n", 7, "app"), -42);
    EXPECT_EQ(GetPrivateProfileInt("S", "huge", 7, "app"), 2147483647);
    EXPECT_EQ(GetPrivateProfileInt("S", "missing", 7, "app"), 7);

    const char bytes[] = "\0\1\xFF\n%=]9 ";
    unsigned char back[16] = {};
    EXPECT_TRUE(WritePrivateProfileBinary("S", "b", bytes, 10, "app"));
    EXPECT_EQ(GetPrivateProfileBinary("S", "b", back, 4, "app"), 10)
        << "the stored length, not the copied one";
    EXPECT_EQ(std::memcmp(back, "\0\1\xFF\n\0", 5), 0);
    EXPECT_EQ(GetPrivateProfileBinary("S", "b", back, 16, "app"), 10);
    EXPECT_EQ(std::memcmp(back, bytes, 10), 0);
    EXPECT_EQ(GetPrivateProfileBinary("S", "b", nullptr, 16, "app"), 10);
    EXPECT_EQ(GetPrivateProfileBinary("S", "n", back, 16, "app"), 0);
    EXPECT_EQ(Private("S", "b"), "default") << "bytes are no text";
}

TEST_F(Settings, AnyNameAndAnyTextIsSafe) {
    std::mt19937 random(3);
    std::vector<std::string> texts = {std::string(300, 'n'), std::string(301, 'n')};
    for (const char* text : {"../../escape", "/etc/passwd", ".", "..", "[S]", "a=b", "#c", ":", "%41", " ",
                             "line\nbreak\r", "\xE3\x83\x9C"})
        texts.emplace_back(text);
    for (int i = 0; i < 20; ++i) {
        texts.emplace_back(1 + random() % 40, '\0');
        for (char& c : texts.back())
            c = static_cast<char>(1 + random() % 255);
    }
    for (const std::string& text : texts)
        WritePrivateProfileString(text.c_str(), text.c_str(), text.c_str(), text.c_str());
    for (const std::string& text : texts) {
        char back[512];
        GetPrivateProfileString(text.c_str(), text.c_str(), "default", back, sizeof back, text.c_str());
        EXPECT_EQ(back, text);
    }
    // Nothing was written anywhere but in the one folder.
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path())) {
        if (!entry.is_regular_file()) continue;
        EXPECT_EQ(entry.path().parent_path(), folder_.path() / "user/vocafade/settings") << entry.path();
    }
}

TEST_F(Settings, TheNearestScopeThatHasTheSectionIsTaken) {
    constexpr SettingsScope farthestFirst[] = {SettingsScope::anyUserAnyHost, SettingsScope::anyUserThisHost,
                                               SettingsScope::userThisHost, SettingsScope::userAnyHost};
    for (const SettingsScope scope : farthestFirst) {
        const std::string value = std::to_string(static_cast<int>(scope));
        StoreIn(scope, "S", "a", value);
        EXPECT_EQ(Private("S", "a"), value);
    }
    StoreIn(SettingsScope::anyUserAnyHost, "S", "only far", "x");
    EXPECT_EQ(Private("S", "only far"), "default") << "the nearest section decides, even without the entry";
    EXPECT_EQ(GetPrivateProfileInt("S", "a", 9, "app"), 0) << "numbers are the user's own";
}

TEST_F(Settings, TheRunningProgramHasUserAndSystemSettings) {
    const std::string self = CurrentApplication().value_or("");
    EXPECT_EQ(self.substr(0, self.find('.')), "settings_test");
    char text[64];
    EXPECT_EQ(GetProfileString("S", "a", "default", text, sizeof text), 7);
    WriteProfileString("S", "a", "mine");
    EXPECT_EQ(GetProfileString("S", "a", "default", text, sizeof text), 4);
    EXPECT_EQ(Private("S", "a", "default", nullptr), "mine");
    EXPECT_EQ(Private("S", "a", "default", self.c_str()), "mine");
    StoreIn(SettingsScope::userThisHost, "T", "a", "here", self);
    EXPECT_EQ(GetProfileString("T", "a", "default", text, sizeof text), 7) << "not widened";

    const auto system = [&] {
        GetSystemProfileString("S", "a", "default", text, sizeof text);
        return std::string(text);
    };
    EXPECT_EQ(system(), "mine") << "nothing for anybody yet";
    WriteSystemProfileString("S", "a", "everybody's");
    EXPECT_EQ(system(), "everybody's");
    EXPECT_EQ(Private("S", "a", "default", nullptr), "mine");
    WriteSystemProfileString("S", nullptr, nullptr);
    EXPECT_EQ(system(), "mine");

    const auto root = [&] {
        GetSystemProfileStringRoot("root", "default", text, sizeof text);
        return std::string(text);
    };
    const auto setRoot = [&](SettingsScope scope, const char* value) {
        SettingsStore(self).Change(scope, [&](SettingsDocument& d) { d.roots().Set("root", {value}); });
    };
    EXPECT_EQ(root(), "default");
    setRoot(SettingsScope::userAnyHost, "user");
    EXPECT_EQ(root(), "user");
    setRoot(SettingsScope::anyUserThisHost, "");
    EXPECT_EQ(root(), "user") << "an empty value counts as none";
    setRoot(SettingsScope::anyUserThisHost, "system");
    EXPECT_EQ(root(), "system");

    std::filesystem::remove_all(folder_ / "system"); // where nobody may write for everybody
    WriteFile(folder_ / "system", "a file where the folder should be");
    WriteSystemProfileString("S", "a", "fallen back");
    EXPECT_EQ(Private("S", "a", "default", nullptr), "fallen back");
}

TEST_F(Settings, WhatPeopleWroteByHandIsKept) {
    const SettingsStore store("app");
    const std::string path = store.Path(SettingsScope::userAnyHost);
    WritePrivateProfileString("S", "a", "1", "app");
    WriteFile(path,
              "# mine\r\nroot=r\n[S]\nno value here\na = not a\na=old\n# b=3\na=%4\n[T]\nb:=%00\n[S]\nc=3");
    EXPECT_EQ(Private("S", "a"), "%4");
    EXPECT_EQ(Private("S", "c"), "3");
    WritePrivateProfileString("S", "a", "new", "app");
    const std::string kept =
        "# mine\nroot=r\n[S]\nno value here\na%20=%20not a\na=new\n# b=3\nc=3\n[T]\nb:=%00\n";
    EXPECT_EQ(ReadFile(path), kept);
#if !defined(_WIN32)
    // A writer that gets no farther than a few bytes leaves what was there.
    InProcesses(1, [&](int) {
        const rlimit few{10, 10};
        std::signal(SIGXFSZ, SIG_IGN);
        return ::setrlimit(RLIMIT_FSIZE, &few) == 0 &&
               !store.Change(SettingsScope::userAnyHost, [](SettingsDocument& d) { d.RemoveSection("T"); });
    });
    EXPECT_EQ(ReadFile(path), kept);
#endif
    // What cannot be read is not replaced by something emptier.
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    EXPECT_FALSE(store.Change(SettingsScope::userAnyHost, [](SettingsDocument&) {}));
    EXPECT_TRUE(std::filesystem::is_directory(path));
    EXPECT_FALSE(store.Read(SettingsScope::userAnyHost)) << "and is not shown as empty";
    EXPECT_EQ(errno, EISDIR);
    EXPECT_TRUE(store.Read(SettingsScope::userThisHost)) << "where there is none, nothing is stored";
    EXPECT_EQ(Private("S", "a"), "default");
}

#if !defined(_WIN32) // there nobody else has a file in a user's folder
TEST_F(Settings, ALockFileOfAnotherUserShutsNobodyOut) {
    WritePrivateProfileString("S", "a", "1", "app");
    const std::string lock = SettingsStore("app").Path(SettingsScope::userAnyHost) + ".lock";
    constexpr uid_t nobody = 65534;
    for (const mode_t mode : {0444, 0000}) {
        ASSERT_EQ(::chmod(lock.c_str(), mode), 0);
        const std::string value = std::to_string(mode);
        InProcesses(1, [&](int) {
            if (::geteuid() == 0) { // as the user whose folder it is, the lock file being root's
                for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path()))
                    if (entry.path() != lock && ::chown(entry.path().c_str(), nobody, nobody) != 0)
                        return false;
                if (::chown(folder_.path().c_str(), nobody, nobody) != 0 || ::setuid(nobody) != 0)
                    return false;
            }
            const auto change = [&](SettingsDocument& document) { document.Section("S").Set("a", {value}); };
            return SettingsStore("app").Change(SettingsScope::userAnyHost, change);
        });
        EXPECT_EQ(Private("S", "a"), value);
    }
}
#endif

constexpr int kEntries = 40;
const Aside kWritesEntries("entries", [](int process) {
    for (int i = 0; i < kEntries; ++i) {
        const std::string name = std::to_string(process) + "." + std::to_string(i);
        WritePrivateProfileString("S", name.c_str(), name.c_str(), "shared");
    }
    return true;
});

TEST_F(Settings, ProcessesThatWriteAtOnceLoseNothing) {
    constexpr int processes = 4;
    kWritesEntries.Run(processes);
    const SettingsDocument document = *SettingsStore("shared").Read(SettingsScope::userAnyHost);
    ASSERT_NE(document.FindSection("S"), nullptr);
    EXPECT_EQ(document.FindSection("S")->Names().size(), static_cast<std::size_t>(processes * kEntries));
}

TEST(ProfileCache, SectionsHoldEntriesButTheCallsAreInert) {
    Profile profile;
    ProfileStruct* section = profile.Section("S");
    ASSERT_NE(section, nullptr);
    EXPECT_EQ(profile.Section("S"), section);
    EXPECT_FALSE(section->Set("a", "one", 3)) << "appended";
    EXPECT_TRUE(section->Set("a", "12345", 5)) << "replaced";
    char text[8] = {};
    EXPECT_TRUE(section->Get("a", text, 3));
    EXPECT_STREQ(text, "123");
    EXPECT_FALSE(section->Get("b", text, 3));
    EXPECT_EQ(ProfileElement("e", "12345", 5).Get(text, 8), 5);
    for (int i = 0; i < 300; ++i)
        section->Set(("n" + std::to_string(i)).c_str(), &i, sizeof i);
    EXPECT_TRUE(section->Get("n254", text, 4));
    EXPECT_FALSE(section->Get("n255", text, 4)) << "256 entries with the first one";
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(profile.Section(std::to_string(i).c_str()) != nullptr, i < 15);
    EXPECT_TRUE(profile.WriteProfileString("S", "x", "1"));
    EXPECT_TRUE(profile.WriteProfileBinary("S", "x", "1", 1));
    EXPECT_FALSE(section->Get("x", text, 4));
    EXPECT_EQ(profile.GetProfileString("S", "a", text, 8), 0);
    EXPECT_EQ(profile.GetProfileBinary("S", "a", text, 8), 0);
    EXPECT_EQ(profile.GetProfileInt("S", "a"), 0);
}

} // namespace
} // namespace vocafade::test
