// SPDX-License-Identifier: MIT
#include "ui/dialog.h"

#include "ui/controls.h"
#include "ui/edit.h"
#include "ui/theme.h"
#include "ui/window_session.h"

namespace vocafade {
namespace {

/// `bound` as the kind of control that is wanted; when it is none, a new one, which goes into `owned`.
template <class Kind>
Kind& ControlOf(CWnd* bound, std::vector<std::unique_ptr<CWnd>>& owned) {
    if (auto* control = dynamic_cast<Kind*>(bound)) return *control;
    auto made = std::make_unique<Kind>();
    Kind& control = *made;
    owned.push_back(std::move(made));
    return control;
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
    WindowSession* session = wantedOwner_ != nullptr ? wantedOwner_->session() : WindowSession::Current();
    if (session == nullptr || !session->IsDisplayAlive()) return false;
    const TopLevel* panel = session->MainWindow();
    home_ = session->weak_from_this();
    owner_ = wantedOwner_ != nullptr ? wantedOwner_ : panel != nullptr ? &panel->window() : nullptr;
    opening_ = std::make_shared<bool>(true);
    ending_ = false;
    ended_ = std::move(ended);
    session->PushModal(*this);
    session->queue().DeferCreate(opening_, [this] { Open(); });
    return true;
}

void CDialog::Open() {
    const std::shared_ptr<WindowSession> session = home_.lock();
    if (ending_ || session == nullptr || IsWindow()) return;
    // In the middle of the owner, on its screen.
    CRect bounds({0, 0}, template_->size);
    const TopLevel* above = owner_ != nullptr ? owner_->FindTopLevel() : nullptr;
    if (above != nullptr && above->native() != nullptr) {
        const CRect around(above->native()->ScreenPosition(), above->window().bounds().Size());
        bounds.OffsetRect(around.left + (around.Width() - bounds.Width()) / 2,
                          around.top + (around.Height() - bounds.Height()) / 2);
    }
    bounds.MoveInside(session->display()->WorkArea(bounds.CenterPoint()));

    const auto kind = platform::WindowKind::dialog;
    const WindowClass plain{CS_DBLCLKS, kCursorArrow, {false, theme::kFace}};
    if (!CreateIn(*session, nullptr, &kind, owner_, plain, template_->title, WS_POPUP | WS_CAPTION, bounds,
                  0)) {
        Finish(-1);
        return;
    }
    MakeControls();
    const std::weak_ptr<bool> life = LifeToken();
    SendMessage(WM_INITDIALOG);
    if (!life.expired() && IsWindow()) ShowWindow(SW_SHOW);
}

void DDX_Control(CDataExchange* exchange, int id, CWnd& control) { exchange->dialog.Bind(id, control); }

void CDialog::MakeControls() {
    items_.clear();
    bound_.clear();
    CDataExchange exchange{*this};
    DoDataExchange(&exchange);
    for (const DialogItem& item : template_->items)
        MakeControl(item);
}

void CDialog::MakeControl(const DialogItem& item) {
    const UINT style = item.style | WS_CHILD | WS_VISIBLE;
    const auto id = static_cast<UINT>(item.id);
    const auto found = bound_.find(item.id);
    CWnd* bound = found != bound_.end() ? found->second : nullptr;
    switch (item.kind) {
    case DialogItem::Kind::edit: {
        auto& edit = ControlOf<CEdit>(bound, items_);
        edit.Create(style, item.rect, this, id);
        edit.CWnd::SetWindowText(item.text);
        break;
    }
    case DialogItem::Kind::comboBox:
        ControlOf<CComboBox>(bound, items_).Create(style, item.rect, this, id);
        break;
    case DialogItem::Kind::button:
        ControlOf<CButton>(bound, items_).Create(item.text, style, item.rect, this, id);
        break;
    case DialogItem::Kind::label:
        ControlOf<CStatic>(bound, items_).Create(item.text, style, item.rect, this, id);
        break;
    }
}

bool CDialog::OnInitDialog() { return true; }

void CDialog::OnOK() { EndDialog(IDOK); }

void CDialog::OnCancel() { EndDialog(IDCANCEL); }

void CDialog::EndDialog(int result) {
    const std::shared_ptr<WindowSession> session = home_.lock();
    if (!IsOpen() || ending_ || session == nullptr) return;
    ending_ = true;
    session->queue().Post(opening_, [this, result] { Finish(result); });
}

void CDialog::Finish(int result) {
    const std::shared_ptr<WindowSession> session = home_.lock();
    const std::function<void(int)> ended = std::move(ended_);
    const std::weak_ptr<bool> life = LifeToken();
    Abandon();
    if (ended) ended(result);
    if (!life.expired() && session != nullptr && !IsOpen()) session->Disown(*this);
}

void CDialog::Abandon() {
    if (!IsOpen()) return;
    opening_.reset();
    ended_ = nullptr;
    if (const std::shared_ptr<WindowSession> session = home_.lock()) session->RemoveModal(*this);
    DestroyWindow();
    items_.clear();
    home_.reset();
}

LRESULT CDialog::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_PAINT) { // an edge, for desktops that give windows none
        CPaintDC dc(this);
        dc.FrameRect(dc.clientRect(), theme::kEdge);
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
        if ((child->GetStyle() & kWanted) != kWanted) continue;
        child->SetFocus();
        if (auto* edit = dynamic_cast<CEdit*>(child)) edit->SetSel(0, -1);
        return;
    }
}

} // namespace vocafade
