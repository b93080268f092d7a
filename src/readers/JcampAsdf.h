// Decoding the data lines of JCAMP-DX ##XYDATA=(X++(Y..Y)): plain numbers (AFFN) and the
// compressed forms of ASDF (SQZ, DIF, DUP).
#pragma once

#include <string_view>
#include <vector>

namespace quarvex {

/// One decoded data line: its abscissa and ordinates as written (before the factors).
struct AsdfLine {
    double x = 0.0;
    std::vector<double> y;
    bool endsInDifference = false; ///< the last ordinate came from a DIF character, so the next
                                   ///< line repeats it as its first ordinate (the Y check)
};

/// Decodes `line` into `decoded` (its vector reused). False when a character is neither a
/// number, a separator, an ASDF character nor a "$$" comment, when a DIF or DUP character comes
/// first, or when the line holds no abscissa.
bool decodeAsdfLine(std::string_view line, AsdfLine& decoded);

} // namespace quarvex
