// SPDX-License-Identifier: MIT
// A plug-in folder whose artwork somebody has lost, broken or replaced.
#include "tests/editor/panel_picture.h"
#include "tests/support/environment.h"
#include "ui/gdi.h"
#include "ui/platform/platform.h"

#include <algorithm>
#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace vocafade::test {
namespace {

namespace fs = std::filesystem;

/// A copy of the built plug-in whose artwork a test may change; its effects read it when they are made.
class Artwork : public EditorTest {
  protected:
    Artwork() {
        fs::create_directory(Folder());
        fs::copy_file(VOCAFADE_PLUGIN, Plugin());
    }
    /// With the ending of the built one.
    std::string Plugin() const {
        return bundle / ("Vocafade" + fs::path(VOCAFADE_PLUGIN).extension().string());
    }
    std::string Folder() const { return bundle / "Resources"; }
    std::string File(int id) const { return Folder() + "/" + std::to_string(id) + ".png"; }
    std::string Good(int id) const {
        return ReadFile(std::string(VOCAFADE_RESOURCES) + "/" + std::to_string(id) + ".png");
    }
    /// A good picture of that size and colour.
    std::string Filled(int width, int height, std::uint32_t color = 0) const {
        const auto surface = platform::MakeSurface(width, height);
        const CRect all(0, 0, width, height);
        surface->Fill({&all, 1}, color);
        const std::string path = bundle / "made.png";
        surface->WritePng(path.c_str());
        return ReadFile(path);
    }
    /// Fills the folder anew; `make` does something at the path of each file.
    template <typename Make>
    void Fill(Make make) {
        fs::remove_all(Folder());
        fs::create_directory(Folder());
        for (int id = kFirst; id <= kLast; ++id)
            make(id, File(id));
    }
    /// The editor opens and shows what it shows with its own artwork.
    void ExpectTheUsualPanel(const char* what) {
        HostedEditor editor(user, 20, 30, RecordingHost::Callback, Plugin());
        ASSERT_TRUE(editor.Show()) << what;
        EXPECT_TRUE(ShowsItsEffect(editor)) << what;
    }

