// SPDX-License-Identifier: MIT
// Entry fields, menus, dialogs and the other controls, used as a user would.

#include "base/utf8.h"
#include "tests/ui/desk.h"

#include <X11/keysym.h>
#include <chrono>
#include <thread>

namespace vocafade::test {
namespace {

constexpr xcb_keysym_t kUnicode = 0x1000000;

/// An entry field that notes what reaches it.
class Field : public CEdit {
  public:
    std::vector<UINT> keys;
    std::vector<std::pair<UINT, UINT>> characters; ///< and their flags

    std::string text() const { return text_.str(); }

  protected:
    LRESULT WindowProc(UINT message, WPARAM w, LPARAM l) override {
        if (message == WM_KEYDOWN) keys.push_back(static_cast<UINT>(w));
        if (message == WM_CHAR)
            characters.emplace_back(static_cast<UINT>(w), HIWORD(static_cast<std::uintptr_t>(l)));
        return CEdit::WindowProc(message, w, l);
    }
};

class Typing : public Desk {
  protected:
    void SetUp() override {
        Desk::SetUp();
        ASSERT_TRUE(field.Create(WS_CHILD | WS_VISIBLE, {10, 10, 210, 32}, &panel, 18001));
        field.SetFocus();
        ASSERT_TRUE(Until([this] { return user.Focus() == PanelId(); }));
    }
    bool Shows(const std::string& text) {
        return Until([&] { return field.text() == text; });
    }
    Field field;
};

#if !defined(_WIN32) // Wine takes no layout that nobody has, as AddKeys makes one
TEST_F(Typing, JapaneseFromTheLayoutAndAccentsFromTheComposeKey) {
    user.AddKeys({kUnicode | 0x6B4C, kUnicode | 0x3042, XK_kana_A, XK_Multi_key});
    Settle();
    user.Keys({kUnicode | 0x6B4C, kUnicode | 0x3042, XK_kana_A});
    EXPECT_TRUE(Shows("\xE6\xAD\x8C\xE3\x81\x82\xE3\x82\xA2")) << field.text();
    user.Key(XK_BackSpace);
    EXPECT_TRUE(Shows("\xE6\xAD\x8C\xE3\x81\x82")) << "a character goes whole";
    user.Keys({XK_Multi_key, XK_o, XK_slash});
    EXPECT_TRUE(Shows("\xE6\xAD\x8C\xE3\x81\x82\xC3\xB8")) << field.text();
    // Escape in the middle of a sequence ends the sequence, and is no Escape for the field.
    field.keys.clear();
    user.Keys({XK_Multi_key, XK_Escape, XK_x});
    EXPECT_TRUE(Shows("\xE6\xAD\x8C\xE3\x81\x82\xC3\xB8x")) << field.text();
    EXPECT_EQ(std::count(field.keys.begin(), field.keys.end(), kKeyEscape), 0);
}
#endif

TEST_F(Typing, AltGrAndDeadKeysOfAGermanKeyboard) {
    user.TakeGermanKeyboard();
    Settle();
    user.Key(XK_z); // where others have y
    EXPECT_TRUE(Shows("z")) << field.text();
    user.Chord(XK_ISO_Level3_Shift, {XK_q, XK_e});
    EXPECT_TRUE(Shows("z@\xE2\x82\xAC")) << field.text();
    user.Keys({XK_dead_acute, XK_e});
    EXPECT_TRUE(Shows("z@\xE2\x82\xAC\xC3\xA9")) << field.text();
    user.Keys({XK_dead_circumflex, XK_space});
    EXPECT_TRUE(Shows("z@\xE2\x82\xAC\xC3\xA9^")) << field.text();
    user.Chord(XK_Control_L, {XK_a}); // AltGr is no control that stays
    user.Key(XK_BackSpace);
    EXPECT_TRUE(Shows("")) << field.text();
}

TEST_F(Typing, EditsSelectsAndLimits) {
    field.SetWindowText("hello world");
    field.SetSel(0, -1);
    user.Key(XK_a);
    EXPECT_TRUE(Shows("a")) << "typing replaces what is selected";
    field.SetWindowText("one two");
    user.Key(XK_End);
    user.Chord(XK_Control_L, {XK_Left});
    user.Key(XK_x);
    EXPECT_TRUE(Shows("one xtwo"));
    user.Key(XK_Home);
    user.Chord(XK_Shift_L, {XK_Right, XK_Right});
    user.Key(XK_Delete);
    EXPECT_TRUE(Shows("e xtwo"));
    user.Key(XK_Delete);
    EXPECT_TRUE(Shows(" xtwo"));
    user.Chord(XK_Control_L, {XK_a, XK_x});
    EXPECT_TRUE(Shows(""));
    user.Chord(XK_Control_L, {XK_v, XK_v});
    EXPECT_TRUE(Shows(" xtwo xtwo"));
    field.SetLimitText(11);
    user.Keys({XK_b, XK_c});
    EXPECT_TRUE(Shows(" xtwo xtwob"));
    Settle();
    EXPECT_EQ(field.text(), " xtwo xtwob");
}

TEST_F(Typing, ThePointerSetsTheCaretAndSelects) {
    field.SetWindowText("abc defghij");
    user.Click(112, 121); // left of the first letter
    user.Key(XK_1);
    EXPECT_TRUE(Shows("1abc defghij"));
    user.MoveTo(300, 121);
    user.Press();
    user.MoveTo(20, 121);
    user.Release();
    user.Key(XK_2);
    EXPECT_TRUE(Shows("2")) << "dragging past the start selects to the start";
    field.SetWindowText("abc defghij");
    user.Click(150, 121);
    user.Click(150, 121);
    user.Key(XK_z);
    EXPECT_TRUE(Shows("abc z")) << "a double click takes the word";
}

TEST_F(Typing, TheClipboardIsSharedWithOtherPrograms) {
    field.SetWindowText("\xE5\xA3\xB0 1");
    user.Chord(XK_Control_L, {XK_a, XK_c});
    Settle();
    EXPECT_EQ(user.TakeClipboard([this] { frame.Idle(); }), "\xE5\xA3\xB0 1");
    user.OfferClipboard("\xE6\xAD\x8C 2\nsecond line");
    Settle();
    user.Chord(XK_Control_L, {XK_v});
    EXPECT_TRUE(Shows("\xE6\xAD\x8C 2")) << "one line, and every character as if typed: " << field.text();
    EXPECT_EQ(field.characters[0].first, 0x6B4CU);

    // What makes no sense in a field: far too long, half a character, control characters, a zero or no end.
#if defined(_WIN32)
    const std::u16string offered = u"\x1B[2J\xD83D" + std::u16string(100'000, u'7');
#else
    const std::string offered = std::string("\xFF\0\x1B[2J\xC3", 7) + std::string(200'000, '7');
#endif
    user.OfferClipboardBytes(
        {reinterpret_cast<const char*>(offered.data()), offered.size() * sizeof offered[0]});
    field.SetWindowText("");
    Settle();
    user.Chord(XK_Control_L, {XK_v});
    ASSERT_TRUE(Until([&] { return !field.text().empty(); }));
    Settle();
    EXPECT_NE(field.text().find("[2J"), std::string::npos);
    EXPECT_LE(field.text().size(), 300U);
    EXPECT_EQ(field.text(), ValidUtf8(field.text()));
    EXPECT_EQ(field.text().find_first_of(std::string("\0\x1B", 2)), std::string::npos);
}

TEST_F(Typing, TheSpinButtonStepsTheNumberBesideIt) {
    CSpinButtonCtrl spin;
    ASSERT_TRUE(spin.Create(WS_CHILD | WS_VISIBLE | 166, {210, 10, 225, 32}, &panel, 18000));
    spin.SetRange32(-5, 20);
    spin.SetBuddy(&field);
    field.SetWindowText("18");
    user.Click(317, 114); // the upper arrow
    EXPECT_TRUE(Shows("19"));
    user.MoveTo(317, 128);
    user.Press(); // held, it goes on by itself to the other end
    EXPECT_TRUE(Until([this] { return field.text() == "-5"; })) << field.text();
    user.Release();
    field.SetWindowText("7");
    Settle();
    std::this_thread::sleep_for(std::chrono::milliseconds(120));
    Settle();
    EXPECT_EQ(field.text(), "7") << "released, it stops";
}

class Menus : public Desk {
  protected:
    bool Open(int items = 3) {
        CMenu menu;
        menu.CreatePopupMenu();
        for (int i = 0; i < items; ++i)
            menu.AppendMenu(i == 1 ? MF_CHECKED | MF_GRAYED : MF_STRING, static_cast<UINT>(1010 + i),
                            ("Item " + std::to_string(i)).c_str());
        const bool shown = menu.TrackPopupMenu(TPM_RIGHTBUTTON, 91, 13, &panel, [this] {
            panel.seen.push_back({kClosed, 0, 0});
        });
        if (!shown) return false;
        Settle();
        id = TopWindow();
        place = user.BoundsOf(id);
        return id != host;
    }
    bool Closed() {
        return Until([this] { return panel.Count(kClosed) == 1 && TopWindow() != id; });
    }
    /// The last command that arrived.
    UINT Command() const {
        const auto last = std::find_if(panel.seen.rbegin(), panel.seen.rend(),
                                       [](const Seen& s) { return s.message == WM_COMMAND; });
        return last != panel.seen.rend() ? static_cast<UINT>(last->wParam) : 0;
    }
    static constexpr UINT kClosed = 0xFFFF;
    xcb_window_t id = 0;
    XUser::Bounds place;
};

TEST_F(Menus, OpensAtItsPlaceAndSendsTheChosenCommandAfterItHasClosed) {
    ASSERT_TRUE(Open());
    EXPECT_EQ(place.x, 191);
    EXPECT_EQ(place.y, 113);
    const int line = place.height / 3;
    user.Click(place.x + 30, place.y + line + line / 2); // greyed: nothing
    Settle();
    EXPECT_EQ(TopWindow(), id);
    user.Click(place.x + 30, place.y + 2 * line + line / 2);
    ASSERT_TRUE(Closed());
    EXPECT_EQ(panel.Order({kClosed, WM_COMMAND, WM_EXITMENULOOP}),
              (std::vector<UINT>{kClosed, WM_COMMAND, WM_EXITMENULOOP}));
    EXPECT_EQ(Command(), 1012U);
    panel.seen.clear();
    user.MoveTo(110, 110);
    EXPECT_TRUE(Until([this] { return panel.Count(WM_MOUSEMOVE) > 0; })) << "the mouse is free again";
}

TEST_F(Menus, PressMoveReleaseChoosesInOneGo) {
    user.MoveTo(185, 120);
    user.Press();
    Settle();
    ASSERT_TRUE(Open());
    user.MoveTo(place.x + 30, place.y + 8);
    user.Release();
    ASSERT_TRUE(Closed());
    EXPECT_EQ(panel.Count(WM_COMMAND), 1);
    panel.seen.clear();
    user.Press();
    Settle();
    ASSERT_TRUE(Open());
    user.Release();
    Settle();
    EXPECT_EQ(panel.Count(WM_COMMAND), 0) << "it opened beneath the pointer, which did not move";
    EXPECT_EQ(panel.Count(kClosed), 0);
}

TEST_F(Menus, EscapeClosesItWithoutACommand) {
    ASSERT_TRUE(Open());
    user.TakeHostKeys();
    user.Key(XK_Escape);
    ASSERT_TRUE(Closed());
    EXPECT_EQ(panel.Count(WM_COMMAND), 0);
    EXPECT_EQ(user.TakeHostKeys(), 0);
}

TEST_F(Menus, SixtyFourItemsFitOnTheScreenAndAllCanBeReached) {
    ASSERT_TRUE(Open(64));
    EXPECT_GE(place.y, 0);
    EXPECT_LE(place.y + place.height, 1024);
    EXPECT_LE(place.x + place.width, 1280);
    user.Keys({XK_End, XK_Return});
    ASSERT_TRUE(Closed());
    EXPECT_EQ(Command(), 1010U + 63U);
    EXPECT_EQ(panel.Count(WM_COMMAND), 1);
    panel.seen.clear();
    ASSERT_TRUE(Open(900)); // more than fits in columns: the wheel brings the rest
    EXPECT_LE(place.height, 1024);
}

TEST_F(Menus, TheHostGoesOnAndTheMenuGoesWithItsOwner) {
    ASSERT_TRUE(Open(64));
    for (int i = 0; i < 60; ++i) {
        user.MoveTo(place.x + 20, place.y + 5 + i * 4);
        EXPECT_LE(WaitsOfAnIdle(), 1);
    }
    EXPECT_EQ(panel.Count(kClosed), 0);
    panel.DestroyWindow();
    Settle();
    EXPECT_NE(TopWindow(), id);
    EXPECT_EQ(panel.Count(kClosed), 0);
    EXPECT_EQ(panel.Count(WM_COMMAND), 0);
}

const DialogTemplate& SaveTemplate() {
    static const DialogTemplate saved{
        5040,
        {280, 120},
        "Save",
        {{DialogItem::Kind::label, -1, {10, 10, 80, 32}, 0, "Program"},
         {DialogItem::Kind::comboBox, 1120, {90, 10, 270, 34}, WS_TABSTOP, ""},
         {DialogItem::Kind::edit, 5000, {90, 44, 270, 68}, WS_TABSTOP, ""},
         {DialogItem::Kind::button, IDOK, {100, 84, 180, 110}, BS_DEFPUSHBUTTON | WS_TABSTOP, "OK"},
         {DialogItem::Kind::button, IDCANCEL, {190, 84, 270, 110}, WS_TABSTOP, "Cancel"}}};
    return saved;
}

class SaveDlg : public CDialog {
  public:
    explicit SaveDlg(CWnd* parent = nullptr) : CDialog(SaveTemplate(), parent) {}
    CComboBox list;
    CString name;
    int chosen = -1;
    int changes = 0;

    DECLARE_MESSAGE_MAP()

  protected:
    void DoDataExchange(CDataExchange* exchange) override {
        CDialog::DoDataExchange(exchange);
        DDX_Control(exchange, 1120, list);
    }
    bool OnInitDialog() override {
        CDialog::OnInitDialog();
        for (int i = 0; i < 64; ++i)
            list.AddString((std::to_string(i + 1) + ":Empty").c_str());
        list.SetCurSel(2);
        GetDlgItem(5000)->SetWindowText("Empty");
        return true;
    }
    void OnSel() { ++changes; }
    void OnOK() override {
        chosen = list.GetCurSel();
        GetDlgItemText(5000, name);
        CDialog::OnOK();
    }
};

// clang-format off
BEGIN_MESSAGE_MAP(SaveDlg, CDialog)
ON_CBN_SELCHANGE(1120, OnSel)
END_MESSAGE_MAP()
// clang-format on

class Dialogs : public Desk {
  protected:
    bool Open() {
        dialog = std::make_unique<SaveDlg>(&panel);
        result = 0;
        if (!dialog->DoModal([this](int r) {
                result = r;
                chosen = dialog->chosen;
                name = dialog->name;
                dialog.reset();
            }))
            return false;
        if (!Until([this] { return dialog->IsWindow() && user.Focus() == TopWindow(); })) return false;
        id = TopWindow();
        place = user.BoundsOf(id);
        return id != host;
    }
    /// Shows a message and answers it with a key, once `look` has looked at it; gives the answer.
    int Answer(
        const char* text, UINT type, xcb_keysym_t key, const std::function<void()>& look = [] {}) {
        int answer = 0;
        EXPECT_TRUE(AfxMessageBox(text, type, [&](int given) { answer = given; }));
        EXPECT_TRUE(Until([this] { return TopWindow() != host && user.Focus() == TopWindow(); }));
        look();
        user.Key(key);
        EXPECT_TRUE(Until([&] { return answer != 0; }));
        return answer;
    }
    std::unique_ptr<SaveDlg> dialog;
    int result = 0;
    int chosen = -1;
    CString name;
    xcb_window_t id = 0;
    XUser::Bounds place;
};

TEST_F(Dialogs, IsLeftByEscapeByCancelAndByItsFrame) {
    const std::function<void()> ways[] = {[this] { user.Key(XK_Escape); },
                                          [this] { user.Click(place.x + 230, place.y + 97); },
                                          [this] { // on the Cancel button, so it cancels
                                              user.Keys({XK_Tab, XK_Tab, XK_Tab, XK_Return});
                                          },
                                          [this] { dialog->SendMessage(WM_CLOSE); }};
    for (const auto& leave : ways) {
        ASSERT_TRUE(Open());
        EXPECT_NEAR(place.x + place.width / 2.0, 330, 1) << "in the middle of the panel";
        EXPECT_NEAR(place.y + place.height / 2.0, 205, 1);
        EXPECT_EQ(dialog->GetFocus(), &dialog->list);
        leave();
        ASSERT_TRUE(Until([this] { return result == IDCANCEL; }));
        Settle();
        EXPECT_EQ(user.Focus(), host) << "the host has its keyboard back";
    }
}

TEST_F(Dialogs, ItsListDropsDownAndIsChosenFrom) {
    ASSERT_TRUE(Open());
    user.Click(place.x + 150, place.y + 22);
    ASSERT_TRUE(Until([this] { return TopWindow() != id; }));
    EXPECT_TRUE(dialog->list.GetDroppedState());
    const XUser::Bounds list = user.BoundsOf(TopWindow());
    EXPECT_LE(list.y + list.height, 1024);
    user.Click(list.x + 40, list.y + 10);
    ASSERT_TRUE(Until([this] { return dialog->list.GetCurSel() == 0 && TopWindow() == id; }));
    EXPECT_EQ(dialog->changes, 1);
    EXPECT_FALSE(dialog->list.GetDroppedState());
    user.Click(place.x + 140, place.y + 97);
    ASSERT_TRUE(Until([this] { return result == IDOK; }));
    EXPECT_EQ(chosen, 0);
    EXPECT_EQ(name, "Empty");
    ASSERT_TRUE(Open());
    user.Keys({XK_Tab, XK_n, XK_Return}); // the field's text is selected when Tab comes to it
    ASSERT_TRUE(Until([this] { return result == IDOK; }));
    EXPECT_EQ(name, "n");
}

TEST_F(Dialogs, BlocksItsOwnerOnlyAndGoesWithIt) {
    ASSERT_TRUE(Open());
    EXPECT_FALSE(dialog->DoModal({})) << "it is open already";
    panel.seen.clear();
    user.Click(110, 110);
    Settle();
    EXPECT_EQ(panel.Count(WM_LBUTTONDOWN), 0);
    panel.Invalidate(); // but it goes on painting, and its timers on ticking
    panel.SetTimer(1, 5);
    EXPECT_TRUE(Until([this] { return panel.Count(WM_PAINT) > 0 && panel.Count(WM_TIMER) > 0; }));
    panel.DestroyWindow();
    Settle();
    EXPECT_EQ(result, 0) << "nobody is told";
    EXPECT_FALSE(dialog->IsOpen());
    EXPECT_EQ(TopWindow(), host);
}

TEST_F(Dialogs, AnEndIsForTheOpeningThatItEnded) {
    ASSERT_TRUE(Open());
    dialog->EndDialog(IDOK);            // comes at the next idle
    EXPECT_TRUE(panel.DestroyWindow()); // before which the owner goes, and takes the dialog with it
    ASSERT_TRUE(panel.Create(WindowClass{}, "panel", WS_CHILD | WS_VISIBLE, {0, 0, 460, 210}, &frame, 0));
    ASSERT_TRUE(dialog->DoModal([this](int r) { result = r; }));
    ASSERT_TRUE(Until([this] { return dialog->IsWindow(); }));
    Settle();
    EXPECT_TRUE(dialog->IsOpen());
    EXPECT_EQ(result, 0);
    dialog->EndDialog(IDCANCEL);
    EXPECT_TRUE(Until([this] { return result == IDCANCEL; }));
}

TEST_F(Dialogs, IsMovedAndResizedIndependently) {
    ASSERT_TRUE(Open());
    EXPECT_TRUE(dialog->SetWindowPos(nullptr, 0, 0, 300, 150, SWP_NOMOVE | SWP_NOZORDER));
    Settle();
    EXPECT_EQ(user.BoundsOf(id), (XUser::Bounds{place.x, place.y, 300, 150}));
    EXPECT_TRUE(dialog->SetWindowPos(nullptr, 50, 60, 0, 0, SWP_NOSIZE | SWP_NOZORDER));
    Settle();
    EXPECT_EQ(user.BoundsOf(id), (XUser::Bounds{50, 60, 300, 150}));
    user.Click(50 + 230, 60 + 97); // the Cancel button went with it
    EXPECT_TRUE(Until([this] { return result == IDCANCEL; }));
}

TEST_F(Dialogs, OpensWithoutHoldingTheHostUp) {
    dialog = std::make_unique<SaveDlg>(&panel);
    dialog->DoModal([](int) {});
    for (int i = 0; i < 30; ++i) {
        if (i == 20) user.Key(XK_n);
        // It asks for places at first, and for the keymap with the first key, which comes in pieces.
        EXPECT_LE(WaitsOfAnIdle(), i < 5 || i == 20 ? 60 : 1) << "idle " << i;
    }
    EXPECT_TRUE(dialog->IsWindow());
}

TEST_F(Dialogs, AMessageBoxFitsOnTheScreen) {
    const XUser::Bounds screen = user.BoundsOf(user.Root());
    for (const char* part : {"x", "/folder", "word ", "line\n", "\xE6\xAD\x8C"}) {
        std::string text;
        while (text.size() < 6000)
            text += part;
        Answer(text.c_str(), MB_OK, XK_Return, [&] { place = user.BoundsOf(TopWindow()); });
        EXPECT_GE(place.y, 0) << part;
        EXPECT_LE(place.y + place.height, screen.height) << part;
        EXPECT_LE(place.width, 480) << part;
    }
}

TEST_F(Dialogs, ADragOutlivesABoxThatComesAndGoes) {
    user.MoveTo(150, 150);
    user.Press();
    ASSERT_TRUE(Until([this] { return panel.Count(WM_LBUTTONDOWN) == 1; }));
    panel.SetCapture();
    Answer("Something went wrong", MB_OK, XK_Return);
    panel.seen.clear();
    user.MoveTo(160, 160);
    user.Release();
    EXPECT_TRUE(Until([this] { return panel.Count(WM_LBUTTONUP) == 1; }));
    EXPECT_GE(panel.Count(WM_MOUSEMOVE), 1); // Windows adds motions of no distance
}

TEST_F(Dialogs, AMessageBoxAsksAndAnswers) {
    EXPECT_EQ(Answer("The bank could not be written.\nIs the disk full?", MB_OK, XK_Return), IDOK);
    EXPECT_EQ(Answer("Replace it?", MB_YESNO, XK_Escape), IDNO);
    Settle();
    EXPECT_EQ(TopWindow(), host);
    frame.DetachHost();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(AfxMessageBox("Nobody is there", MB_OK, {}));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Vocafade: Nobody is there\n");
}

} // namespace
} // namespace vocafade::test
