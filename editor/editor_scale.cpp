// SPDX-License-Identifier: MIT
#include "editor/editor_scale.h"

#include "ui/platform/scale.h"

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace vocafade {
namespace {

double ScaleOfUser() {
    const char* text = std::getenv("VOCAFADE_SCALE"); // NOLINT(concurrency-mt-unsafe): main thread only
    if (text == nullptr) return 0;
    const std::string_view whole(text);
    double value = 0;
    const auto [end, error] = std::from_chars(whole.data(), whole.data() + whole.size(), value);
    return error == std::errc() && end == whole.data() + whole.size() ? value : 0;
}

} // namespace

EditorScale::EditorScale() : user_(ScaleOfUser()) {}

double EditorScale::Wanted(const std::function<double()>& desktop) const {
    for (const double said : {user_, host_})
        if (const double scale = platform::SteppedScale(said); scale > 0) return scale;
    const double scale = platform::SteppedScale(desktop());
    return scale > 0 ? scale : 1.0;
}

} // namespace vocafade