    static constexpr int kFirst = 3001;
    static constexpr int kLast = 3014;
    TempFolder bundle;
};

/// Headers that say that the picture is huge, with the right checksums: wrong ones would be refused for that alone.
const std::string kHugeSquare("IHDR\x7F\xFF\xFF\xFF\x7F\xFF\xFF\xFF\x08\x06\0\0\0"
                              "\x14\xC9\x0B\x66",
                              21);
const std::string kHugeLine("IHDR\0\x01\x86\xA0\0\0\0\x01\x08\x06\0\0\0"
                            "\x5D\x7E\x16\xD5",
                            21);

TEST_F(Artwork, ThatCannotBeUsedIsReplacedByTheCopyInside) {
    fs::remove(Folder());
    ExpectTheUsualPanel("no folder");
    WriteFile(Folder(), "a file");
    ExpectTheUsualPanel("a file for a folder");
    Fill([](int, const std::string&) {});
    ExpectTheUsualPanel("an empty folder");
    Fill([](int, const std::string& path) { WriteFile(path, ""); });
    ExpectTheUsualPanel("empty files");
    Fill([&](int id, const std::string& path) {
        const std::string good = Good(id);
        WriteFile(path, good.substr(0, good.size() * static_cast<std::size_t>(id - kFirst) / 14));
    });
    ExpectTheUsualPanel("cut files");
    Fill([&](int id, const std::string& path) {
        std::string bytes = Good(id);
        for (std::size_t i = 33; i < bytes.size(); i += 7)
            bytes[i] = static_cast<char>(~bytes[i]);
        WriteFile(path, bytes);
    });
    ExpectTheUsualPanel("damaged files");
    Fill([&](int id, const std::string& path) {
        WriteFile(path, Good(id).replace(12, 21, id % 2 == 0 ? kHugeSquare : kHugeLine));
    });
    ExpectTheUsualPanel("pictures that say that they are huge");
    WriteFile(File(3005), Filled(8000, 8000)); // and one that is: a few kB in the file, 256 MB unpacked
    ExpectTheUsualPanel("a picture that is huge");
#if !defined(_WIN32) // which has none of these in folders
    Fill([](int id, const std::string& path) {
        if (id % 4 == 0) fs::create_directory(path);
        if (id % 4 == 1) ::mkfifo(path.c_str(), 0600);
        if (id % 4 == 2) fs::create_symlink(path, path);
        if (id % 4 == 3) fs::create_symlink("/dev/zero", path);
    });
    ExpectTheUsualPanel("folders, pipes, links to themselves and devices");
    if (::geteuid() == 0) return; // to whom everything is readable
    Fill([&](int id, const std::string& path) {
        WriteFile(path, Good(id));
        ::chmod(path.c_str(), 0);
    });
    ExpectTheUsualPanel("files that may not be read");
#endif
}

TEST_F(Artwork, OfTheUsersOwnShowsAtEveryScaleInTheSizeThatHeHas) {
    SetVariable("VOCAFADE_SCALE", "2");
    const auto corner = [this] { // where the background shows, at scale 2
        HostedEditor editor(user, 20, 30, RecordingHost::Callback, Plugin());
        user.Resize(editor.parent, 954, 428);
        EXPECT_TRUE(editor.Show());
        return editor.Look({900, 400, 950, 425});
    };
    const auto alike = [](const Picture& picture, std::uint32_t color) {
        return std::ranges::all_of(picture.pixels, [color](std::uint32_t pixel) { return pixel == color; });
    };
    Fill([&](int id, const std::string& path) { WriteFile(path, Good(id)); });
    const Picture usual = corner();
    EXPECT_FALSE(alike(usual, usual.at(0, 0))) << "a shaded plate";
    WriteFile(File(3005), Filled(477, 214, 0x336699));
    EXPECT_TRUE(alike(corner(), 0x336699)) << "the single size, larger";
    WriteFile(Folder() + "/3005@2x.png", Filled(954, 428, 0x993333));
    EXPECT_TRUE(alike(corner(), 0x993333));
    WriteFile(File(3005), Good(3005)); // as it was: the larger ones come with the plug-in
    EXPECT_EQ(corner(), usual);
    UnsetVariable("VOCAFADE_SCALE");
}

TEST_F(Artwork, OfOtherSizesIsSafe) {
    for (const CSize size : {CSize{1, 1}, CSize{4096, 1}, CSize{1, 4096}, CSize{40, 30}, CSize{1000, 1000}}) {
        const std::string odd = Filled(size.cx, size.cy);
        for (int odd1 = kFirst - 1; odd1 <= kLast; ++odd1) { // all of them, then each alone
            Fill([&](int id, const std::string& path) {
                WriteFile(path, odd1 < kFirst || odd1 == id ? odd : Good(id));
            });
            HostedEditor editor(user, 20, 30, RecordingHost::Callback, Plugin());
            ASSERT_TRUE(editor.Open()) << odd1;
            if (odd1 < kFirst) {
                editor.Settle();
                EXPECT_TRUE(editor.LookAtPanel() != ExpectedPanel(PanelState::Of(editor)))
                    << "the folder comes before the copy inside";
            }
            editor.Play(0.5f);
            editor.Idle();
            for (const CPoint place : {CPoint(150, 100), CPoint(324, 160), CPoint(30, 10), CPoint(1, 1)}) {
                user.MoveTo(20 + place.x, 30 + place.y);
                user.Press();
                user.MoveTo(20 + place.x, 30 + place.y + 20);
                editor.Idle();
                user.Release();
                editor.Idle();
            }
            for (std::int32_t i = 0; i < 6; ++i)
                EXPECT_TRUE(editor.Value(i) >= 0.0f && editor.Value(i) <= 1.0f)
                    << "parameter " << i << ", bitmap " << odd1 << " of " << size.cx << " by " << size.cy;
        }
    }
}

} // namespace
} // namespace vocafade::test
