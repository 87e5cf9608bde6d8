// SPDX-License-Identifier: MIT
#pragma once

#include "editor/panel_layout.h"
#include "tests/support/panel_mouse.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_folder.h"
#include "tests/support/x_server.h"
#include "ui/geometry.h"

#include <X11/keysym.h>
#include <memory>
#include <string>

namespace vocafade::test {

// Places of the panel that the mouse goes to.
inline constexpr CPoint kSwitch = layout::ControlOf(kParameterOnOff).rect.CenterPoint();
inline constexpr CPoint kCopy = layout::kCopyRect.CenterPoint();
inline constexpr CPoint kSave = layout::kSaveRect.CenterPoint();
inline constexpr CPoint kInput = layout::ControlOf(kParameterInput).readout.CenterPoint();
inline constexpr CPoint kOutput = layout::ControlOf(kParameterOutput).readout.CenterPoint();
inline constexpr CPoint kLoFreq = layout::ControlOf(kParameterLoFreq).readout.CenterPoint();
inline constexpr CPoint kHiFreq = layout::ControlOf(kParameterHiFreq).readout.CenterPoint();
inline constexpr CPoint kPosition = layout::ControlOf(kParameterPosition).readout.CenterPoint();

/// What a user may have open in the editor, by a click and what is typed then: the entry field, the menu, the dialog,
/// the list in it.
struct Openable {
    CPoint at;
    const char* typed;
};
inline constexpr Openable kOpenables[] = {{kLoFreq, "77"}, {kCopy, ""}, {kSave, ""}, {kSave, " "}};

/// One effect out of the built plug-in, and its editor in a window of the host's, all through the binary
/// interface.
class HostedEditor : public PanelMouse<HostedEditor, CPoint> {
  public:
    /// Makes and opens the effect and a parent window for its editor at (x, y) of the screen. `plugin`: the
    /// shared object.
    explicit HostedEditor(XUser& someUser, int x = 20, int y = 30,
                          audioMasterCallback callback = RecordingHost::Callback,
                          const std::string& plugin = VOCAFADE_PLUGIN);
    ~HostedEditor();
    HostedEditor(const HostedEditor&) = delete;
    HostedEditor& operator=(const HostedEditor&) = delete;

    VstIntPtr Ask(std::int32_t opcode, std::int32_t index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                  float opt = 0.0f) {
        return effect->dispatcher(effect, opcode, index, value, ptr, opt);
    }
    bool Open() { return Ask(effEditOpen, 0, 0, ParentPointer()) != 0; }
    /// Opens it and idles until it is painted.
    bool Show() {
        const bool opened = Open();
        Settle();
        return opened;
    }
    void Close() { Ask(effEditClose); }
    /// That it wants, in pixels of the screen; none when it does not say.
    CSize Size();
    /// Ends the effect, as a host does that removes it.
    void End();
    void* ParentPointer() const { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(parent)); }

    void Idle() { Ask(effEditIdle); }
    void Drag(CPoint point) { MoveTo(point); }
    // Keys as `XUser` has them, then a settling.
    void Key(std::uint32_t keysym) { Keys({keysym}); }
    void Keys(std::initializer_list<std::uint32_t> keysyms);
    void Chord(std::uint32_t held, std::initializer_list<std::uint32_t> keysyms);
    void Type(std::string_view text);
    void Open(const Openable& what) {
        Click(what.at);
        Type(what.typed);
    }
    /// Types into what a click opens, and confirms it with Return.
    void Enter(CPoint at, const std::string& text) {
        Click(at);
        Type(text + "\r");
    }

    Picture Look(const CRect& rect) {
        return user.Look(parent, rect.left, rect.top, rect.Width(), rect.Height());
    }
    Picture LookAtPanel() { return Look({0, 0, 477, 214}); }

    float Value(std::int32_t index) { return effect->getParameter(effect, index); }
    void SetValue(std::int32_t index, float value) { effect->setParameter(effect, index, value); }
    std::string Display(std::int32_t index);
    std::string ProgramName(std::int32_t index);
    /// Lets one block of a constant level through the left channel, of half that level through the right one.
    void Play(float level, std::int32_t frames = 256);

    AEffect* effect = nullptr;
    xcb_window_t parent = 0;
};

inline testing::Environment* const kNeedsXServer = testing::AddGlobalTestEnvironment(new NeedsXServer);

/// The X server that all tests of this program share.
XServer& SharedServer();

/// A test with a server, a user, preferences of its own, and a host that notes what it is told.
class EditorTest : public WithSettings {
  protected:
    /// However busy the machine is, two quick presses are a double click.
    EditorTest() { user.PublishSettings(DoubleClickSettings(60000)); }

    /// The values that the host was told for a parameter, in order.
    std::vector<float> Automated(std::int32_t index) const;
    void Forget() { host.calls.clear(); }

    XServer& server = SharedServer();
    RecordingHost host;
    XUser user;
};

/// The same with an editor that is open and painted.
class OpenEditorTest : public EditorTest {
  protected:
    OpenEditorTest() : editor(user) {
        editor.Show();
        Forget();
    }
    /// The menu, dialog or box that is open beside the windows of the beginning; 0 for none.
    xcb_window_t Popup() {
        const std::vector<xcb_window_t> now = user.TopLevels();
        return now.size() > windowsBefore.size() ? now.back() : 0;
    }
    HostedEditor editor;
    std::vector<xcb_window_t> windowsBefore = user.TopLevels();
};

} // namespace vocafade::test
