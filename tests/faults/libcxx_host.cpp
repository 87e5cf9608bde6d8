// SPDX-License-Identifier: MIT
// A host with another C++ library than the plug-in's: strings, exceptions, threads and streams of both live
// in one process. Ends with 0 when the plug-in works and nothing of the host's has suffered.
#include "tests/support/recording_host.h"

#include <algorithm>
#include <cmath>
#include <dlfcn.h>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#ifndef _LIBCPP_VERSION
// cppcheck-suppress preprocessorErrorDirective
#error "this host is to be built with libc++"
#endif

namespace {

using namespace vocafade;

void Expect(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

void UseOnce(const char* plugin) {
    void* object = ::dlopen(plugin, RTLD_NOW | RTLD_LOCAL);
    Expect(object != nullptr, "it cannot be loaded");
    const auto entry = reinterpret_cast<AEffect* (*)(audioMasterCallback)>(::dlsym(object, "VSTPluginMain"));
    AEffect* effect = entry != nullptr ? entry(test::SilentHost) : nullptr;
    Expect(effect != nullptr, "it has no entry or refuses");
    const auto ask = [&](std::int32_t opcode, VstIntPtr value = 0, void* ptr = nullptr, float opt = 0.0f) {
        return effect->dispatcher(effect, opcode, 0, value, ptr, opt);
    };
    ask(effOpen);
    ask(effSetSampleRate, 0, nullptr, 48000.0f);
    ask(effSetBlockSize, 512);
    ask(effMainsChanged, 1);
    std::vector<float> left(512, 0.25f), right(512, -0.25f), outLeft(512), outRight(512);
    std::thread audio([&] {
        float* in[] = {left.data(), right.data()};
        float* out[] = {outLeft.data(), outRight.data()};
        for (int i = 0; i < 200; ++i)
            effect->processReplacing(effect, in, out, 512);
    });
    audio.join();
    Expect(std::all_of(outLeft.begin(), outLeft.end(), [](float sample) { return std::isfinite(sample); }),
           "its output is NaN or infinite");
    char name[64] = "";
    ask(effGetEffectName, 0, name);
    Expect(std::string(name) == "Vocafade", "its name is wrong");
    ask(effClose);
    ::dlclose(object);
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return 2;
    try {
        for (int i = 0; i < 20; ++i) {
            UseOnce(arguments[1]);
            std::ostringstream text; // the host's own library still works after each
            text << i << ' ' << 0.5;
            Expect(text.str() == std::to_string(i) + " 0.5", "the host's streams are broken");
            try {
                throw std::logic_error("ours");
            } catch (const std::exception& error) {
                Expect(std::string(error.what()) == "ours", "the host's exceptions are broken");
            }
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    std::cout << "twenty times loaded, used and unloaded\n";
    return 0;
}
