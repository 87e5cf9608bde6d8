// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/environment.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <set>
#include <string>

namespace vocafade::test {

/// The path that a text in UTF-8 names. (On Linux any bytes.)
inline std::filesystem::path PathOfUtf8(const std::string& text) {
    return std::u8string(text.begin(), text.end());
}

/// A folder of a test's own, gone with its content at the end of the scope.
class TempFolder {
  public:
    TempFolder() {
        std::random_device random;
        do {
            const std::string name = "vocafade-test-" + std::to_string(random());
            path_ = std::filesystem::temp_directory_path() / name;
        } while (!std::filesystem::create_directory(path_));
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::string operator/(const std::string& name) const {
        const std::u8string path = (path_ / PathOfUtf8(name)).generic_u8string();
        return {path.begin(), path.end()};
    }

  private:
    std::filesystem::path path_;
};

inline std::string ReadFile(const std::string& path) {
    std::ifstream file(PathOfUtf8(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteFile(const std::string& path, const std::string& content) {
    std::ofstream(PathOfUtf8(path), std::ios::binary) << content;
}

/// The names in a folder, hidden ones too.
inline std::set<std::string> NamesIn(const std::filesystem::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

/// Makes all files of a folder an hour old.
inline void MakeOld(const std::filesystem::path& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.is_regular_file())
            std::filesystem::last_write_time(entry, std::filesystem::file_time_type::clock::now() -
                                                        std::chrono::hours(1));
}

/// A test with a preferences folder of its own.
class WithSettings : public ::testing::Test {
  protected:
    WithSettings() { SetVariable(kConfigurationVariable, settings / "config"); }

    std::string BankPath() const { return settings / "config/VocafadeDef.fxb"; }

    TempFolder settings;
};

} // namespace vocafade::test
