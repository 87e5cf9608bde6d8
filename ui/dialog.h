// SPDX-License-Identifier: MIT
#pragma once

#include "ui/resources.h"
#include "ui/wnd.h"

#include <functional>

namespace vocafade {

class CDialog;

/// Passed through `DoDataExchange`.
class CDataExchange {
  public:
    CDataExchange(CDialog* dialog, bool saveAndValidate)
        : m_pDlgWnd(dialog), m_bSaveAndValidate(saveAndValidate) {}
    CDialog* m_pDlgWnd;
    bool m_bSaveAndValidate; ///< true: from the controls into the members
};

/// Makes `control` the object of the template's control `id`. Its kind must be the template's.
void DDX_Control(CDataExchange* exchange, int id, CWnd& control);
/// Moves the text of control `id` from or into `text`.
void DDX_Text(CDataExchange* exchange, int id, CString& text);

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

    /// Runs `DoDataExchange`.
    bool UpdateData(bool saveAndValidate = true);

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
    virtual void DoDataExchange(CDataExchange* exchange);

    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    friend class Desktop;
    friend void DDX_Control(CDataExchange* exchange, int id, CWnd& control);

    bool PreTranslateMessage(MSG* message) override;
    void Open();
    void MakeControls();
    /// Creates the control of `item` in the object given, at `place` of the children.
    bool MakeControl(const DialogItem& item, CWnd& control);
    void Finish(int result);
    /// Closes without calling `ended_`.
    void Abandon();
    void FocusNext(int direction);
    void OnOkCommand() { OnOK(); }
    void OnCancelCommand() { OnCancel(); }
    void OnClose() { OnCancel(); }

    UINT templateId_ = 0;
    const DialogTemplate* template_ = nullptr;
    std::shared_ptr<const ResourceSource> source_; ///< keeps the template
    CWnd* wantedOwner_ = nullptr;
    CWnd* owner_ = nullptr;
    std::weak_ptr<Desktop> home_;
    std::shared_ptr<bool> opening_; ///< while open; what is put off for this opening is not for a later one
    bool ending_ = false;
    std::function<void(int)> ended_;
    std::vector<std::unique_ptr<CWnd>> items_; ///< controls that no member was bound to
};

/// [main-thread] Shows `text` (UTF-8, may have several lines) with buttons by `type` (MB_OK, MB_OKCANCEL,
/// MB_YESNO, and an icon) and returns at once; `ended` is called with IDOK, IDCANCEL, IDYES or IDNO when the
/// user has answered. Belongs to the editor whose message is being handled, else to the one opened last on
/// this thread; false, with the text on standard error, when there is none.
bool AfxMessageBox(const char* text, UINT type = MB_OK, std::function<void(int result)> ended = {});
/// The same with text `textId` of the string table.
bool AfxMessageBox(int textId, UINT type = MB_OK, std::function<void(int result)> ended = {});

} // namespace vocafade
