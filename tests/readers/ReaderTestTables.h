// Reading the tables of expected values that the test-file scripts store beside their files.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace quarvex::test {

/// The tab-separated fields of every line of `path`.
inline std::vector<std::vector<std::string>> tableRows(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> fields;
        std::istringstream fieldStream(line);
        for (std::string field; std::getline(fieldStream, field, '\t');) {
            fields.push_back(field);
        }
        if (line.ends_with('\t')) {
            fields.emplace_back(); // an empty last field
        }
        rows.push_back(std::move(fields));
    }
    return rows;
}

/// The scripts store single-precision values written as doubles: a float equals them to its
/// own rounding, 1e-6 relative.
inline void expectNear(float actual, const std::string& expected, const std::string& what) {
    double truth = 0.0; // from_chars: the tests also run under a decimal-comma locale
    const auto parsed = std::from_chars(expected.data(), expected.data() + expected.size(), truth);
    ASSERT_EQ(parsed.ec, std::errc()) << what << ": " << expected;
    EXPECT_NEAR(actual, truth, 1e-6 * std::max(1.0, std::abs(truth))) << what;
}

} // namespace quarvex::test
