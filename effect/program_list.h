// SPDX-License-Identifier: MIT
#pragma once

#include "effect/program.h"
#include "persistence/program_file.h"

#include <string>
#include <vector>

namespace vocafade {

/// Where the tools that made the older formats kept them.
inline constexpr char kProgramListPath[] = "D:\\VSTEFX\\EFX\\Delay\\PROGRAM.LST";
inline constexpr char kProgramFileFolder[] = "D:\\VSTEFX\\EFX\\Delay\\";

/// A program of a list without a program file as it should be.
struct UnreadProgram {
    int index = 0;    ///< in the list, from 0
    std::string name; ///< Shift-JIS, as the list has it
    ProgramFileContent content = ProgramFileContent::noFile;
    int error = 0; ///< the system's, when there is no file
};

/// What an import met, for whoever wants to tell the user.
struct ProgramListImport {
    enum class Outcome {
        imported,
        noList,    ///< the list cannot be opened
        notAList,  ///< it does not begin as a list does
        noPrograms ///< it says that it has none
    };
    Outcome outcome = Outcome::noList;
    int listed = 0;                    ///< programs that the list says it has
    int imported = 0;                  ///< programs that were filled, at most 64
    std::vector<std::string> files;    ///< the program file of each program that was filled
    std::vector<UnreadProgram> unread; ///< those whose values are not from a body of their own
    std::vector<std::string> cutNames; ///< names longer than a record's 23 bytes
    bool listEndedEarly = false;       ///< the last name stands for those that are missing
};

/// [main-thread] Reads a program list and the program file of each name in it into the first records of
/// `programs`: the name, and LoFreq, HiFreq and Position where the file has them. A program whose file is
/// missing gets the values of the one before it. Stops after 64 programs, and cuts names to 23 bytes, through
/// a character of two bytes if need be.
ProgramListImport ImportProgramList(ProgramSet& programs, const std::string& listPath = kProgramListPath,
                                    const std::string& folder = kProgramFileFolder);

/// [any-thread] Puts the fields of a program file's body into `program`: tab-separated numbers in 16.16 fixed
/// point, of which fields 1 (LoFreq in Hz), 2 (HiFreq in hundredths) and 3 (Position in hundredths) are used,
/// unless they are empty or begin with a space.
void ApplyProgramBody(AVocafadeProgram& program, const char* body);

} // namespace vocafade
