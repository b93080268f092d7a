// State group of the Raman library and its search.
#pragma once

#include "library/TextColumn.h"

#include <string>
#include <vector>

namespace quarvex {

/// Raman library state: the entries of the compiled library and the scores of the last search.
/// Entry k (ranked and shown from 1) is index k-1 of every array; the arrays are filled by
/// READ_LIBRARY, one element per line of "RamanSearchNameList.rsf". The file names and
/// descriptions are text columns (one buffer each) so that the memory of a search stays small at
/// any library size.
struct LIBRARY_GLOBALS {
    TextColumn MI_FILENAMES;        ///< reference file name, at most 256 characters
    TextColumn MIGRELT_ID;          ///< identifier: the first word of its line
    TextColumn MINAMES;             ///< mineral name(s): the first word of its line
    TextColumn LOCALITIES;          ///< locality, the whole line
    TextColumn CHEMISTRIES;         ///< chemistry, the whole line
    TextColumn MI_WAVE;             ///< laser wavelength code, at most 3 characters
    std::vector<double> PERC_MATCH; ///< score of the last search, 0 to 100
    std::vector<int> MATCH_SHIFT;   ///< best shift of the last robust search, cm-1 (else empty)
    /// Order in which the result list shows the entries (0-based indices); after a search the
    /// ranking, until the list is sorted otherwise.
    std::vector<int> MI_SORTINDEX;
    std::vector<int> MI_SORTINDEXPERCENTS; ///< ranking of the last search: best score first
    std::vector<int> MI_SORTINDEXID;       ///< order by identifier, filled by the result list

    /// Number of library entries loaded.
    int count() const { return static_cast<int>(MI_FILENAMES.size()); }
};

} // namespace quarvex
