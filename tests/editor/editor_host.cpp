// SPDX-License-Identifier: MIT
#include "tests/editor/editor_host.h"

#include "base/path.h"
#include "host/library.h"

#include <algorithm>

namespace vocafade::test {
namespace {

using EntryPoint = AEffect* (*)(audioMasterCallback);

EntryPoint Entry(const std::string& plugin) {
    // Never unloaded: sanitizers want the names of what leaked.
    return reinterpret_cast<EntryPoint>(
        host::FindInLibrary(host::OpenLibrary(PathOf(plugin)), "VSTPluginMain"));
}

} // namespace

XServer& SharedServer() {
    static XServer server;
    return server;
}

HostedEditor::HostedEditor(XUser& someUser, int x, int y, audioMasterCallback callback,
                           const std::string& plugin)
    : PanelMouse(someUser, x, y), effect(Entry(plugin)(callback)), parent(user.MakeWindow(x, y, 477, 214)) {
    Ask(effOpen);
    Ask(effSetSampleRate, 0, 0, nullptr, 44100.0f);
    Ask(effSetBlockSize, 0, 1024);
    Ask(effMainsChanged, 0, 1);
}

HostedEditor::~HostedEditor() {
    End();
    user.DestroyWindow(parent);
}

void HostedEditor::End() {
    if (effect != nullptr) Ask(effClose);
    effect = nullptr;
}

CSize HostedEditor::Size() {
    ERect* rect = nullptr;
    Ask(effEditGetRect, 0, 0, static_cast<void*>(&rect));
    return rect != nullptr ? CSize{rect->right - rect->left, rect->bottom - rect->top} : CSize{};
}

void HostedEditor::Keys(std::initializer_list<std::uint32_t> keysyms) {
    user.Keys(keysyms);
    Settle();
}

void HostedEditor::Chord(std::uint32_t held, std::initializer_list<std::uint32_t> keysyms) {
    user.Chord(held, keysyms);
    Settle();
}

void HostedEditor::Type(std::string_view text) {
    user.Type(text);
    Settle();
}

std::string HostedEditor::Display(std::int32_t index) {
    char text[64] = "";
    Ask(effGetParamDisplay, index, 0, text);
    return text;
}

std::string HostedEditor::ProgramName(std::int32_t index) {
    char text[64] = "";
    Ask(effGetProgramNameIndexed, index, -1, text);
    return text;
}

void HostedEditor::Play(float level, std::int32_t frames) {
    const auto count = static_cast<std::size_t>(frames);
    std::vector<float> samples(2 * count, level);
    std::fill_n(samples.data() + count, count, level / 2);
    float* channels[] = {samples.data(), samples.data() + count};
    effect->processReplacing(effect, channels, channels, frames);
}

std::vector<float> EditorTest::Automated(std::int32_t index) const {
    std::vector<float> values;
    for (const RecordingHost::Call& call : host.Calls(audioMasterAutomate)) {
        if (call.index == index) values.push_back(call.opt);
    }
    return values;
}

} // namespace vocafade::test
