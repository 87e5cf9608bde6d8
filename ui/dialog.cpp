// SPDX-License-Identifier: MIT
#include "ui/dialog.h"

#include "ui/controls.h"
#include "ui/desktop.h"
#include "ui/spin_button.h"

namespace vocafade {
namespace {

std::unique_ptr<CWnd> NewControl(DialogItem::Kind kind) {
    switch (kind) {
    case DialogItem::Kind::label:
        return std::make_unique<CStatic>();
    case DialogItem::Kind::edit:
        return std::make_unique<CEdit>();
    case DialogItem::Kind::comboBox:
        return std::make_unique<CComboBox>();
    case DialogItem::Kind::button:
        return std::make_unique<CButton>();
    case DialogItem::Kind::spin:
        return std::make_unique<CSpinButtonCtrl>();
    }
    return std::make_unique<CStatic>();
}

} // namespace

// clang-format off
BEGIN_MESSAGE_MAP(CDialog, CWnd)
ON_COMMAND(IDOK, OnOkCommand)
ON_COMMAND(IDCANCEL, OnCancelCommand)
ON_WM_CLOSE()
END_MESSAGE_MAP()
// clang-format on

CDialog::CDialog(UINT templateId, CWnd* parent) : templateId_(templateId), wantedOwner_(parent) {}

CDialog::CDialog(const DialogTemplate& dialogTemplate, CWnd* parent)
    : template_(&dialogTemplate), wantedOwner_(parent) {}

CDialog::~CDialog() { Abandon(); }

bool CDialog::DoModal(std::function<void(int result)> ended) {
    if (IsOpen()) return false;
    if (template_ == nullptr) {
        source_ = GetResourceSource();
        template_ = source_ != nullptr ? source_->FindDialog(static_cast<int>(templateId_)) : nullptr;
        if (template_ == nullptr) return false;
    }
    Desktop* desktop = wantedOwner_ != nullptr ? wantedOwner_->desktop() : Desktop::Current();
    if (desktop == nullptr || !desktop->IsDisplayAlive()) return false;
    home_ = desktop->weak_from_this();
    owner_ = wantedOwner_ != nullptr ? wantedOwner_ : desktop->MainWindow();
    opening_ = std::make_shared<bool>(true);
    ending_ = false;
    ended_ = std::move(ended);
    desktop->PushModal(*this);
    desktop->DeferCreate(opening_, [this] { Open(); });
    return true;
}

void CDialog::Open() {
    const std::shared_ptr<Desktop> desktop = home_.lock();
    if (ending_ || desktop == nullptr || IsWindow()) return;
    // In the middle of the owner, on its screen.
    CRect bounds({0, 0}, template_->size);
    if (CWnd* top = owner_ != nullptr ? Desktop::RootOf(owner_) : nullptr) {
        if (platform::Window* native = Desktop::NativeOf(*top)) {
            const CPoint at = native->ScreenPosition();
            bounds.OffsetRect(at.x + (top->bounds().Width() - bounds.Width()) / 2,
                              at.y + (top->bounds().Height() - bounds.Height()) / 2);
        }
    }
    const CRect area = desktop->display()->WorkArea(bounds.CenterPoint());
    bounds.OffsetRect(std::min(0, area.right - bounds.right), std::min(0, area.bottom - bounds.bottom));
    bounds.OffsetRect(std::max(0, area.left - bounds.left), std::max(0, area.top - bounds.top));

    const auto kind = platform::WindowKind::dialog;
    const WindowClass plain{CS_DBLCLKS, kCursorArrow, {false, GetSysColor(COLOR_3DFACE)}};
    if (!CreateOn(*desktop, nullptr, &kind, owner_, plain, template_->title, WS_POPUP | WS_CAPTION, bounds,
                  0)) {
        Finish(-1);
        return;
    }
    MakeControls();
    const std::weak_ptr<bool> alive = LifeToken();
    SendMessage(WM_INITDIALOG);
    const std::shared_ptr<bool> token = alive.lock();
    if (token == nullptr || !*token || !IsWindow()) return;
    ShowWindow(SW_SHOW);
}

void CDialog::MakeControls() {
    items_.clear();
    for (const DialogItem& item : template_->items) {
        items_.push_back(NewControl(item.kind));
        MakeControl(item, *items_.back());
    }
}

bool CDialog::MakeControl(const DialogItem& item, CWnd& control) {
    const UINT style = item.style | WS_CHILD | WS_VISIBLE;
    const auto id = static_cast<UINT>(item.id);
    switch (item.kind) {
    case DialogItem::Kind::edit:
        if (auto* edit = dynamic_cast<CEdit*>(&control)) {
            if (!edit->Create(style, item.rect, this, id)) return false;
            edit->CWnd::SetWindowText(item.text);
            return true;
        }
        break;
    case DialogItem::Kind::comboBox:
        if (auto* combo = dynamic_cast<CComboBox*>(&control))
            return combo->Create(style, item.rect, this, id);
        break;
    case DialogItem::Kind::button:
        if (auto* button = dynamic_cast<CButton*>(&control))
            return button->Create(item.text, style, item.rect, this, id);
        break;
    case DialogItem::Kind::spin:
        if (auto* spin = dynamic_cast<CSpinButtonCtrl*>(&control))
            return spin->Create(style, item.rect, this, id);
        break;
    case DialogItem::Kind::label:
        if (auto* label = dynamic_cast<CStatic*>(&control))
            return label->Create(item.text, style, item.rect, this, id);
        break;
    }
    return control.Create(WindowClass{}, item.text, style, item.rect, this, id);
}

void DDX_Control(CDataExchange* exchange, int id, CWnd& control) {
    CDialog& dialog = *exchange->m_pDlgWnd;
    CWnd* there = dialog.GetDlgItem(id);
    if (there == &control || control.IsWindow() || dialog.template_ == nullptr || !dialog.IsWindow()) return;
    for (const DialogItem& item : dialog.template_->items) {
        if (item.id != id) continue;
        // The new one takes the old one's place in the order, which is the order of Tab.
        std::size_t place = dialog.children_.size();
        if (there != nullptr) {
            place =
                static_cast<std::size_t>(std::find(dialog.children_.begin(), dialog.children_.end(), there) -
                                         dialog.children_.begin());
            std::erase_if(dialog.items_, [there](const auto& owned) { return owned.get() == there; });
        }
        if (dialog.MakeControl(item, control) && place < dialog.children_.size())
            std::rotate(dialog.children_.begin() + static_cast<std::ptrdiff_t>(place),
                        dialog.children_.end() - 1, dialog.children_.end());
        return;
    }
}

void DDX_Text(CDataExchange* exchange, int id, CString& text) {
    if (exchange->m_bSaveAndValidate) {
        exchange->m_pDlgWnd->GetDlgItemText(id, text);
    } else {
        exchange->m_pDlgWnd->SetDlgItemText(id, text);
    }
}

bool CDialog::UpdateData(bool saveAndValidate) {
    CDataExchange exchange(this, saveAndValidate);
    DoDataExchange(&exchange);
    return true;
}

void CDialog::DoDataExchange(CDataExchange* /*exchange*/) {}

bool CDialog::OnInitDialog() {
    UpdateData(false);
    return true;
}

void CDialog::OnOK() {
    UpdateData(true);
    EndDialog(IDOK);
}

void CDialog::OnCancel() { EndDialog(IDCANCEL); }

void CDialog::EndDialog(int result) {
    const std::shared_ptr<Desktop> desktop = home_.lock();
    if (!IsOpen() || ending_ || desktop == nullptr) return;
    ending_ = true;
    desktop->PostAction(opening_, [this, result] { Finish(result); });
}

void CDialog::Finish(int result) {
    const std::shared_ptr<Desktop> desktop = home_.lock();
    const std::function<void(int)> ended = std::move(ended_);
    const std::weak_ptr<bool> alive = LifeToken();
    Abandon();
    if (ended) ended(result);
    const std::shared_ptr<bool> token = alive.lock();
    if (token != nullptr && *token && desktop != nullptr && !IsOpen()) desktop->Disown(*this);
}

void CDialog::Abandon() {
    if (!IsOpen()) return;
    opening_.reset();
    ended_ = nullptr;
    if (const std::shared_ptr<Desktop> desktop = home_.lock()) desktop->RemoveModal(*this);
    DestroyWindow();
    items_.clear();
    home_.reset();
}

LRESULT CDialog::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_PAINT) { // an edge, for desktops that give windows none
        CPaintDC dc(this);
        dc.FrameRect(dc.clientRect(), GetSysColor(COLOR_3DSHADOW));
        return 0;
    }
    if (message != WM_INITDIALOG) return CWnd::DefWindowProc(message, wParam, lParam);
    if (OnInitDialog() && IsWindow()) FocusNext(1);
    return 1;
}

