// SPDX-License-Identifier: MIT
// User chunks in AIFF files: those of our own family, those of other programs, and damaged ones.
#include "persistence/async_file_io.h"
#include "persistence/large_sound.h"
#include "persistence/user_chunk.h"
#include "tests/support/aiff.h"
#include "tests/support/processes.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>
#include <random>
#include <sndfile.hh>
#include <string>
#include <vector>

namespace vocafade::test {
namespace {

using Result = UserChunkResult;

std::string Noise(std::size_t size, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

std::span<const unsigned char> BytesOf(const std::string& text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

KVBFILECHUNKINFO Sub(const char (&id)[5], const std::string& data) {
    return {FourCharacterCode(id), static_cast<std::uint32_t>(data.size()), BytesOf(data).data()};
}

Result Put(const std::string& path, const std::vector<KVBFILECHUNKINFO>& first,
           const std::vector<KVBFILECHUNKINFO>& second = {}) {
    return PutUserChunk(path.c_str(), first, second);
}

std::string Payload(const std::string& path) {
    CAsyncFileIO file;
    int none = 0;
    if (file.Open(path.c_str(), CAsyncFileIO::read) != 0) return "cannot open";
    std::string payload(static_cast<std::size_t>(file.ReadUserChunk(nullptr, 0, nullptr, none)), '\0');
    file.ReadUserChunk(reinterpret_cast<unsigned char*>(payload.data()), static_cast<int>(payload.size()),
                       nullptr, none);
    return payload;
}

AiffLayout LayoutOf(const std::string& path) {
    CFile file;
    file.Open(path.c_str(), CFile::modeRead);
    return ReadAiffLayout(file);
}

std::string Ids(const std::string& path) {
    std::string ids;
    for (const AiffChunk& chunk : LayoutOf(path).chunks)
        ids += (ids.empty() ? "" : " ") + Big32(chunk.id);
    return ids;
}

/// Makes the file longer without taking room on the disk; false where that cannot be done.
bool Lengthen(const std::string& path, std::int64_t size) {
    std::error_code error;
    std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size), error);
    return !error;
}

/// Writes the head of a sound of `size` bytes and makes the file as long as it and what is `behind` it are.
bool WriteLongSound(const std::string& path, std::int64_t size, const std::string& common,
                    const std::string& behind = {}) {
    const auto form = static_cast<std::uint32_t>(size + 46 + static_cast<std::int64_t>(behind.size()));
    WriteFile(path, "FORM" + Big32(form) + "AIFF" + common + "SSND" +
                        Big32(static_cast<std::uint32_t>(size + 8)) + std::string(8, '\0'));
    if (!Lengthen(path, 54 + size)) return false;
    std::ofstream(path, std::ios::app | std::ios::binary) << behind;
    return true;
}

/// The samples as the widely used library reads them, and their rate.
std::vector<int> SamplesOf(const std::string& path) {
    SndfileHandle sound(path);
    std::vector<int> samples(static_cast<std::size_t>(sound.frames() * sound.channels()));
    EXPECT_EQ(sound.readf(samples.data(), sound.frames()), sound.frames());
    samples.push_back(sound.samplerate());
    return samples;
}

class UserChunk : public testing::Test {
  protected:
    /// Puts one sub-chunk that must then be read back.
    void PutKey(const std::string& data) const {
        EXPECT_EQ(Put(path, {Sub("KEY ", data)}), Result::done) << data.size();
        EXPECT_EQ(Payload(path), Chunk("KEY ", data)) << data.size();
    }

