// Titles of the messages of the X-ray workflow and of X-ray projects.
#pragma once

#include <string_view>

namespace quarvex {

/// Title of the workflow's messages (the mode's own name).
inline constexpr std::string_view kXrayDiffractionTitle = "X-ray Diffraction";
/// Title of the messages about project files.
inline constexpr std::string_view kXrayProjectTitle = "X-ray Project";

} // namespace quarvex
