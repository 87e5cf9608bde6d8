// SPDX-License-Identifier: MIT
// The older program lists and program files, whole and damaged.
#include "base/text_encoding.h"
#include "effect/avocafade.h"
#include "effect/program_list.h"
#include "persistence/program_file.h"
#include "persistence/text_streams.h"
#include "tests/support/temp_folder.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace vocafade::test {
namespace {

using Outcome = ProgramListImport::Outcome;

const std::string kList = std::string(kProgramListHeader) + " 1.0\r\n";
const std::string kFile = std::string(kProgramFileHeader) + "\r\n";
const float kLoFreq400 = ValToNormalizeValue(kParameterLoFreq, 400.0f);
const float kHiFreq9000 = ValToNormalizeValue(kParameterHiFreq, 9000.0f);

/// `value` hundredths (or Hz) as a file holds them.
std::string Fixed(int value) { return std::to_string(value * 65536); }

class ProgramList : public WithSettings {
  protected:
    void List(const std::string& text) { WriteFile(folder_ / "PROGRAM.LST", text); }
    void Program(const std::string& file, const std::string& body) {
        WriteFile(folder_ / file, kFile + body);
    }
    ProgramListImport Import() {
        return ImportProgramList(programs_, folder_ / "PROGRAM.LST", folder_.path().string());
    }
    float Value(std::size_t index, ParameterIndex parameter) const {
        return programs_[index].values[parameter];
    }