    TempFolder folder;
    const std::string path = folder / "song.aif";
    const std::string value = "value";
};

TEST_F(UserChunk, TheFamilysFileGetsChunkSizesAndFramesByteForByte) {
    const std::string samples = Noise(400);
    // As a recorder leaves it that never filled in its sizes.
    WriteFile(path,
              "FORM" + Big32(46) + "AIFF" + Common(0) + "SSND" + Big32(8) + std::string(8, '\0') + samples);
    const std::string a = "abc", empty, b = "hello";
    KVBFILECHUNKINFO first[] = {Sub("one ", a), Sub("two ", empty)};
    KVBFILECHUNKINFO second[] = {Sub("tri ", b)};
    EXPECT_TRUE(WriteUserChunk(("file://" + path).c_str(), first, 2, second, 1));

    const std::string two = Chunk("one ", a) + Chunk("two ", ""), payload = two + Chunk("tri ", b);
    EXPECT_EQ(ReadFile(path), Form(Common(100) + Sound(samples) + Chunk("WVL4", payload)));
    EXPECT_EQ(Payload(path), payload);

    // Shorter: the rest of the old one stays where it was, outside the form. It would make a chunk that leads
    // to the end of the file, so the file gets another end.
    EXPECT_TRUE(WriteUserChunk(path.c_str(), first, 2, nullptr, 0));
    EXPECT_EQ(ReadFile(path),
              Form(Common(100) + Sound(samples) + Chunk("WVL4", two)) + Chunk("tri ", b) + "\xFF\xFF");
    EXPECT_EQ(Payload(path), two);
    EXPECT_EQ(Ids(path), "COMM SSND WVL4");
    EXPECT_EQ(LayoutOf(path).leftover, 15);

    // None: the form ends behind the sound.
    EXPECT_TRUE(WriteUserChunk(path.c_str(), nullptr, 0, nullptr, 0));
    EXPECT_EQ(ReadFile(path).substr(0, 454), Form(Common(100) + Sound(samples)));
    EXPECT_EQ(Payload(path), "");
    EXPECT_TRUE(WriteUserChunk(path.c_str(), first, 1, nullptr, -3));
    EXPECT_EQ(Payload(path), Chunk("one ", a));
    EXPECT_FALSE(WriteUserChunk((folder / "missing.aif").c_str(), first, 1, nullptr, 0));
}

TEST_F(UserChunk, OddSizesAreFollowedWithAndWithoutPadByte) {
    const std::string samples = Noise(4000);
    const std::string odd = Chunk("ANNO", "odd"), pad(1, '\0');
    for (const std::string& gap : {std::string(), pad}) {
        WriteFile(path, Form(Common(1000) + odd + gap + Sound(samples) + Chunk("(c) ", "x") + gap));
        ASSERT_EQ(Put(path, {Sub("KEY ", value)}), Result::done);
        EXPECT_EQ(ReadFile(path), Form(Common(1000) + odd + gap + Sound(samples) + Chunk("(c) ", "x") + gap +
                                       Chunk("WVL4", Chunk("KEY ", value))));
        EXPECT_EQ(Ids(path), "COMM ANNO SSND (c)  WVL4");
    }
    // A pad byte that is not zero, as careless programs write it.
    WriteFile(path, Form(Common(1000) + odd + "\x7F" + Sound(samples)));
    EXPECT_EQ(Ids(path), "COMM ANNO SSND");
}

/// The IDs as our own family finds them: it steps over no pad bytes.
std::string FamilyIds(const std::string& path) {
    const std::string file = ReadFile(path);
    std::string ids;
    for (std::size_t at = 12; at + 8 <= file.size();) {
        ids += (ids.empty() ? "" : " ") + file.substr(at, 4);
        at += 8 + LoadBigEndian32(reinterpret_cast<const unsigned char*>(&file[at + 4]));
    }
    return ids;
}

TEST_F(UserChunk, ChunksBehindTheUserChunkSurviveEveryPut) {
    const std::string samples = Noise(4000), tail = Chunk("NAME", "song") + Chunk("ID3 ", "tags");
    const std::string head = Common(1000) + Sound(samples);
    const std::string old = Chunk("WVL4", Chunk("KEY ", Noise(32)));
    const std::string oldPadded = Chunk("WVL4", Chunk("KEY ", Noise(31))) + std::string(1, '\0');
    const std::string sizes[] = {Noise(32, 2), Noise(15, 3), Noise(31, 4), Noise(24, 5), Noise(500, 6), ""};
    for (int i = 0; i < 12; ++i) {
        const std::string& data = sizes[i / 2];
        WriteFile(path, Form(head + (i % 2 == 0 ? old : oldPadded) + tail));
        PutKey(data);
        const AiffLayout layout = LayoutOf(path);
        ASSERT_NE(layout.Find(FourCharacterCode("NAME")), nullptr) << data.size();
        const std::string file = ReadFile(path);
        EXPECT_EQ(file.substr(12, head.size()), head);
        // Other programs step from even place to even place.
        for (const AiffChunk& chunk : layout.chunks)
            EXPECT_EQ(chunk.position % 2, 0) << data.size();
        EXPECT_NE(FamilyIds(path).find("NAME ID3 "), std::string::npos) << FamilyIds(path) << data.size();
        const auto name = static_cast<std::size_t>(layout.Find(FourCharacterCode("NAME"))->position);
        EXPECT_EQ(file.substr(name, tail.size()), tail);
        EXPECT_EQ(Put(path, {}), Result::done);
        EXPECT_EQ(Payload(path), "");
        EXPECT_NE(Ids(path).find("NAME ID3 "), std::string::npos);
    }
}

TEST_F(UserChunk, ChunksThatOthersAppendedBehindTheFormAreKept) {
    const std::string head = Common(16) + Sound(Noise(64)), tags = Chunk("ID3 ", "tags!") + Chunk("XTRA", "");
    const std::string first = Noise(100, 2), second = Noise(30, 3);
    const auto user = [](const std::string& data) { return Chunk("WVL4", Chunk("KEY ", data)); };
    const std::string begun[] = {
        Form(head + user(first)) + tags,                                     // behind a user chunk,
        Form(head + user(second)) + user(first).substr(46) + tags,           // behind what a longer one left,
        Form(head) + user(first) + tags,                                     // behind one that was removed,
        Form(head + Chunk("FLLR", second)) + user(first).substr(46) + tags}; // behind what once was one
    for (const std::string& bytes : begun) {
        for (const std::size_t size : {0U, 2U, 22U, 30U, 100U, 101U, 300U}) {
            WriteFile(path, bytes + std::string(size % 4, '\0')); // some fill files up with zeros
            EXPECT_NE(Ids(path).find("ID3  XTRA"), std::string::npos) << Ids(path);
            const std::string data(size, 'd');
            for (int i = 0; i < 2; ++i) { // the second finds what the first made of it
                PutKey(data);
                const std::string now = ReadFile(path);
                EXPECT_EQ(now.substr(12, head.size()), head);
                EXPECT_NE(now.find(tags), std::string::npos) << size;
                EXPECT_NE(Ids(path).find("ID3  XTRA"), std::string::npos) << size << Ids(path);
                EXPECT_NE(FamilyIds(path).find("WVL4"), std::string::npos) << size << FamilyIds(path);
                EXPECT_EQ(LayoutOf(path).tail, AiffLayout::Tail::clean);
            }
        }
    }
    // However long what was appended is; and where nobody could tell the chunks apart, nothing is written.
    const std::string apart = begun[1].substr(0, begun[1].size() - tags.size());
    WriteFile(path, apart + "APPL" + Big32(70 << 20));
    if (Lengthen(path, static_cast<std::int64_t>(apart.size()) + (70 << 20)))
        std::ofstream(path, std::ios::app | std::ios::binary) << Noise(8);
    for (int i = 0; i < 2; ++i) {
        PutKey(second + second);
        EXPECT_EQ(Ids(path), "COMM SSND WVL4 FLLR APPL");
    }
    std::string crowd = begun[1];
    for (int i = 0; i < 70000; ++i)
        crowd += Chunk("XTRA", "");
    WriteFile(path, crowd);
    EXPECT_EQ(Put(path, {}), Result::damaged);
    EXPECT_EQ(ReadFile(path), crowd);
    // A sub-chunk that was removed does not come back as a chunk, and what is appended then is kept too.
    WriteFile(path, Form(head));
    ASSERT_EQ(Put(path, {Sub("KEY ", value), Sub("GONE", first)}), Result::done);
    ASSERT_EQ(Put(path, {Sub("KEY ", value)}), Result::done);
    EXPECT_EQ(Ids(path), "COMM SSND WVL4");
    WriteFile(path, ReadFile(path) + tags);
    EXPECT_EQ(Ids(path), "COMM SSND WVL4 ID3  XTRA");
    EXPECT_EQ(LayoutOf(path).leftover, 110);
}

TEST_F(UserChunk, ChangesAtOnceLoseNothing) {
    WriteFile(path, Form(Common(16) + Sound(Noise(64)) + Chunk("NAME", "song")));
    constexpr std::uint32_t processes = 4, changes = 25;
    InProcesses(processes, [&](std::uint32_t process) {
        for (std::uint32_t i = 0; i < changes; ++i) {
            const std::string text(i, 'v');
            const KVBFILECHUNKINFO sub{process << 8 | i, i, BytesOf(text).data()};
            const auto add = [&](std::vector<KVBFILECHUNKINFO>& subs) { subs.push_back(sub); };
            if (ChangeUserChunk(path.c_str(), add) != Result::done) return false;
        }
        return true;
    });
    const std::string payload = Payload(path);
    const auto subs = ParseUserChunk(BytesOf(payload));
    ASSERT_TRUE(subs.has_value());
    EXPECT_EQ(subs->size(), processes * changes);
    EXPECT_NE(Ids(path).find("NAME"), std::string::npos);
}

TEST_F(UserChunk, SizesAndCountsThatTheFileDoesNotBearOutArePutRight) {
    const std::string samples = Noise(64), user = Chunk("WVL4", Chunk("KEY ", value));
    std::vector<std::string> wrong = {Form(Common(1000) + Sound(samples)).replace(42, 4, Big32(4008)),
                                      "FORM" + Big32(30) + "AIFF" + Common(16) + Sound(samples),
                                      "FORM" + Big32(0xFFFFFFFF) + "AIFF" + Common(0) + "SSND" +
                                          Big32(0xFFFFFFFF) + std::string(8, '\0') + samples};
    for (const std::uint32_t frames : {0U, 1U, 15U, 17U, 4000U})
        wrong.push_back(Form(Common(frames) + Sound(samples)));
    for (const std::string& bytes : wrong) {
        WriteFile(path, bytes);
        ASSERT_EQ(Put(path, {Sub("KEY ", value)}), Result::done);
        EXPECT_EQ(ReadFile(path), Form(Common(16) + Sound(samples) + user));
    }
    WriteFile(path, Form(Common(16, 12) + Sound(samples))); // 12 bits take two bytes
    ASSERT_EQ(Put(path, {Sub("KEY ", value)}), Result::done);
    EXPECT_EQ(ReadFile(path), Form(Common(16, 12) + Sound(samples) + user));
}

TEST_F(UserChunk, ReadingGivesPartsAndCarriesTheId3LengthOneWay) {
    WriteFile(path, Form(Common(1) + Chunk("ID3 ", "first") + Sound("abcd") + Chunk("WVL4", "0123456789") +
                         Chunk("ID3 ", "second")));
    CAsyncFileIO2 file;
    ASSERT_EQ(file.Open(path.c_str(), CAsyncFileIO::read), 0);
    unsigned char buf[16] = {}, id3[64] = {};
    int id3Len = 4;
    EXPECT_EQ(file.ReadUserChunk(buf, 4, id3, id3Len), 4);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buf)), "0123");
    EXPECT_EQ(std::string(reinterpret_cast<char*>(id3)), "seco"); // the last chunk of that kind counts
    EXPECT_EQ(id3Len, 4);
    id3Len = 64;
    EXPECT_EQ(file.ReadUserChunk(nullptr, 0, id3, id3Len), 10);
    EXPECT_EQ(id3[4], 0); // the payload counts as four bytes long since the first call
    EXPECT_EQ(file.ReadUserChunk(nullptr, 0, nullptr, id3Len), 10); // and now as 64, although there are six
    EXPECT_EQ(file.ReadUserChunk(nullptr, 0, id3, id3Len), 10);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(id3)), "second");
    char sound[8] = {};
    EXPECT_EQ(file.Read(sound, 8), 4);
    EXPECT_STREQ(sound, "abcd");
}

