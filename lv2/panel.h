// SPDX-License-Identifier: MIT
#pragma once

#include "lv2/instance.h"

#include <array>
#include <lv2/options/options.h>
#include <lv2/ui/ui.h>

namespace vocafade::lv2 {

/// [main-thread] The `ui:scaleFactor` among options that a host gives; 0 when it is not there, or no number of type Float.
float ScaleAmong(const LV2_Options_Option* options, const LV2_URID_Map* map);

/// The editor of an instance, open inside a window of the host's. Everything here is [main-thread].
class Panel : private PortWriter {
  public:
    /// Null, and nothing is open, when the host gives no window or not the plug-in's own instance, when the
    /// instance has a panel already, or without a display. The editor's window is there for every program
    /// when this returns, and its number stands in `widget`.
    static std::unique_ptr<Panel> Open(LV2UI_Write_Function write, LV2UI_Controller controller,
                                       LV2UI_Widget* widget, const LV2_Feature* const* features);
    const LV2_URID_Map* map() const { return map_; }
    /// A host may have ended the instance before; then there is nothing left to close.
    ~Panel() override;

    /// The host tells the value of a port.
    void PortEvent(std::uint32_t port, float value);
    /// Shows what has changed and delivers what the user did.
    void Idle();
    /// The host's scale, in device pixels for each logical one; 0 when it has none.
    void SetScale(float scale);

  private:
    Panel(Instance& instance, LV2UI_Write_Function write, LV2UI_Controller controller,
          const LV2_Feature* const* features);

    void WritePort(std::int32_t parameter, float value) override;
    void TouchPort(std::int32_t parameter, bool held) override;
    void LetGo();
    /// Neither has to be alive.
    static bool IsPanelOf(Instance* instance, const Panel* panel) {
        return Instance::Find(instance) != nullptr && instance->portWriter() == panel;
    }
    bool IsOfLivingInstance() const { return IsPanelOf(&instance_, this); }

    Instance& instance_;
    LV2UI_Write_Function write_;
    LV2UI_Controller controller_;
    const LV2UI_Touch* touch_;
    const LV2_URID_Map* map_;
    std::array<bool, kParameterCount> touched_{};
};

} // namespace vocafade::lv2
