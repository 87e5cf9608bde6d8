// SPDX-License-Identifier: MIT
#include "ui/message_box.h"

#include "base/utf8.h"
#include "ui/dialog.h"
#include "ui/theme.h"
#include "ui/window_session.h"

#include <cstdio>

namespace vocafade {
namespace {

constexpr int kBoxMargin = 16;
constexpr int kButtonWidth = 84;
constexpr int kButtonHeight = 26;
constexpr int kButtonGap = 8;
constexpr int kLeastWidth = 260;
constexpr int kWrapAt = 440;                ///< pixels
constexpr std::size_t kMostLineBytes = 256; ///< more are always wider: measuring them would only take time
constexpr int kFrame = 64;                  ///< of the window manager, and a panel of the desktop

struct Answer {
    int id;
    const char* caption;
};

std::vector<Answer> AnswersOf(UINT type) {
    switch (type) {
    case MB_OKCANCEL:
        return {{IDOK, "OK"}, {IDCANCEL, "Cancel"}};
    case MB_YESNO:
        return {{IDYES, "Yes"}, {IDNO, "No"}};
    default:
        return {{IDOK, "OK"}};
    }
}

/// Cuts what fits into a line off the start of a word that is too wide for one, such as a path: up to behind
/// the last '/' in it, else up to any character.
std::string TakeLine(CFont& font, std::string& word) {
    std::size_t most = std::min(word.size(), kMostLineBytes);
    while (most < word.size() && !StartsCharacter(word[most]))
        --most;
    const std::vector<double> stops = font.native(DrawingScale()).CaretStops(word.substr(0, most));
    std::size_t fitting = 0;
    std::size_t slash = 0;
    std::size_t character = 0;
    for (std::size_t end = 1; end <= most; ++end) {
        if (end < word.size() && !StartsCharacter(word[end])) continue;
        ++character;
        if (stops[std::min(character, stops.size() - 1)] > kWrapAt && fitting > 0) break;
        fitting = end;
        if (word[end - 1] == '/' && end > 1) slash = end;
    }
    std::string line = word.substr(0, slash > 0 ? slash : fitting);
    word.erase(0, line.size());
    return line;
}

/// Breaks the text at its line ends, and at blanks where lines would be wider than `kWrapAt`.
std::vector<std::string> Wrapped(const CDC& dc, CFont& font, const std::string& text) {
    const auto tooWide = [&dc](const std::string& part) {
        return dc.GetTextExtent(CString(part)).cx > kWrapAt;
    };
    std::vector<std::string> lines;
    std::string line;
    std::string word;
    const auto endLine = [&] {
        lines.push_back(line);
        line.clear();
    };
    const auto endWord = [&] {
        if (!line.empty() && (word.size() > kMostLineBytes || tooWide(line + " " + word))) endLine();
        while (word.size() > kMostLineBytes || tooWide(word))
            lines.push_back(TakeLine(font, word));
        if (!line.empty()) line += ' ';
        line += word;
        word.clear();
    };
    for (const char c : text) {
        if (c != ' ' && c != '\n') {
            word += c;
            continue;
        }
        endWord();
        if (c == '\n') endLine();
    }
    endWord();
    endLine();
    return lines;
}

/// The lines as one text; of too many for `height` pixels the middle ones are left out.
CString Joined(const CDC& dc, std::vector<std::string> lines, int height) {
    const auto most = static_cast<std::size_t>(std::max(3, height / std::max(1, dc.GetTextExtent("").cy)));
    if (lines.size() > most) {
        const auto middle = lines.begin() + static_cast<std::ptrdiff_t>(most / 2);
        *middle = "\xE2\x80\xA6";
        lines.erase(middle + 1, lines.end() - static_cast<std::ptrdiff_t>(most - most / 2 - 1));
    }
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    text.pop_back();
    return CString(text);
}

/// Height of the screen that the editor is on.
int ScreenHeight(const WindowSession& session) {
    const TopLevel* panel = session.MainWindow();
    const bool shown = panel != nullptr && panel->native() != nullptr;
    return session.display()->WorkArea(shown ? panel->native()->ScreenPosition() : CPoint()).Height();
}

class MessageBoxDlg : public CDialog {
  public:
    /// `height` is that of the screen.
    MessageBoxDlg(const char* text, UINT type, int height) : CDialog(template_), type_(type) {
        std::unique_ptr<CFont> ownFont;
        CFont& font = theme::UseControlFont(ownFont);
        CDC dc;
        dc.SelectObject(&font);
        constexpr int kOthers = 3 * kBoxMargin + kButtonHeight + kFrame;
        message_ = Joined(dc, Wrapped(dc, font, ValidUtf8(text)), height - kOthers);
        const CSize lines = theme::MeasureLines(dc, message_);
        const std::vector<Answer> answers = AnswersOf(type);
        const auto count = static_cast<int>(answers.size());
        const int buttons = count * (kButtonWidth + kButtonGap) - kButtonGap;
        const int width = std::max({kLeastWidth, lines.cx + 2 * kBoxMargin, buttons + 2 * kBoxMargin});
        const int buttonTop = kBoxMargin + lines.cy + kBoxMargin;
        template_.title = "Vocafade";
        template_.size = {width, buttonTop + kButtonHeight + kBoxMargin};
        template_.items.push_back({DialogItem::Kind::label, -1,
                                   CRect({kBoxMargin, kBoxMargin}, {width - 2 * kBoxMargin, lines.cy}), 0,
                                   message_.str().c_str()});
        int x = width - kBoxMargin - buttons;
        for (const Answer& answer : answers) {
            template_.items.push_back(
                {DialogItem::Kind::button, answer.id, CRect({x, buttonTop}, {kButtonWidth, kButtonHeight}),
                 WS_TABSTOP | (x == width - kBoxMargin - buttons ? BS_DEFPUSHBUTTON : 0U), answer.caption});
            x += kButtonWidth + kButtonGap;
        }
    }

    const char* ClassName() const override { return "MessageBox"; }

    DECLARE_MESSAGE_MAP()

  private:
    void OnYes() { EndDialog(IDYES); }
    void OnNo() { EndDialog(IDNO); }
    void OnOK() override { EndDialog(type_ == MB_YESNO ? IDYES : IDOK); }
    /// Leaving the box means No or Cancel where there is such a button, else OK.
    void OnCancel() override { EndDialog(type_ == MB_YESNO ? IDNO : type_ == MB_OKCANCEL ? IDCANCEL : IDOK); }

    DialogTemplate template_;
    CString message_;
    UINT type_;
};

// clang-format off
BEGIN_MESSAGE_MAP(MessageBoxDlg, CDialog)
ON_COMMAND(IDYES, OnYes)
ON_COMMAND(IDNO, OnNo)
END_MESSAGE_MAP()
// clang-format on

} // namespace

bool AfxMessageBox(const char* text, UINT type, std::function<void(int result)> ended) {
    if (text == nullptr) text = "";
    WindowSession* session = WindowSession::Current();
    if (session != nullptr && session->IsDisplayAlive()) {
        auto box = std::make_unique<MessageBoxDlg>(text, type, ScreenHeight(*session));
        MessageBoxDlg& opened = *box;
        if (opened.DoModal(std::move(ended))) {
            session->Adopt(std::move(box));
            return true;
        }
    }
    std::fprintf(stderr, "Vocafade: %s\n", text);
    return false;
}

bool AfxMessageBox(int textId, UINT type, std::function<void(int result)> ended) {
    return AfxMessageBox(static_cast<const char*>(LoadString(textId)), type, std::move(ended));
}

} // namespace vocafade