TEST_F(UserChunk, ASoundIsRecordedReadAndGrownInPlace) {
    const std::string samples = Noise(1000);
    CAsyncFileIO file;
    ASSERT_EQ(file.Open(path.c_str(), CAsyncFileIO::create), 0);
    EXPECT_EQ(file.WriteAsync(samples.data(), 600), 600);
    file.Close();
    EXPECT_EQ(ReadFile(path), Form(Common(150) + Sound(samples.substr(0, 600))));
    ASSERT_EQ(file.Open(path.c_str(), CAsyncFileIO::readWrite), 0);
    EXPECT_EQ(file.Seek64(2, 0), 0);
    EXPECT_EQ(file.Seek(1, 1), -1);
    EXPECT_EQ(file.Write(samples.data() + 600, 400), 400);
    EXPECT_EQ(file.GetLength(), 1000);
    file.Close();
    const std::string whole = Form(Common(250) + Sound(samples));
    EXPECT_EQ(ReadFile(path), whole);
    // With a chunk behind it the sound can be changed but not grown.
    ASSERT_EQ(Put(path, {Sub("KEY ", value)}), Result::done);
    ASSERT_EQ(file.Open(path.c_str(), CAsyncFileIO::readWrite), 0);
    EXPECT_EQ(file.Seek(2, -4), 0);
    EXPECT_EQ(file.Write("wxyzabcd", 8), 4);
    file.Close();
    EXPECT_EQ(ReadFile(path).substr(50 + 1000, 4), "wxyz");
    EXPECT_EQ(Payload(path), Chunk("KEY ", value));
    ASSERT_EQ(file.Open(path.c_str(), CAsyncFileIO::read), 0);
    EXPECT_EQ(file.Write("no", 2), 0);
    EXPECT_EQ(file.Open((folder / "none.aif").c_str(), CAsyncFileIO::read), -1);
}