bool CDialog::PreTranslateMessage(MSG* message) {
    if (message->message != WM_KEYDOWN) return false;
    switch (message->wParam) {
    case kKeyTab:
        FocusNext(GetKeyState(VK_SHIFT) < 0 ? -1 : 1);
        return true;
    case kKeyEscape:
        OnCancel();
        return true;
    case kKeyReturn:
    case kKeyKeypadEnter:
        // A button with the focus is the one that Return means.
        if (auto* button = dynamic_cast<CButton*>(message->target)) {
            button->Click();
        } else {
            OnOK();
        }
        return true;
    default:
        return false;
    }
}

void CDialog::FocusNext(int direction) {
    const auto count = static_cast<int>(children().size());
    const auto now = std::find(children().begin(), children().end(), GetFocus());
    int at =
        now != children().end() ? static_cast<int>(now - children().begin()) : (direction > 0 ? -1 : count);
    for (int tries = 0; tries < count; ++tries) {
        at = (at + direction + count) % count;
        CWnd* child = children()[static_cast<std::size_t>(at)];
        constexpr UINT kWanted = WS_TABSTOP | WS_VISIBLE;
        if ((child->GetStyle() & kWanted) != kWanted || !child->IsWindowEnabled()) continue;
        child->SetFocus();
        if (auto* edit = dynamic_cast<CEdit*>(child)) edit->SetSel(0, -1);
        return;
    }
}

} // namespace vocafade
