// SPDX-License-Identifier: MIT
#pragma once

#include "editor/editor_scale.h"
#include "editor/in_vocafade.h"
#include "effect/editor_interface.h"
#include "ui/geometry.h"
#include "vst/aeff_editor.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace vocafade {

class AVocafade;
class CUIWindow;

/// The effect's editor as the host sees it: a rectangle, opened inside a window of the host's, idled and closed
/// again, any number of times. The rectangle is fixed but for the scale, which changes while the editor is
/// open only where the host resizes its window. Every operation is [main-thread] but for those of the listener.
///
/// It hears of the effect's changes for its whole life, which is the effect's. A change that the host makes
/// on the thread that the panel lives on goes straight on to the panel; one from another thread (automation
/// from the audio thread) goes nowhere, since the panel compares what it shows with what the effect holds at
/// every idle.
class CVocafadeEditor : public AEffEditor, private EffectListener {
  public:
    /// Registers itself with `owner`, an `AVocafade`, which deletes it.
    explicit CVocafadeEditor(AudioEffect* owner);
    ~CVocafadeEditor() override;

    /// Always there: the size of the background bitmap in the pixels of the host's window, 0 by 0 without one.
    bool getRect(ERect** bounds) override;
    /// Opens inside the host's window `ptr`. True also when it is open already, which changes nothing. False,
    /// and it stays closed, when there is no display or no such window.
    bool open(void* ptr) override;
    /// A host may close from inside one of its callbacks: the windows then go when the panel's work is done.
    void close() override;
    void idle() override;
    void draw(ERect* rect) override;

    /// Counts from the next opening; in an open editor from the idle at which the host has made room.
    bool setContentScale(float scale) override;

    AVocafade& vocafade();
    /// Of the panel, in logical pixels.
    CSize size() const { return size_; }
    /// Asks the host for a window of that size in device pixels; true when it has it. At first this is the VST
    /// interface's way.
    using ResizeHost = std::function<bool(CSize size)>;
    void SetResizeHost(ResizeHost resizeHost) { resizeHost_ = std::move(resizeHost); }
    /// The system's number of the panel's window, which every program sees by now; 0 while closed.
    std::uintptr_t NativeWindow();
    /// True while the user holds a control with the mouse.
    bool IsHeld() const;

  private:
    struct Windows;
    class Busy;

    void UpdateControl(std::int32_t index, float value) override;
    void UpdateModify() override;
    CUIWindow* PanelOfThisThread();
    double WantedScale() const;
    void TellSizeAt(double scale);
    /// Takes another scale when one is wanted and the host makes room.
    void FollowScale();
    void ShowMessage(std::int32_t stringId, const std::string& path);

    ERect rect_{};
    CInVocafade application_;
    CSize size_;
    EditorScale wantedScale_;
    double scale_ = 0;   ///< that the host was told a size at, or that the open editor has; 0 before
    double refused_ = 0; ///< that the host made no room for
    ResizeHost resizeHost_;
    std::unique_ptr<Windows> windows_;              ///< while open
    std::vector<std::unique_ptr<Windows>> retired_; ///< closed while the panel was at work
    int busy_ = 0;
    std::atomic<std::thread::id> windowThread_; ///< of the open panel; of no thread while closed
};

/// The factory that the plug-in hands to its effect.
AEffEditor* MakeVocafadeEditor(AudioEffect* owner);

} // namespace vocafade
