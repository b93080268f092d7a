// The explanation of a search (bands matched per hit, signal-to-noise, ambiguity) as JSON and
// as text under the ranking.
#pragma once

#include "cli/JsonOutput.h"
#include "library/LibraryGlobals.h"
#include "library/SearchExplain.h"

#include <ostream>

namespace quarvex::cli {

/// Adds "explain" (per hit: rank, file, matched [[unknown, entry]], unknown_only, entry_only),
/// "snr" (null when the unknown has no noise) and "ambiguous" to `result`.
void addExplanationJson(const SearchExplanation& explanation, const LIBRARY_GLOBALS& library,
                        Json& result);

/// The signal-to-noise, the ambiguity warning and one line of bands per hit.
void printExplanation(const SearchExplanation& explanation, const LIBRARY_GLOBALS& library,
                      std::ostream& out);

} // namespace quarvex::cli
