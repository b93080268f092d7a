// The text column that holds the library's descriptions end to end.
#include "library/TextColumn.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quarvex {
namespace {

// Empty elements at the start, the end and between others must keep their place: each element
// is cut out of the shared buffer by its neighbour's end.
TEST(TextColumn, GivesBackEveryElementInPlace) {
    const std::vector<std::vector<std::string>> columns = {
        {},
        {""},
        {"", "", ""},
        {"Calcite"},
        {"", "Rose quartz", "", std::string(300, 'x'), "Minas Gerais, far away", ""},
        {std::string("a\0b", 3), "785"},
    };
    for (const bool reserved : {false, true}) {
        for (const std::vector<std::string>& texts : columns) {
            TextColumn column;
            if (reserved) { // room made up front, as the grid cache does for its names
                std::size_t bytes = 0;
                for (const std::string& text : texts) {
                    bytes += text.size();
                }
                column.reserve(texts.size(), bytes);
            }
            for (const std::string& text : texts) {
                column.push_back(text);
            }
            column.shrink_to_fit();
            ASSERT_EQ(column.size(), texts.size());
            EXPECT_EQ(column.empty(), texts.empty());
            for (std::size_t k = 0; k < texts.size(); ++k) {
                EXPECT_EQ(column.view(k), texts[k]) << k;
                EXPECT_EQ(column[k], texts[k]) << k;
            }
        }
    }
}

} // namespace
} // namespace quarvex
