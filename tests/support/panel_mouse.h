// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/x_user.h"

#include <chrono>
#include <thread>

namespace vocafade::test {

/// The mouse on an editor whose panel stands at (x, y) of the screen; places are the panel's own, and each
/// move is settled. `Host` idles its editor.
template <typename Host, typename Place>
class PanelMouse {
  public:
    PanelMouse(XUser& someUser, int x, int y) : user(someUser), x_(x), y_(y) {}

    /// Idles until everything that has happened is handled and painted.
    void Settle() {
        for (int i = 0; i < 4; ++i) {
            user.Sync();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            static_cast<Host*>(this)->Idle();
        }
        user.Sync();
    }
    void MoveTo(Place place) {
        user.MoveTo(x_ + place.x, y_ + place.y);
        Settle();
    }
    void Press(Place place, int button = 1) {
        user.MoveTo(x_ + place.x, y_ + place.y);
        user.Press(button);
        Settle();
    }
    void Release(Place place, int button = 1) {
        user.MoveTo(x_ + place.x, y_ + place.y);
        user.Release(button);
        Settle();
    }
    void Click(Place place, int button = 1) {
        Press(place, button);
        Release(place, button);
    }

    XUser& user;

  private:
    int x_;
    int y_;
};

} // namespace vocafade::test
