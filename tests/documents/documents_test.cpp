// SPDX-License-Identifier: MIT
// The documents agree with the project: their links lead somewhere, nothing is left out of the index, and what they say
// of files, tests and parameters is so.
#include "effect/parameters.h"
#include "tests/support/temp_folder.h"

#include <cmath>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>

namespace vocafade::test {
namespace {

namespace fs = std::filesystem;
const fs::path kRoot = VOCAFADE_SOURCE;

/// Every document with its text, by its path from the root.
std::map<fs::path, std::string> Documents() {
    std::map<fs::path, std::string> documents;
    for (auto at = fs::recursive_directory_iterator(kRoot); at != fs::recursive_directory_iterator(); ++at) {
        const std::string name = at->path().filename().string();
        if (at->is_directory() && (name.front() == '.' || name == "build" || name == "demo-out"))
            at.disable_recursion_pending();
        else if (at->path().extension() == ".md")
            documents[fs::relative(at->path(), kRoot)] = ReadFile(at->path());
    }
    return documents;
}

/// Calls `use` with every match of `pattern` in `text`.
template <typename Use>
void ForEachMatch(const std::string& text, const char* pattern, Use use) {
    const std::regex expression(pattern);
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match)
        use(*match);
}

/// The name that a heading has as a link's target.
std::string Anchor(const std::string& heading) {
    std::string anchor = std::regex_replace(heading, std::regex("[^\\w -]"), "");
    for (char& letter : anchor)
        letter = letter == ' ' ? '-' : static_cast<char>(std::tolower(letter));
    return anchor;
}

TEST(Documents, LinksLeadSomewhereAndTheIndexIsWhole) {
    const auto documents = Documents();
    ASSERT_GE(documents.size(), 10U);
    std::set<fs::path> indexed;
    for (const auto& [path, text] : documents) {
        ForEachMatch(text, R"(\]\(([^)#\s]*)(#[^)\s]*)?\))", [&, &path = path](const std::smatch& link) {
            if (link.str(1).find("://") != std::string::npos) return;
            const fs::path target =
                link.length(1) == 0 ? path : (path.parent_path() / link.str(1)).lexically_normal();
            EXPECT_TRUE(fs::exists(kRoot / target)) << path << " links to " << link.str(1);
            if (path == "docs/README.md") indexed.insert(target);
            if (link.length(2) == 0) return;
            bool found = false;
            ForEachMatch(ReadFile(kRoot / target), "\n#+ ([^\n]*)", [&](const std::smatch& heading) {
                found |= '#' + Anchor(heading.str(1)) == link.str(2);
            });
            EXPECT_TRUE(found) << path << " links to " << link.str(1) << link.str(2);
        });
    }
    EXPECT_NE(documents.at("README.md").find("(docs/README.md)"), std::string::npos);
    for (const auto& [path, text] : documents)
        EXPECT_TRUE(path == "docs/README.md" || indexed.contains(path))
            << path << " is not in docs/README.md";
}

TEST(Documents, NameFilesAndTestsThatExist) {
    const std::string folders =
        "(?:apps|base|bench|cmake|docs|dsp|editor|effect|fuzz|host|persistence|plugin|"
        "resources|scripts|tests|ui|vst)/";
    const std::string path = "`(" + folders + R"([\w./-]*)(?: [^`]*)?`(?: \(([^)]*)\))?)";
    for (const auto& [document, text] : Documents()) {
        ForEachMatch(text, path.c_str(), [&, &document = document](const std::smatch& match) {
            const fs::path file = kRoot / match.str(1);
            EXPECT_TRUE(fs::exists(file)) << document << " names " << match.str(1);
            if (match.str(1).find("_test.cpp") == std::string::npos) return;
            const std::string source = ReadFile(file);
            ForEachMatch(match.str(2), R"([A-Z]\w+)", [&](const std::smatch& test) {
                EXPECT_NE(source.find(test.str()), std::string::npos)
                    << document << " names " << test.str() << " in " << match.str(1);
            });
        });
    }
}

TEST(Documents, NameWhatContinuousIntegrationRuns) {
    std::smatch call;
    const std::string script = ReadFile(kRoot / ".ci/run");
    ASSERT_TRUE(std::regex_search(script, call, std::regex("scripts/test\"?([^\"\n]*)\n")));
    EXPECT_NE(Documents().at("README.md").find("`scripts/test" + call.str(1) + "`"), std::string::npos)
        << call.str(1);
}

/// A value as the documents write it: "-59.8 dB", "20 kHz", "64".
std::string Written(double value, const std::string& unit) {
    const bool kilo = unit == "Hz" && value >= 1000.0;
    const double rounded = std::round((kilo ? value / 1000.0 : value) * 10.0) / 10.0;
    return fmt::format("{:g}{}{}", rounded, unit.empty() ? "" : kilo ? " k" : " ", unit);
}

TEST(Documents, GiveParametersTheirRangesAndDefaults) {
    const auto documents = Documents();
    const std::map<std::string, std::string> panel{{"Output", "OUTPUT"},
                                                   {"Input", "INPUT"},
                                                   {"LoFreq", "LOW"},
                                                   {"HiFreq", "HIGH"},
                                                   {"Position", "POSITION"}};
    for (std::int32_t index = kParameterOutput; index < kParameterCount; ++index) {
        const ParameterRange& row = ParameterRow(index);
        const ShownRange shown = ShownRangeOf(index);
        // Of two values with one unit the first goes without it.
        const std::string low = Written(shown.minimum, row.taper == Taper::frequency ? row.unit : "");
        const std::string range = low + " to " + Written(shown.maximum, row.unit);
        const auto lineOf = [&](const char* document, const std::string& name) {
            const std::string& text = documents.at(document);
            const std::size_t start = text.find("| **" + name + "** |");
            return start == std::string::npos ? std::string()
                                              : text.substr(start, text.find('\n', start) - start);
        };
        EXPECT_NE(lineOf("README.md", row.name)
                      .find("| " + range + " | " + Written(shown.initial, row.unit) + " |"),
                  std::string::npos)
            << row.name << " in README.md: " << range << ", " << Written(shown.initial, row.unit);
        EXPECT_NE(lineOf("docs/manual.md", panel.at(row.name)).find("| " + range), std::string::npos)
            << row.name << " in docs/manual.md: " << range;
    }
}

} // namespace
} // namespace vocafade::test
