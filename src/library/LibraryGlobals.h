// State group of the Raman library and its search.
#pragma once

namespace quarvex {

/// Raman library state: the entries of the compiled library and the scores of the last search.
struct LIBRARY_GLOBALS {};

} // namespace quarvex
