// SPDX-License-Identifier: MIT
#include "host/effect.h"

#include "host/host_error.h"
#include "vst/opcodes.h"

#include <array>
#include <cmath>
#include <cstring>
#include <mutex>

namespace vocafade::host {
namespace {

constexpr double kDefaultRate = 44100.0;
constexpr std::int32_t kDefaultBlock = 512;
constexpr std::int32_t kMostChannels = 1024;    // more is a descriptor gone wrong
constexpr std::int32_t kMostParameters = 65536; // likewise, and for programs
constexpr std::int64_t kMostChunkBytes = std::int64_t{256} << 20;
// Effects write more than the interface's lengths allow; this is many times what any is known to write.
constexpr std::size_t kTextBytes = 1024;

/// One at a time: construction, opening and closing.
std::mutex& LifeMutex() {
    static std::mutex mutex;
    return mutex;
}

void CheckDescriptor(const AEffect* effect, const std::string& file) {
    const auto broken = [&](const char* what) {
        throw HostError("the plug-in '" + file + "' is broken: " + what);
    };
    if (effect == nullptr) throw HostError("the plug-in '" + file + "' refused to start");
    if (effect->magic != kEffectMagic) broken("its descriptor does not begin with VstP");
    if (effect->dispatcher == nullptr) broken("it has no dispatcher");
    const auto sane = [](std::int32_t count, std::int32_t most) { return count >= 0 && count <= most; };
    if (!sane(effect->numInputs, kMostChannels) || !sane(effect->numOutputs, kMostChannels))
        broken("its number of channels makes no sense");
    if (!sane(effect->numParams, kMostParameters) || !sane(effect->numPrograms, kMostParameters))
        broken("its number of parameters or programs makes no sense");
    if (effect->numParams > 0 && (effect->getParameter == nullptr || effect->setParameter == nullptr))
        broken("it has parameters but no way to reach them");
}

AEffect* Construct(const SharedObject& object) {
    try {
        return object.entry()(&HostContext::Callback);
    } catch (...) {
        throw HostError("the plug-in '" + object.file().string() + "' failed while it was being made");
    }
}

} // namespace

Effect::Effect(const std::filesystem::path& path, HostListener* listener) {
    const std::lock_guard lock(LifeMutex());
    object_ = std::make_unique<SharedObject>(path);
    context_ = std::make_unique<HostContext>(object_->folder(), kDefaultRate, kDefaultBlock, listener);
    const HostContext::Constructing scope(*context_);
    effect_ = Construct(*object_);
    CheckDescriptor(effect_, object_->file().string());
    context_->Attach(effect_);
    Dispatch(effOpen);
}

Effect::~Effect() {
    CloseEditor();
    Stop();
    const std::lock_guard lock(LifeMutex());
    Dispatch(effClose);
    effect_ = nullptr;
    object_.reset(); // code goes last, and no other effect is being made meanwhile
}

void Effect::Configure(double sampleRate, std::int32_t blockSize, Precision precision) {
    if (!(sampleRate > 0.0) || !std::isfinite(sampleRate)) throw HostError("the sample rate makes no sense");
    if (blockSize <= 0) throw HostError("the block size makes no sense");
    if (precision == Precision::float32 && effect_->processReplacing == nullptr)
        throw HostError("the plug-in cannot process in single precision");
    if (precision == Precision::float64 && !hasDoubleEntry())
        throw HostError("the plug-in cannot process in double precision");
    Stop();
    context_->setSampleRate(sampleRate);
    context_->setBlockSize(blockSize);
    precision_ = precision;
    Dispatch(effSetSampleRate, 0, 0, nullptr, static_cast<float>(sampleRate));
    Dispatch(effSetBlockSize, 0, blockSize);
    Dispatch(effSetProcessPrecision, 0, precision == Precision::float64 ? 1 : 0);
    configured_ = true;
}

void Effect::Start() {
    if (running_) return;
    if (!configured_) throw HostError("an effect must be configured before it is started");
    context_->setPlaying(true);
    Dispatch(effMainsChanged, 0, 1);
    Dispatch(effStartProcess);
    running_ = true;
}

void Effect::Stop() {
    if (!running_) return;
    running_ = false;
    Dispatch(effStopProcess);
    Dispatch(effMainsChanged, 0, 0);
    context_->setPlaying(false);
}

void Effect::Process(float** inputs, float** outputs, std::int32_t frames) {
    const HostContext::Processing scope;
    effect_->processReplacing(effect_, inputs, outputs, frames);
    context_->Advance(frames);
}

void Effect::Process(double** inputs, double** outputs, std::int32_t frames) {
    const HostContext::Processing scope;
    effect_->processDoubleReplacing(effect_, inputs, outputs, frames);
    context_->Advance(frames);
}

VstIntPtr Effect::Dispatch(std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr, float opt) {
    return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
}

std::string Effect::Text(std::int32_t opcode, std::int32_t index, VstIntPtr value) {
    std::array<char, kTextBytes> text{};
    Dispatch(opcode, index, value, text.data());
    return {text.data(), ::strnlen(text.data(), text.size() - 1)};
}

std::string Effect::effectName() { return Text(effGetEffectName); }

int Effect::canDo(std::string_view what) {
    std::string text(what);
    return static_cast<int>(Dispatch(effCanDo, 0, 0, text.data()));
}

float Effect::parameter(std::int32_t index) {
    return isParameter(index) ? effect_->getParameter(effect_, index) : 0.0f;
}

void Effect::setParameter(std::int32_t index, float value) {
    if (isParameter(index)) effect_->setParameter(effect_, index, value);
}

std::string Effect::parameterName(std::int32_t index) {
    return isParameter(index) ? Text(effGetParamName, index) : std::string();
}
std::string Effect::parameterLabel(std::int32_t index) {
    return isParameter(index) ? Text(effGetParamLabel, index) : std::string();
}
std::string Effect::parameterDisplay(std::int32_t index) {
    return isParameter(index) ? Text(effGetParamDisplay, index) : std::string();
}

std::int32_t Effect::program() { return static_cast<std::int32_t>(Dispatch(effGetProgram)); }

void Effect::setProgram(std::int32_t index) {
    if (index < 0 || index >= effect_->numPrograms) return;
    Dispatch(effBeginSetProgram);
    Dispatch(effSetProgram, 0, index);
    Dispatch(effEndSetProgram);
}

std::string Effect::programName() { return Text(effGetProgramName); }

void Effect::setProgramName(const std::string& name) {
    std::array<char, kTextBytes> text{}; // effects copy a fixed number of bytes, so there must be enough
    name.copy(text.data(), text.size() - 1);
    Dispatch(effSetProgramName, 0, 0, text.data());
}

std::optional<std::string> Effect::programNameAt(std::int32_t index) {
    std::array<char, kTextBytes> text{};
    if (index < 0 || index >= effect_->numPrograms) return std::nullopt;
    if (Dispatch(effGetProgramNameIndexed, index, -1, text.data()) == 0) return std::nullopt;
    return std::string(text.data(), ::strnlen(text.data(), text.size() - 1));
}

std::vector<std::byte> Effect::chunk(bool programOnly) {
    if (!has(effFlagsProgramChunks)) throw HostError("the plug-in does not give its state away");
    void* data = nullptr;
    const VstIntPtr size = Dispatch(effGetChunk, programOnly ? 1 : 0, 0, &data);
    if (data == nullptr || size <= 0 || size > kMostChunkBytes)
        throw HostError("the plug-in gave no usable state");
    const auto* bytes = static_cast<const std::byte*>(data);
    return {bytes, bytes + size};
}

void Effect::setChunk(std::span<const std::byte> bytes, bool programOnly) {
    if (!has(effFlagsProgramChunks)) throw HostError("the plug-in does not take a state");
    std::vector<std::byte> copy(bytes.begin(), bytes.end()); // effects may write into it
    Dispatch(effSetChunk, programOnly ? 1 : 0, static_cast<VstIntPtr>(copy.size()), copy.data());
}

std::optional<ERect> Effect::editorRect() {
    ERect* rect = nullptr;
    if (!has(effFlagsHasEditor)) return std::nullopt;
    Dispatch(effEditGetRect, 0, 0, &rect);
    if (rect == nullptr) return std::nullopt;
    return *rect;
}

bool Effect::OpenEditor(void* parent) {
    if (editorOpen_ || !has(effFlagsHasEditor)) return false;
    editorRect(); // some effects make up their size only when asked, and expect to be asked first
    editorOpen_ = Dispatch(effEditOpen, 0, 0, parent) != 0;
    return editorOpen_;
}

void Effect::IdleEditor() {
    if (editorOpen_) Dispatch(effEditIdle);
}

void Effect::CloseEditor() {
    if (!editorOpen_) return;
    editorOpen_ = false;
    Dispatch(effEditClose);
}

} // namespace vocafade::host