    TempFolder folder_;
    ProgramSet programs_;
};

TEST_F(ProgramList, FillsNamesAndThreeParametersOfTheEffect) {
    List(kList + "2\nHall\r\nRoom\n");
    Program("Hall.PGM", "0\t26214400\t6553600\t6553600\r\n");
    Program("Room.PGM", "9\t" + Fixed(5) + "\t" + Fixed(20) + "00\t" + Fixed(320) + "0\t77\t88");
    AVocafade effect(nullptr);
    effect.Convert(folder_ / "PROGRAM.LST", folder_.path().string());
    const AVocafadeProgram& hall = effect.Program(0);
    EXPECT_STREQ(hall.name, "Hall");
    EXPECT_EQ(hall.values[kParameterLoFreq], kLoFreq400);
    EXPECT_EQ(hall.values[kParameterHiFreq], 0.0f) << "1 Hz is below the range";
    EXPECT_EQ(hall.values[kParameterPosition], ValToNormalizeValue(kParameterPosition, 1.0f));
    EXPECT_EQ(hall.values[kParameterOnOff], 1.0f);
    const AVocafadeProgram& room = effect.Program(1);
    EXPECT_STREQ(room.name, "Room");
    EXPECT_EQ(room.values[kParameterLoFreq], 0.0f);
    EXPECT_EQ(room.values[kParameterHiFreq], ValToNormalizeValue(kParameterHiFreq, 20.0f));
    EXPECT_EQ(room.values[kParameterPosition], ValToNormalizeValue(kParameterPosition, 32.0f));
    EXPECT_STREQ(effect.Program(2).name, "Empty");
    effect.Convert(); // where nothing is, nothing changes
    EXPECT_STREQ(effect.Program(0).name, "Hall");
}

TEST_F(ProgramList, EmptyFieldsLeaveTheValuesAlone) {
    for (const std::string body : {"\t\t\t", "26214400", "", " 1\t 1\t 1\t 1", "0\t\t \t"}) {
        AVocafadeProgram program;
        ApplyProgramBody(program, body.c_str());
        EXPECT_EQ(program, programs_[0]) << body;
    }
    AVocafadeProgram program;
    ApplyProgramBody(program, "\t-99999999999999999999\t99999999999999999999\tx");
    EXPECT_EQ(program.values[kParameterLoFreq], 0.0f);
    EXPECT_EQ(program.values[kParameterHiFreq], ValToNormalizeValue(kParameterHiFreq, 327.68f));
    EXPECT_EQ(program.values[kParameterPosition], 0.0f);
}

TEST_F(ProgramList, AMissingFileGetsTheValuesOfTheProgramBefore) {
    List(kList + "3\nMissing\nHall\nGone\n");
    Program("Hall.PGM", "0\t" + Fixed(400) + "\n");
    const ProgramListImport import = Import();
    EXPECT_EQ(import.outcome, Outcome::imported);
    ASSERT_EQ(import.unread.size(), 2U);
    EXPECT_EQ(import.unread[0].name, "Missing");
    EXPECT_EQ(import.unread[0].content, ProgramFileContent::noFile);
    EXPECT_STREQ(programs_[0].name, "Missing");
    EXPECT_EQ(Value(2, kParameterLoFreq), kLoFreq400);
    EXPECT_STREQ(programs_[2].name, "Gone");
    // A file without the header is a body itself, even when it is only the one line.
    List(kList + "1\nBare\n");
    WriteFile(folder_ / "Bare.PGM", "0\t\t" + Fixed(9000) + "\t" + Fixed(6400));
    EXPECT_EQ(Import().unread.at(0).content, ProgramFileContent::noHeader);
    EXPECT_EQ(Value(0, kParameterPosition), ValToNormalizeValue(kParameterPosition, 64.0f));
    EXPECT_EQ(Value(0, kParameterHiFreq), ValToNormalizeValue(kParameterHiFreq, 90.0f));
}

TEST_F(ProgramList, AListThatEndsEarlyRepeatsItsLastName) {
    for (const std::string end : {"\n", "", "\r\n"}) {
        List(kList + "3\nA much longer name\nHall" + end);
        const ProgramListImport import = Import();
        EXPECT_TRUE(import.listEndedEarly);
        EXPECT_STREQ(programs_[1].name, "Hall");
        EXPECT_STREQ(programs_[2].name, "Hall");
    }
}

TEST_F(ProgramList, ManyProgramsAndLongNamesStayInTheirBounds) {
    const std::string longName(60, 'n');
    const std::string japanese = std::string(22, 'j') + "\x83\x5C\x83\x5C";
    List(kList + "2147483647\n" + longName + "\n" + japanese + "\nlast\n");
    const ProgramListImport import = Import();
    EXPECT_EQ(import.imported, kProgramCount);
    EXPECT_EQ(import.listed, 2147483647);
    EXPECT_EQ(import.cutNames.size(), 2U);
    EXPECT_EQ(std::string(programs_[0].name), longName.substr(0, 23));
    EXPECT_EQ(std::string(programs_[1].name), std::string(22, 'j') + "\x83");
    EXPECT_STREQ(CheckSJISAndToUFT8(programs_[1].name), (std::string(22, 'j') + "\uFFFD").c_str());
    EXPECT_STREQ(programs_[63].name, "last");
    // A line above its limit goes on as the next one.
    List(kList + "2\n" + std::string(80, 'a') + "tail\nlast\n");
    Import();
    EXPECT_STREQ(programs_[1].name, "tail");
}

TEST_F(ProgramList, WrongListsChangeNothing) {
    const std::pair<std::string, Outcome> cases[] = {
        {"", Outcome::notAList},
        {"KVB5.0 EFFECT PROGRAM LISZ\n1\nHall\n", Outcome::notAList},
        {"\n" + kList + "1\nHall\n", Outcome::notAList},
        {kList, Outcome::noPrograms},
        {kList + "0\nHall\n", Outcome::noPrograms},
        {kList + "-3\nHall\n", Outcome::noPrograms},
        {kList + "none\nHall\n", Outcome::noPrograms}};
    const ProgramSet before = programs_;
    EXPECT_EQ(Import().outcome, Outcome::noList);
    for (const auto& [text, outcome] : cases) {
        List(text);
        EXPECT_EQ(Import().outcome, outcome) << text;
        EXPECT_EQ(programs_, before) << text;
    }
}

TEST_F(ProgramList, FilesAreFoundAsTheirOldSystemFoundThem) {
    EXPECT_EQ(ProgramFilePath(kProgramFileFolder, "Hall"), "D:\\VSTEFX\\EFX\\Delay\\\\Hall.PGM");
    const std::string folder = folder_.path().generic_string();
    EXPECT_EQ(ProgramFilePath(folder, "Hall"), folder + "/Hall.PGM");
    WriteFile(folder_ / "HALL.pgm", "x");
#if !defined(_WIN32) // where both are the same
    EXPECT_EQ(ProgramFilePath(folder, "Hall"), folder + "/HALL.pgm");
#endif
    WriteFile(folder_ / "Hall.PGM", "x");
    EXPECT_EQ(ProgramFilePath(folder, "Hall"), folder + "/Hall.PGM") << "the exact name first";
    WriteFile(folder_ / "\xE3\x82\xBD.PGM", "x");
    EXPECT_EQ(ProgramFilePath(folder, "\x83\x5C"), folder + "/\xE3\x82\xBD.PGM");
}

TEST_F(ProgramList, FieldsAreCutAtTabs) {
    using Field = std::pair<int, std::string>;
    const auto fieldAt = [](const std::string& text, int position) {
        char field[kFieldLimit + 1];
        const int next = StrTerminateTab(text.c_str(), position, field);
        return Field(next, field);
    };
    EXPECT_EQ(fieldAt("ab\t\tcd", 0), Field(3, "ab"));
    EXPECT_EQ(fieldAt("ab\t\tcd", 3), Field(4, ""));
    EXPECT_EQ(fieldAt("ab\t\tcd", 4), Field(-1, "cd"));
    for (const int position : {-1, 6, 7, 1000})
        EXPECT_EQ(fieldAt("ab\t\tcd", position), Field(-1, ""));
    EXPECT_EQ(fieldAt(std::string(5000, 'x'), 0), Field(-1, std::string(kFieldLimit, 'x')));
    EXPECT_EQ(fieldAt("a\t", 0), Field(2, "a"));
    EXPECT_EQ(fieldAt("a\t", 2), Field(-1, ""));
}

TEST_F(ProgramList, LinesKeepTheirQuirks) {
    WriteFile(folder_ / "lines", "one\r\ntwo;three\n\r\nend");
    Myifstream stream;
    stream.open((folder_ / "missing").c_str());
    EXPECT_NE(stream.rdstate() & 6U, 0U);
    stream.open((folder_ / "lines").c_str(), Myifstream::in | Myifstream::binary);
    ASSERT_EQ(stream.rdstate(), 0U);
    char line[12] = "xxxxxxxxxxx";
    const auto next = [&](int size, char end = '\n') {
        stream.getline(line, size, end);
        return std::string(line);
    };
    EXPECT_EQ(next(10), "one");
    EXPECT_EQ(line[4], '\n') << "the CR gave way, not the LF";
    EXPECT_EQ(next(10, ';'), "two");
    EXPECT_EQ(next(3), "thr") << "the NUL stands behind the limit";
    EXPECT_EQ(stream.tellg(), 12);
    EXPECT_EQ(next(10), "ee");
    EXPECT_EQ(next(10), "");
    EXPECT_EQ(next(0), "");
    std::memcpy(line, "xxxxxxxxxxx", 12);
    EXPECT_EQ(next(10), "endxxxxxxx") << "the end of the file is no delimiter";
    EXPECT_TRUE(stream.eof());
    EXPECT_EQ(next(10), "endxxxxxxx");
    EXPECT_EQ(stream.get(), -1);
    stream.seekg(-3, 2);
    EXPECT_EQ(stream.get(), 'e');
    stream.seekg(1, 1);
    stream.get(line, 10);
    EXPECT_STREQ(line, "d");
    stream.seekg(0, 0);
    stream.read(line, 3);
    EXPECT_EQ(std::string(line, 3), "one");
    stream.close();
    stream.open((folder_ / "new").c_str(), Myifstream::out | Myifstream::create);
    EXPECT_FALSE(stream.fail());
    EXPECT_TRUE(stream.Write("w", 1));
}

TEST_F(ProgramList, TokensEndAtBlanks) {
    Myistrstream stream(" \tone two\t x ", 13);
    char token[14], byte = 0;
    stream >> token;
    EXPECT_STREQ(token, "one");
    stream >> byte;
    EXPECT_EQ(byte, 't');
    stream >> token;
    EXPECT_STREQ(token, "wo");
    EXPECT_EQ(stream.rdstate(), 0U);
    stream >> byte;
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(stream.rdstate(), Myistrstream::kUsedUp);
    stream >> token >> byte;
    EXPECT_STREQ(token, "");
    EXPECT_EQ(byte, '\0');
    Myistrstream cut("abcdef", 3);
    cut >> token;
    EXPECT_STREQ(token, "abc");
}

} // namespace
} // namespace vocafade::test
