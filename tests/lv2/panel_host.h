// SPDX-License-Identifier: MIT
#pragma once

#include "tests/lv2/lv2_host.h"
#include "tests/support/panel_mouse.h"

#include <array>
#include <lv2/options/options.h>
#include <lv2/ui/ui.h>
#include <utility>
#include <vector>

namespace vocafade::test {

/// A place on the panel.
struct PanelPoint {
    int x, y;
};

/// The host's side of an editor in a window of the host's. What it writes goes to the plug-in's ports, as in
/// every host.
class PanelHost : public PanelMouse<PanelHost, PanelPoint> {
  public:
    using Point = PanelPoint;
    /// Which of the features that the editor asks for this host has.
    struct Offer {
        void* instance;
        bool parent = true;
        bool touchAndResize = true;
        float scale = 0.0f; ///< 0: the host does not say
    };

    PanelHost(XUser& someUser, Lv2Plugin& somePlugin);
    PanelHost(XUser& someUser, Lv2Plugin& somePlugin, Offer offer, xcb_window_t someParent = 0);
    ~PanelHost();
    PanelHost(const PanelHost&) = delete;
    PanelHost& operator=(const PanelHost&) = delete;

    bool IsOpen() const { return panel_ != nullptr; }
    void Close();
    void Idle();
    /// Tells the editor what a port says.
    void Tell(std::int32_t parameter, float value);
    /// Says at another scale that it shows things.
    std::uint32_t SetScale(float scale);
    Picture Look(int x, int y, int width, int height) { return user.Look(parent, x, y, width, height); }

    Lv2Plugin& plugin;
    xcb_window_t parent = 0;
    xcb_window_t widget = 0;
    bool deaf = false;   ///< what the editor writes does not reach the ports
    bool fickle = false; ///< it closes the editor as soon as that writes
    std::vector<std::pair<std::uint32_t, float>> writes;
    std::vector<std::pair<std::uint32_t, bool>> touches;
    std::pair<int, int> size{};

  private:
    /// `ui:scaleFactor` alone; `scale` is pointed to.
    std::array<LV2_Options_Option, 2> Options(const float& scale);

    static constexpr int kX = 20;
    static constexpr int kY = 30;

    const LV2UI_Descriptor* descriptor_;
    LV2UI_Handle panel_ = nullptr;
    LV2UI_Touch touch_; // as long as the editor
    LV2UI_Resize resize_;
    bool ownsParent_ = false;
};

} // namespace vocafade::test
