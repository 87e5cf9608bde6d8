// SPDX-License-Identifier: MIT
#pragma once

#include "tests/editor/editor_host.h"

#include <array>
#include <string>

namespace vocafade::test {

/// What the panel should show.
struct PanelState {
    bool copyOpen = false;
    bool modified = false;
    std::array<float, 6> values{};         ///< normalised, by parameter
    std::array<std::string, 6> displays{}; ///< by parameter
    std::array<float, 4> meters{-38.0f, -38.0f, -38.0f, -38.0f};

    /// What the effect holds.
    static PanelState Of(HostedEditor& editor);
};

/// The whole panel in that state, put together here from the bitmaps.
Picture ExpectedPanel(const PanelState& state);

/// The picture in a PNG file of that size.
Picture PictureIn(const std::string& path, CSize size = {477, 214});
bool WritePng(const Picture& picture, const std::string& path);

/// Whether two pictures are the same within `rect`; if not, says where and leaves both as files behind.
::testing::AssertionResult SamePicture(const Picture& shown, const Picture& expected,
                                       const CRect& rect = {0, 0, 477, 214});

/// The open editor shows what its effect holds.
::testing::AssertionResult ShowsItsEffect(HostedEditor& editor, bool modified = false);

} // namespace vocafade::test
