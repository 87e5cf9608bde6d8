// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/renderer.h"

#include "apps/vocafade/render/audio_format.h"
#include "apps/vocafade/render/audio_output.h"
#include "apps/vocafade/render/file_chunks.h"
#include "apps/vocafade/render/stream.h"
#include "apps/vocafade/shared/audio_input.h"
#include "apps/vocafade/shared/failures.h"

#include <algorithm>
#include <chrono>

namespace vocafade::command {

RenderReport Render(const RenderJob& job, const RenderSettings& settings,
                    const std::function<void(double)>& progress) {
    const auto begin = std::chrono::steady_clock::now();
    AudioInput input(job.input);
    const std::string ending = settings.format.empty() ? EndingOf(job.output) : settings.format;
    const int format = ChooseFormat(input.info(), EndingOf(job.input), ending, input.frames());
    host::Effect effect(settings.plugin);
    if (effect.numInputs() < 2 || effect.numOutputs() < 2) throw Failure("the plug-in is not stereo");
    effect.Configure(input.info().samplerate, settings.block,
                     settings.doublePrecision ? host::Precision::float64 : host::Precision::float32);
    effect.Start();
    SetUp(effect, settings);
    RenderReport report;
    report.passedThrough = IsOff(effect);
    if (effect.uniqueId() == kVocafadeId) report.outputLevel = ShownNumber(effect, kParameterOutput);
    const FileChunks chunks = ReadFileChunks(job.input);
    AudioOutput output(job.output, format, input, chunks);
    const auto carry = settings.doublePrecision ? CarryThrough<double> : CarryThrough<float>;
    const StreamReport stream =
        carry(effect, input, output,
              {settings.block, settings.keepLatency, IsOff(effect) ? 0 : LatencyOf(effect)}, progress);
    if (stream.frames == 0) throw Failure("holds no sound that can be read");
    report.songSeconds = static_cast<double>(stream.frames) / input.info().samplerate;
    report.oneInBoth = stream.oneInBoth;
    output.Finish();
    report.format = FormatText(output.format());
    report.announcedSeconds = report.songSeconds / chunks.soundShare;
    report.clipped = output.clipped();
    report.workSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return report;
}

} // namespace vocafade::command
