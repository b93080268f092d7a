// The keys of the spectrum file format, shared by its reader and its writer.
#pragma once

#include <string_view>

namespace quarvex::spectrum_file {

inline constexpr std::string_view kNamesKey = "##NAMES=";
inline constexpr std::string_view kLocalityKey = "##LOCALITY=";
inline constexpr std::string_view kGreltIdKey = "##GRELTID=";
inline constexpr std::string_view kChemistryKey = "##CHEMISTRY=";
inline constexpr std::string_view kCommentStart = "<COM>";
inline constexpr std::string_view kCommentEnd = "</COM>";
inline constexpr std::string_view kDataTypeKey = "dtype:";
inline constexpr std::string_view kWaveKey = "wave:";

} // namespace quarvex::spectrum_file