TEST_F(UserChunk, DamagedFilesAreLeftAsTheyAre) {
    const std::string samples = Noise(64);
    const std::pair<std::string, Result> cases[] = {
        {"", Result::notAiff},
        {"FORM", Result::notAiff},
        {"RIFF" + Big32(4) + "WAVE", Result::notAiff},
        {"FORM" + Big32(4) + "AIFC", Result::notAiff},
        {Form(Chunk("COMM", std::string(17, '\0')) + Sound(samples)), Result::damaged},
        {Form(Common(16) + Sound(samples) + "NAME" + Big32(0xFFFFFFFF) + "x"), Result::damaged},
        {Form(Common(16) + Sound(samples) + "\x01\x02\x03"), Result::damaged},
    };
    for (const auto& [bytes, result] : cases) {
        WriteFile(path, bytes);
        EXPECT_EQ(Put(path, {Sub("KEY ", value)}), result) << bytes;
        EXPECT_EQ(ReadFile(path), bytes);
        EXPECT_TRUE(result != Result::notAiff || Payload(path) == "cannot open");
    }
    KVBFILECHUNKINFO nothing{1, 5, nullptr};
    WriteFile(path, Form(Common(16) + Sound(samples)));
    EXPECT_EQ(Put(path, {nothing}), Result::tooLarge);
    const KVBFILECHUNKINFO large{1, 0x80000000U, BytesOf(samples).data()};
    EXPECT_EQ(Put(path, {large, large}), Result::tooLarge); // refused before a byte of it is looked at
    EXPECT_EQ(ReadFile(path), Form(Common(16) + Sound(samples)));
}

