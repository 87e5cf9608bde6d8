// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"

#include <array>

namespace vocafade::validate {

std::span<const Check> Checks() {
    static constexpr std::array kChecks = {
        Check{"descriptor", 1, 10, "it loads, and its record makes sense", CheckDescriptor},
        Check{"texts", 1, 10, "names and labels fit into what hosts hand over for them", CheckTexts},
        Check{"sound", 1, 30, "sound goes in, numbers come out; silence too", CheckSound},
        Check{"parameters", 2, 30, "every value of every parameter can be set and read", CheckParameters},
        Check{"programs", 2, 30, "every program can be selected, named and used", CheckPrograms},
        Check{"state", 3, 30, "what one instance saves, another one restores", CheckStateRoundTrip},
        Check{"rates", 4, 90, "sample rates from 8 kHz to 384 kHz", CheckRates},
        Check{"blocks", 4, 90, "blocks from 0 to 65536 samples, of changing lengths", CheckBlocks},
        Check{"life", 5, 60, "opened, switched and closed over and over, in the orders that hosts use",
              CheckLifeCycles},
        Check{"instances", 5, 60, "many at once, which do not hear each other", CheckManyInstances},
        Check{"in-place", 6, 30, "outputs in the inputs' own memory", CheckInPlace},
        Check{"misaligned", 6, 30, "buffers that begin at any sample", CheckMisaligned},
        Check{"guard-pages", 6, 30, "not a sample is touched in front of a buffer or behind it",
              CheckGuardPages},
        Check{"hostile-samples", 6, 60, "what is no number, infinite or enormous does not stay in it",
              CheckHostileSamples},
        Check{"denormals", 6, 60, "numbers next to nothing do not slow it down", CheckDenormals},
        Check{"threads", 7, 60, "many instances on many threads", CheckThreads},
        Check{"calls-while-audio", 7, 60, "the main thread turns, asks and saves while audio runs",
              CheckCallsWhileAudio},
        Check{"editor", 7, 60, "the editor opens and closes over and over", CheckEditor},
        Check{"editor-while-audio", 7, 60, "the editor is open while audio runs", CheckEditorWhileAudio},
        Check{"audio-thread", 8, 60, "no memory, no sleep and no file on the audio thread", CheckAudioThread},
        Check{"timing", 8, 60, "every block is ready in time", CheckTiming},
        Check{"odd-life", 9, 60, "opened, switched and closed in orders that no manual shows",
              CheckOddLifeCycles},
        Check{"opcodes", 9, 60, "every request there is, with odd arguments", CheckOpcodes},
        Check{"parameter-extremes", 9, 60, "values and numbers of parameters beyond all bounds",
              CheckParameterExtremes},
        Check{"damaged-state", 9, 90, "saved states that were cut, damaged or made up", CheckDamagedState},
        Check{"loading", 10, 120, "loaded and unloaded a hundred times without a trace", CheckLoading},
        Check{"fork", 10, 60, "the host forks, and its child uses or leaves the effect", CheckFork},
        Check{"manners", 10, 30, "the process stays as it was: signals, locale, folder, float mode, output",
              CheckManners},
        Check{"random-session", 10, 180, "thousands of calls at random, sound among them",
              CheckRandomSession},
    };
    return kChecks;
}

} // namespace vocafade::validate
