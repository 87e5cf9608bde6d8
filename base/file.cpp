// SPDX-License-Identifier: MIT
#include "base/file.h"

#include "base/file_replacement.h"
#include "base/path.h"

#include <cerrno>
#include <string_view>
#include <system_error>

namespace vocafade {
namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

} // namespace

std::string PathFromUrlOrPath(const char* urlOrPath) {
    constexpr std::string_view scheme = "file://";
    std::string_view text = urlOrPath != nullptr ? urlOrPath : "";
    if (text.substr(0, scheme.size()) != scheme) return std::string(text);
    text.remove_prefix(scheme.size());
    const std::size_t path = text.find('/'); // a host name may stand before the path
    text.remove_prefix(path == std::string_view::npos ? text.size() : path);

    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low >= 0) {
            decoded += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            decoded += text[i];
        }
    }
#if defined(_WIN32)
    // "/C:/folder" is what a URL makes of a drive.
    if (decoded.size() >= 3 && decoded[2] == ':') decoded.erase(0, 1);
#endif
    return decoded;
}

CFile::~CFile() {
    if (stream_ != nullptr) std::fclose(stream_);
}

void CFile::Close() {
    if (stream_ != nullptr) std::fclose(stream_);
    stream_ = nullptr;
}

std::size_t CFile::Read(void* buffer, std::size_t count) {
    if (stream_ == nullptr || count == 0) return 0;
    if (last_ == Last::write) ::fseeko(stream_, 0, SEEK_CUR); // the C library wants a seek between the two
    last_ = Last::read;
    return std::fread(buffer, 1, count, stream_);
}

bool CFile::Write(const void* buffer, std::size_t count) {
    if (stream_ == nullptr) return false;
    if (last_ == Last::read) ::fseeko(stream_, 0, SEEK_CUR);
    last_ = Last::write;
    // The C library takes no null pointer, not even for no bytes.
    if (count > 0 && std::fwrite(buffer, 1, count, stream_) != count) failed_ = true;
    return !failed_;
}

bool CFile::Seek(std::int64_t offset, SeekPosition from) {
    if (stream_ == nullptr) return false;
    constexpr int whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    last_ = Last::none;
    return ::fseeko(stream_, offset, whence[from]) == 0;
}

std::int64_t CFile::GetPosition() const { return stream_ != nullptr ? ::ftello(stream_) : 0; }

bool MakeFolders(const std::string& folder) {
    std::error_code error, ignored;
    const std::filesystem::path path = PathOf(folder);
    std::filesystem::create_directories(path, error);
    if (std::filesystem::is_directory(path, ignored)) return true;
    errno = error ? error.default_error_condition().value() : ENOTDIR;
    return false;
}

} // namespace vocafade