TEST_F(UserChunk, AnEarlyUserChunkAndAFileWithoutSoundAreHandledToo) {
    const std::string samples = Noise(64), longer(100, 'l');
    // A form that ends behind the user chunk, with the sound outside it, is not believed.
    const std::string inForm = Form(Common(16) + Chunk("WVL4", Chunk("KEY ", "1234")));
    WriteFile(path, inForm + Sound(samples));
    for (const std::string& data : {value, longer, std::string("1")}) {
        PutKey(data);
        EXPECT_EQ(LayoutOf(path).soundSize, 64);
        EXPECT_NE(ReadFile(path).find(samples), std::string::npos);
    }
    WriteFile(path, Form(Common(0)));
    for (const std::string& data : {longer, value, std::string("1"), longer})
        PutKey(data);
    EXPECT_EQ(Put(path, {}), Result::done);
    EXPECT_EQ(Payload(path), "");
    const std::string cut = Form(Common(0) + Chunk("SSND", "x"));
    WriteFile(path, cut);
    EXPECT_EQ(Put(path, {Sub("KEY ", value)}), Result::damaged);
    EXPECT_EQ(ReadFile(path), cut);
}

TEST_F(UserChunk, SoundsAboveFourGibibytesAreWalked) {
    constexpr std::int64_t soundSize = 5LL * 1024 * 1024 * 1024 + 4;
    constexpr auto frames = static_cast<std::uint32_t>(soundSize / 4);
    if (!WriteLongSound(path, soundSize, Common(frames))) GTEST_SKIP() << "no sparse files here";
    PutKey(value);
    EXPECT_EQ(std::filesystem::file_size(path), static_cast<std::uintmax_t>(54 + soundSize + 8 + 13));
    PutKey(value + value); // over the old one
    const AiffLayout layout = LayoutOf(path);
    EXPECT_EQ(layout.soundSize, soundSize);
    EXPECT_EQ(layout.common.frames, frames);
    CAsyncFileIO file;
    ASSERT_EQ(file.Open(path.c_str(), CAsyncFileIO::readWrite), 0);
    EXPECT_EQ(file.Seek64(0, soundSize - 4), 0);
    EXPECT_EQ(file.Write("tail", 4), 4);
    file.Close();
    EXPECT_EQ(Payload(path), Chunk("KEY ", value + value));
    CFile raw;
    ASSERT_TRUE(raw.Open(path.c_str(), CFile::modeRead));
    const long long wrapped = 54 + soundSize - kSizeWrap;
    ASSERT_TRUE(raw.Seek(wrapped, CFile::begin));
    EXPECT_EQ(Analyze64(&raw, wrapped), 54 + soundSize);
    EXPECT_EQ(raw.GetPosition(), 54 + soundSize);
    EXPECT_EQ(Analyze64(&raw, 60), raw.GetLength()); // nothing there, and nothing 4 GiB further
    EXPECT_EQ(Analyze64(&raw, raw.GetLength() + 5), raw.GetLength() + 5);
}

