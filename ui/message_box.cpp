// SPDX-License-Identifier: MIT
#include "ui/desktop.h"
#include "ui/dialog.h"
#include "ui/theme.h"

#include <cstdio>

namespace vocafade {
namespace {

constexpr int kMargin = 16;
constexpr int kButtonWidth = 84;
constexpr int kButtonHeight = 26;
constexpr int kButtonGap = 8;
constexpr int kLeastWidth = 260;
constexpr int kWrapAt = 440; ///< pixels

struct Answer {
    int id;
    const char* caption;
};

std::vector<Answer> AnswersOf(UINT type) {
    switch (type & 0xFU) {
    case MB_OKCANCEL:
        return {{IDOK, "OK"}, {IDCANCEL, "Cancel"}};
    case MB_YESNO:
        return {{IDYES, "Yes"}, {IDNO, "No"}};
    default:
        return {{IDOK, "OK"}};
    }
}

/// Breaks lines at blanks where they would be wider than `kWrapAt`.
CString Wrapped(const CDC& dc, const std::string& text) {
    std::string result;
    std::string line;
    std::string word;
    const auto endWord = [&] {
        if (!line.empty() && dc.GetTextExtent(CString(line + " " + word)).cx > kWrapAt) {
            result += line + "\n";
            line.clear();
        }
        if (!line.empty()) line += ' ';
        line += word;
        word.clear();
    };
    for (const char c : text) {
        if (c == ' ' || c == '\n') {
            endWord();
            if (c == '\n') {
                result += line + "\n";
                line.clear();
            }
        } else {
            word += c;
        }
    }
    endWord();
    return CString(result + line);
}

class MessageBoxDlg : public CDialog {
  public:
    MessageBoxDlg(const char* text, UINT type) : CDialog(template_), type_(type) {
        std::unique_ptr<CFont> font;
        CDC dc;
        dc.SelectObject(&theme::UseControlFont(font));
        message_ = Wrapped(dc, platform::ValidUtf8(text));
        const CSize lines = theme::MeasureLines(dc, message_);
        const std::vector<Answer> answers = AnswersOf(type);
        const auto count = static_cast<int>(answers.size());
        const int buttons = count * (kButtonWidth + kButtonGap) - kButtonGap;
        const int width = std::max({kLeastWidth, lines.cx + 2 * kMargin, buttons + 2 * kMargin});
        const int buttonTop = kMargin + lines.cy + kMargin;
        template_.title = "Vocafade";
        template_.size = {width, buttonTop + kButtonHeight + kMargin};
        template_.items.push_back({DialogItem::Kind::label, -1,
                                   CRect({kMargin, kMargin}, {width - 2 * kMargin, lines.cy}), SS_LEFT,
                                   message_.str().c_str()});
        int x = width - kMargin - buttons;
        for (const Answer& answer : answers) {
            template_.items.push_back(
                {DialogItem::Kind::button, answer.id, CRect({x, buttonTop}, {kButtonWidth, kButtonHeight}),
                 WS_TABSTOP | (x == width - kMargin - buttons ? BS_DEFPUSHBUTTON : 0U), answer.caption});
            x += kButtonWidth + kButtonGap;
        }
    }

    const char* ClassName() const override { return "MessageBox"; }

    DECLARE_MESSAGE_MAP()

  private:
    void OnYes() { EndDialog(IDYES); }
    void OnNo() { EndDialog(IDNO); }
    void OnOK() override { EndDialog((type_ & 0xFU) == MB_YESNO ? IDYES : IDOK); }
    /// With one button, or none that means no, leaving the box is its only answer.
    void OnCancel() override {
        const UINT buttons = type_ & 0xFU;
        EndDialog(buttons == MB_YESNO ? IDNO : buttons == MB_OKCANCEL ? IDCANCEL : IDOK);
    }

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
    Desktop* desktop = Desktop::Current();
    if (desktop != nullptr) {
        auto box = std::make_unique<MessageBoxDlg>(text, type);
        MessageBoxDlg& opened = *box;
        if (opened.DoModal(std::move(ended))) {
            desktop->Adopt(std::move(box));
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
