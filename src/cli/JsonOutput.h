// JSON output helpers shared by the subcommands.
#pragma once

#include <nlohmann/json.hpp>

namespace quarvex::cli {

using Json = nlohmann::ordered_json;

/// A single-precision value as a JSON number with the float's shortest decimal form
/// (101.384, not 101.38400268554688).
double jsonNumber(float value);

} // namespace quarvex::cli
