// SPDX-License-Identifier: MIT
#pragma once

#include "lv2/instance.h"

#include <array>
#include <lv2/ui/ui.h>

namespace vocafade::lv2 {

/// The editor of an instance, open inside a window of the host's. Everything here is [main-thread].
class Panel : private PortWriter {
  public:
    /// Null, and nothing is open, when the host gives no window or not the plug-in's own instance, when the
    /// instance has a panel already, or without a display. The editor's window is there for every program
    /// when this returns, and its number stands in `widget`.
    static std::unique_ptr<Panel> Open(LV2UI_Write_Function write, LV2UI_Controller controller,
                                       LV2UI_Widget* widget, const LV2_Feature* const* features);
    /// A host may have ended the instance before; then there is nothing left to close.
    ~Panel() override;

    /// The host tells the value of a port.
    void PortEvent(std::uint32_t port, float value);
    /// Shows what has changed and delivers what the user did.
    void Idle();

  private:
    Panel(Instance& instance, LV2UI_Write_Function write, LV2UI_Controller controller,
          const LV2UI_Touch* touch);

    void WritePort(std::int32_t parameter, float value) override;
    void TouchPort(std::int32_t parameter, bool held) override;
    void LetGo();
    bool IsOfLivingInstance() const {
        return Instance::Find(&instance_) != nullptr && instance_.portWriter() == this;
    }

    Instance& instance_;
    LV2UI_Write_Function write_;
    LV2UI_Controller controller_;
    const LV2UI_Touch* touch_;
    std::array<bool, kParameterCount> touched_{};
};

} // namespace vocafade::lv2
