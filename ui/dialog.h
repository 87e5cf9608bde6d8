// SPDX-License-Identifier: MIT
#pragma once

#include "ui/resources.h"
#include "ui/wnd.h"

#include <functional>
#include <map>

namespace vocafade {

class CDialog;

/// Passed through `DoDataExchange`.
struct CDataExchange {
    CDialog& dialog;
};

/// Makes `control` the object of the template's control `id`. Its kind must be the template's.
void DDX_Control(CDataExchange* exchange, int id, CWnd& control);

/// A dialog window of its own, over the editor.
///
/// A plug-in cannot wait inside the host's idle call, so `DoModal` opens the dialog and returns; what would
/// have stood behind it goes into the function that it is given:
///
///     // instead of  if (dialog.DoModal() == IDOK) Save(dialog.slot(), dialog.name());
///     dialog_ = std::make_unique<CPresetSaveDlg>(nullptr, effect);
///     dialog_->DoModal([this](int result) {
///         if (result == IDOK) Save(dialog_->slot(), dialog_->name());
///         dialog_.reset(); // allowed here
///     });
///
/// The dialog object lives until then (a member, not a local). While it is open its owner's window takes no
/// mouse or keyboard input, a press there brings the dialog to the front; the host goes on. When the owner
/// goes away first the dialog goes with it, and the function is not called.
class CDialog : public CWnd {
  public:
    /// `templateId` is looked up with `ResourceSource::FindDialog`. Without a parent the dialog belongs to
    /// the editor whose message is being handled when `DoModal` is called.
    explicit CDialog(UINT templateId, CWnd* parent = nullptr);
    /// The same, on a template at hand, which must outlive the dialog.
    explicit CDialog(const DialogTemplate& dialogTemplate, CWnd* parent = nullptr);
    ~CDialog() override;

    /// [main-thread] Opens the dialog at the next idle and returns at once. `ended` is called with the
    /// result of `EndDialog` when it has closed, outside of every handler. False, and `ended` is not called,
    /// when there is no template, no editor to belong to, or the dialog is open already.
    bool DoModal(std::function<void(int result)> ended);
    /// Closes the dialog with that result.
    void EndDialog(int result);
    bool IsOpen() const { return opening_ != nullptr; }

    /// The window that the dialog belongs to; null without one.
    CWnd* owner() const { return owner_; }
    /// Closes without telling anybody.
    void Abandon();
    /// For `DDX_Control`.
    void Bind(int id, CWnd& control) { bound_[id] = &control; }

    const char* ClassName() const override { return "CDialog"; }
    bool WantsKeyboard() const override { return true; }

    DECLARE_MESSAGE_MAP()

  protected:
    /// The controls exist. True: the first control with WS_TABSTOP gets the focus; false: this function set
    /// it.
    virtual bool OnInitDialog();
    /// Return, or control IDOK.
    virtual void OnOK();
    /// Escape, control IDCANCEL, or the window's close button.
    virtual void OnCancel();
    /// Names the objects of the template's controls (`DDX_Control`), before they are made.
    virtual void DoDataExchange(CDataExchange* /*exchange*/) {}

    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool PreTranslateMessage(MSG* message) override;

  private:
    void Open();
    void MakeControls();
    void MakeControl(const DialogItem& item);
    void Finish(int result);
    void FocusNext(int direction);
    void OnOkCommand() { OnOK(); }
    void OnCancelCommand() { OnCancel(); }
    void OnClose() { OnCancel(); }

    UINT templateId_ = 0;
    const DialogTemplate* template_ = nullptr;
    std::shared_ptr<const ResourceSource> source_; ///< keeps the template
    CWnd* wantedOwner_ = nullptr;
    CWnd* owner_ = nullptr;
    std::weak_ptr<WindowSession> home_;
    std::shared_ptr<bool> opening_; ///< while open; what is put off for this opening is not for a later one
    bool ending_ = false;
    std::function<void(int)> ended_;
    std::map<int, CWnd*> bound_;               ///< controls that are members, by id
    std::vector<std::unique_ptr<CWnd>> items_; ///< the other ones
};

} // namespace vocafade
