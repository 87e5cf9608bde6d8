// SPDX-License-Identifier: MIT
// Writes the manual's pictures of the editor, at scale 2, into a folder: the plug-in in a host's hands on a display of its
// own, worked with the mouse and the keyboard.
#include "tests/editor/panel_picture.h"
#include "tests/support/wait_for.h"

#include <cstdio>

namespace vocafade::test {
namespace {

constexpr int kMargin = 14;
constexpr int kScale = 2;
constexpr int kPanelWidth = 477 * kScale;
constexpr int kPanelHeight = 214 * kScale;

/// A session that looks like somebody's.
class Session {
  public:
    explicit Session(std::string folder) : folder_(std::move(folder)), editor_(user_, kMargin, kMargin) {
        NameProgram(0, "Ballad", 250.0f, 8000.0f);
        NameProgram(1, "Duet, she only", 350.0f, 11000.0f);
        NameProgram(2, "\x83\x4A\x83\x89\x83\x49\x83\x50", 400.0f, 9000.0f); // "karaoke" in Shift-JIS
        NameProgram(3, "Bass stays", 500.0f, 9000.0f);
        editor_.Ask(effSetProgram, 0, 0);
        user_.Resize(editor_.parent, kPanelWidth, kPanelHeight);
        editor_.Show();
        editor_.Enter(At(280, 15), ""); // saved, so that nothing counts as edited
    }

    bool TakeAll() {
        bool fine = true;
        fine &= Shoot("panel");
        editor_.Press(At(237, 100));
        editor_.Release(At(237, 92));
        editor_.Click(At(150, 192));
        editor_.Type("180");
        fine &= Shoot("entry");
        editor_.Key(XK_Escape);
        editor_.Click(At(75, 18));
        editor_.Keys({XK_Down, XK_Down});
        fine &= Shoot("copy-menu");
        editor_.Key(XK_Escape);
        editor_.Click(At(280, 15));
        fine &= Shoot("save-dialog");
        editor_.Key(XK_Escape);
        editor_.MoveTo(At(149, 120));
        const std::size_t windows = user_.TopLevels().size();
        fine &= WaitFor([this] { editor_.Idle(); }, [&] { return user_.TopLevels().size() > windows; });
        fine &= Shoot("tooltip");
        return fine;
    }

  private:
    static CPoint At(int x, int y) { return {x * kScale, y * kScale}; }
    void NameProgram(std::int32_t number, const char* name, float lowHz, float highHz) {
        editor_.Ask(effSetProgram, 0, number);
        editor_.Ask(effSetProgramName, 0, 0, const_cast<char*>(name));
        editor_.SetValue(3, (lowHz - 20.0f) / 19980.0f);
        editor_.SetValue(4, (highHz - 20.0f) / 19980.0f);
    }
    /// What the screen shows where the panel is, once half a second of a song has made the meters stand.
    bool Shoot(const char* name) {
        for (int i = 0; i < 50; ++i)
            editor_.Play(0.35f, 1024);
        editor_.Idle();
        user_.Sync();
        return WritePng(user_.Look(user_.Root(), kMargin, kMargin, kPanelWidth, kPanelHeight),
                        folder_ + "/editor-" + name + ".png");
    }

    XServer& server_ = SharedServer();
    std::string folder_;
    RecordingHost host_;
    XUser user_;
    HostedEditor editor_;
};

} // namespace
} // namespace vocafade::test

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: editor_screenshots FOLDER\n", stderr);
        return 2;
    }
    vocafade::test::TempFolder settings;
    vocafade::test::SetVariable("XDG_CONFIG_HOME", settings.path().string());
    vocafade::test::SetVariable("VOCAFADE_SCALE", std::to_string(vocafade::test::kScale));
    vocafade::test::Session session(arguments[1]);
    return session.TakeAll() ? 0 : 1;
}
