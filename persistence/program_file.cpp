// SPDX-License-Identifier: MIT
#include "persistence/program_file.h"

#include "base/file.h"
#include "base/path.h"
#include "base/text_encoding.h"
#include "persistence/text_streams.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace vocafade {
namespace {

namespace fs = std::filesystem;

constexpr char kExtension[] = ".PGM";

/// Reads a line of at most `limit` bytes into `line`, which stays as it was when the file is at its end.
/// `getline` alone would leave the end of an older, longer line behind a last line without a line end.
bool ReadLine(Myifstream& stream, char* line, unsigned limit) {
    if (stream.eof()) return false;
    std::array<char, kBodyLimit + 1> buffer{};
    stream.getline(buffer.data(), std::min(limit, kBodyLimit));
    std::memcpy(line, buffer.data(), std::strlen(buffer.data()) + 1); // at most `limit` bytes and the NUL
    return true;
}

bool SameButForCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [lower](char x, char y) { return lower(x) == lower(y); });
}

} // namespace

ProgramFileContent LoadPGMFileBody(const char* path, char* body) {
    Myifstream stream;
    stream.open(path);
    if (stream.fail()) return ProgramFileContent::noFile;
    if (!ReadLine(stream, body, kLineLimit)) return ProgramFileContent::empty;
    if (std::strncmp(body, kProgramFileHeader, sizeof kProgramFileHeader - 1) != 0)
        return ProgramFileContent::noHeader;
    return ReadLine(stream, body, kBodyLimit) ? ProgramFileContent::body : ProgramFileContent::noBody;
}

int StrTerminateTab(const char* src, int pos, char* dst) {
    dst[0] = 0;
    if (pos < 0) return -1;
    const auto start = static_cast<std::size_t>(pos);
    if (::strnlen(src, start) < start) return -1;
    const std::string_view text(src + start, ::strnlen(src + start, kFieldLimit));
    const std::size_t tab = text.find('\t');
    const std::string_view field = text.substr(0, tab);
    field.copy(dst, field.size());
    dst[field.size()] = 0;
    return tab == std::string_view::npos ? -1 : static_cast<int>(start + tab + 1);
}

std::string ProgramFilePath(const std::string& folder, const std::string& name) {
    const bool backslashes = folder.find('\\') != std::string::npos && folder.find('/') == std::string::npos;
    std::string path = folder + (backslashes ? "\\" : "/") + name + kExtension;
    if (CFileFind().FindFile(path.c_str())) return path;
    const std::string wanted[] = {name + kExtension, CheckSJISAndToUFT8(name.c_str()).str() + kExtension};
    std::error_code error;
    fs::directory_iterator entry(PathOf(PathFromUrlOrPath(folder.c_str())), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const std::string candidate = TextOf(entry->path().filename());
        for (const std::string& file : wanted) {
            if (SameButForCase(candidate, file)) return TextOf(entry->path());
        }
    }
    return path;
}

} // namespace vocafade
