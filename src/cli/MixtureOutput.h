// The components of a mixture search as JSON and as a table.
#pragma once

#include "cli/JsonOutput.h"
#include "library/LibraryGlobals.h"
#include "library/MixtureSearch.h"

#include <ostream>

namespace quarvex::cli {

/// {"components": [{"file", "names", "score", "fraction", "shift"}], "residual_fraction"}.
Json mixtureJson(const MixtureResult& mixture, const LIBRARY_GLOBALS& library);

/// One line per component (score, fraction and shift), then the residual's share.
void printMixture(const MixtureResult& mixture, const LIBRARY_GLOBALS& library, std::ostream& out);

} // namespace quarvex::cli