TEST_F(UserChunk, FrameCountsThatWrapLikeTheSizeAreSeenThrough) {
    const std::string tags = Chunk("ID3 ", "tags");
    const std::pair<std::int64_t, std::string> sounds[] = {{kSizeWrap + 100, Common(100, 8, 1)},
                                                           {4 * kSizeWrap + 400, Common(100)},
                                                           {8 * kSizeWrap + 400, Common(100)}};
    for (const auto& [size, common] : sounds) {
        for (const std::string& behind : {std::string(), tags}) {
            if (!WriteLongSound(path, size, common, behind)) GTEST_SKIP() << "no sparse files here";
            EXPECT_EQ(LayoutOf(path).soundSize, size);
            const std::uintmax_t before = std::filesystem::file_size(path);
            PutKey(value);
            EXPECT_EQ(std::filesystem::file_size(path), before + 21);
            EXPECT_EQ(Ids(path), behind.empty() ? "COMM SSND WVL4" : "COMM SSND ID3  WVL4");
        }
    }
}

TEST_F(UserChunk, UserChunksAboveTwoGibibytesAreNotChanged) {
    const std::string begun = "FORM" + Big32(0x90000000U + 54) + "AIFF" + Common(1) + Sound("abcd") + "WVL4" +
                              Big32(0x90000000U) + "KEY " + Big32(0x90000000U - 8);
    WriteFile(path, begun);
    if (!Lengthen(path, 66 + 0x90000000LL)) GTEST_SKIP() << "no sparse files here";
    const auto add = [&](std::vector<KVBFILECHUNKINFO>& subs) { subs.push_back(Sub("NEW ", value)); };
    EXPECT_EQ(ChangeUserChunk(path.c_str(), add), Result::unreadable);
    EXPECT_EQ(std::filesystem::file_size(path), 66 + 0x90000000U);
    CFile file;
    std::string now(begun.size(), '\0');
    ASSERT_TRUE(file.Open(path.c_str(), CFile::modeRead) && ReadAt(file, 0, now.data(), now.size()));
    EXPECT_EQ(now, begun);
    file.Close();
    // And none is made that could not be read again.
    WriteFile(path, Form(Common(1) + Sound("abcd")));
    const KVBFILECHUNKINFO large{1, 0x7FFFFFFFU, BytesOf(value).data()};
    EXPECT_EQ(Put(path, {large}), Result::tooLarge);
}

