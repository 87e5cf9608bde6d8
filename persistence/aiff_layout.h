// SPDX-License-Identifier: MIT
#pragma once

#include "base/big_endian.h"
#include "base/file.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vocafade {

inline constexpr std::uint32_t kFormChunk = FourCharacterCode("FORM");
inline constexpr std::uint32_t kAiffForm = FourCharacterCode("AIFF");
inline constexpr std::uint32_t kAiffCompressedForm = FourCharacterCode("AIFC");
inline constexpr std::uint32_t kCommonChunk = FourCharacterCode("COMM");
inline constexpr std::uint32_t kSoundChunk = FourCharacterCode("SSND");
inline constexpr std::uint32_t kUserChunk = FourCharacterCode("WVL4");
inline constexpr std::uint32_t kId3Chunk = FourCharacterCode("ID3 ");
/// Space that means nothing, as other programs mark it too.
inline constexpr std::uint32_t kFillerChunk = FourCharacterCode("FLLR");

inline constexpr std::int64_t kFormHeaderSize = 12;
inline constexpr std::int64_t kChunkHeaderSize = 8;
inline constexpr std::uint32_t kCommonSize = 18;
/// The largest payload that is read or written as a whole, in bytes: what the file layer's `int` can count.
inline constexpr std::int64_t kMostPayload = 0x7FFFFFFF;

/// One chunk of an AIFF file, as it lies in the file; positions in bytes from the start of the file.
struct AiffChunk {
    std::uint32_t id = 0;
    std::int64_t position = 0;      ///< of the 8-byte chunk header
    std::uint32_t declaredSize = 0; ///< what the header says
    std::int64_t size = 0;          ///< bytes behind the header that are really there
    bool headerIsStale = false;     ///< ID and size are not those in the file, and must be written

    std::int64_t dataPosition() const { return position + kChunkHeaderSize; }
    std::int64_t end() const { return dataPosition() + size; }
};

/// The part of the COMM chunk that sizes depend on.
struct AiffCommon {
    std::uint16_t channels = 0;
    std::uint32_t frames = 0; ///< sample frames
    std::uint16_t bits = 0;   ///< of one sample point
    /// Bytes that a sample point takes: 12 bits take two.
    int sampleBytes() const { return (bits + 7) / 8; }
};

/// The map of an AIFF file, with nothing in it that lies outside the file, whatever its sizes say.
struct AiffLayout {
    enum class Form {
        none,       ///< not an AIFF file
        plain,      ///< "AIFF"
        compressed, ///< "AIFC"
    };
    /// What the walk met behind the last whole chunk.
    enum class Tail {
        clean,         ///< the end of the file or of the form
        damagedCommon, ///< a COMM chunk that is not 18 bytes long ended the walk
        cutChunk,      ///< the last chunk says that it is longer than the file
        strangeBytes,  ///< bytes that are no chunk
        tooManyChunks, ///< more chunks than any sane file has
        unsearched,    ///< what is behind the form could not be told apart
    };

    Form form = Form::none;
    Tail tail = Tail::clean;
    std::vector<AiffChunk> chunks;
    std::int64_t end = 0;      ///< where a further chunk goes
    std::int64_t leftover = 0; ///< bytes behind the end of the form that an old user chunk left: no chunks
    const AiffChunk* Find(std::uint32_t id) const; ///< the first chunk with that ID, or null

    bool hasCommon = false; ///< `common` was read
    AiffCommon common;
    bool hasSound = false; ///< the four fields below were read
    AiffChunk sound;
    std::uint32_t soundOffset = 0;  ///< bytes between the SSND header and the first sample
    std::int64_t soundPosition = 0; ///< of the first sound byte
    std::int64_t soundSize = 0;     ///< sound bytes that are really there
    bool soundSizeDeclared = false; ///< the header's size, modulo 4 GiB, is the real one
};

/// [main-thread] Walks the chunks of `file`. Three kinds of file are met in practice, and all are read:
///
/// - those of our own family put a chunk directly behind an odd-sized one, those of everybody else put a zero
///   byte between. A zero cannot begin an ID, so it is skipped; other bytes are taken as the ID when they
///   make a chunk that fits into the file, and else the same is tried one byte further.
/// - sizes of sounds above 4 GiB have wrapped, frame counts at 2^32, and those of a recording that was never
///   finished are zero. Of the ends at which frame count and size agree, as often as both may have wrapped,
///   the first is taken from which whole chunks lead exactly to the end of the form or file; where none
///   does, the last. Where the two never agree it is the first such place in steps of 4 GiB from what the
///   header says; failing that, one that looks like a chunk; failing that, the end of the file.
/// - a user chunk that was replaced by a shorter one, or taken away, leaves bytes behind the end of the form.
///   They are no chunks; but what others appended behind them is: see `ChunksBehindForm`. A form size that
///   would leave out the sound is not believed.
AiffLayout ReadAiffLayout(CFile& file);

/// [main-thread] The first place behind the form, which ends at `formEnd`, from which whole chunks lead
/// exactly to the end of the file or to zeros that fill it up, user chunks that were taken away aside; the
/// length of the file when there is none; nothing when it cannot be read, or when chunks lead on from more
/// places than any sane file has. Reads all that is behind the form once, block by block.
std::optional<std::int64_t> ChunksBehindForm(CFile& file, std::int64_t formEnd);

/// [main-thread] The payload of the last chunk with that ID, which stands for all before it; empty when there
/// is no such chunk; nothing when it cannot be read or holds more than `kMostPayload` bytes.
std::optional<std::vector<unsigned char>> ReadPayload(CFile& file, const AiffLayout& layout,
                                                      std::uint32_t id);

/// [main-thread] Reads exactly `count` bytes at `position`; false when they are not all there.
bool ReadAt(CFile& file, std::int64_t position, void* buffer, std::size_t count);

} // namespace vocafade
