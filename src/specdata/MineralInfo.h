// The four header values of a spectrum file: the mineral information of a sample.
#pragma once

#include <cstddef>
#include <string>

namespace quarvex {

/// Header values of the last spectrum file read ("##NAMES=", "##LOCALITY=", "##GRELTID=",
/// "##CHEMISTRY="); each loaded spectrum also keeps its own copy. Each value holds at most
/// kMineralInfoWidth characters.
struct MINERALINFO {
    std::string names;
    std::string locality;
    std::string id;
    std::string chemistry;
};

inline constexpr std::size_t kMineralInfoWidth = 255;

} // namespace quarvex