TEST_F(UserChunk, SubChunksAreTakenApartOrRefusedWhole) {
    const std::string payload = Chunk("one ", "abc") + Chunk("two ", "");
    const auto subs = ParseUserChunk(BytesOf(payload));
    ASSERT_TRUE(subs && subs->size() == 2);
    EXPECT_EQ((*subs)[0].id, FourCharacterCode("one "));
    EXPECT_EQ((*subs)[0].size, 3U);
    EXPECT_EQ((*subs)[1].size, 0U);
    EXPECT_TRUE(ParseUserChunk({})->empty());
    const auto padded = ParseUserChunk(BytesOf(payload + std::string(7, '\0')));
    ASSERT_TRUE(padded.has_value()) << "filled up by another program";
    EXPECT_EQ(padded->size(), subs->size());
    EXPECT_FALSE(ParseUserChunk(BytesOf(payload + std::string("\0\1", 2))));
    for (std::size_t cut : {1U, 7U, 10U, 12U, 18U})
        EXPECT_FALSE(ParseUserChunk(BytesOf(payload).first(cut))) << cut;
}

TEST_F(UserChunk, FilesOfTheSoundFileLibraryKeepTheirSound) {
    for (const int format : {SF_FORMAT_PCM_S8, SF_FORMAT_PCM_16, SF_FORMAT_PCM_24, SF_FORMAT_PCM_32}) {
        for (const int frames : {1001, 1002}) {
            SndfileHandle file(path, SFM_WRITE, SF_FORMAT_AIFF | format, 1, 48000);
            SF_CUES cues{};
            cues.cue_count = 2;
            cues.cue_points[0] = {1, 10, 0, 0, 0, 10, "in"};
            cues.cue_points[1] = {2, 500, 0, 0, 0, 500, "chorus"};
            file.command(SFC_SET_CUE, &cues, sizeof cues);
            file.setString(SF_STR_TITLE, "odd");
            const std::string noise = Noise(static_cast<std::size_t>(frames) * sizeof(int));
            file.writef(reinterpret_cast<const int*>(noise.data()), frames);
            file.setString(SF_STR_COMMENT, "behind the sound");
            file = {};
            const std::vector<int> samples = SamplesOf(path);
            ASSERT_GT(samples.size(), static_cast<std::size_t>(frames));
            const std::string ids = Ids(path);
            for (const std::size_t size : {5U, 300U, 2U, 77U}) {
                PutKey(Noise(size));
                EXPECT_EQ(SamplesOf(path), samples);
                EXPECT_EQ(Ids(path), ids + " WVL4");
            }
        }
    }
}

} // namespace
} // namespace vocafade::test
