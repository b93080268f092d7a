// Figures of merit of an indexed powder pattern: de Wolff's M(N) and Smith & Snyder's F(N).
#pragma once

#include "xray/CellModel.h"

#include <string_view>
#include <vector>

namespace quarvex {

/// One observed line for the figures of merit: its corrected observed and its calculated
/// position (2-theta in degrees at `wavelength` angstroms).
struct MeritLine {
    double twoThetaObsDeg = 0.0;
    double twoThetaCalcDeg = 0.0;
    double wavelength = 0.0;
};

/// M(N) (de Wolff 1968) and F(N) (Smith & Snyder 1979) of the first N lines by position. N is
/// 20 for M (fewer when fewer lines) and all lines for F.
struct FiguresOfMerit {
    bool available = false;     ///< false without lines or with a cell that gives no reflections
    int mLines = 0;             ///< N of M(N): 20, or every line when fewer
    double m = 0.0;             ///< M(N) = Q_N / (2 <|dQ|> N_poss)
    double qN = 0.0;            ///< Q = 1/d^2 of the N-th observed line, 1/A^2
    double meanAbsDeltaQ = 0.0; ///< <|Q_obs - Q_calc|> of the N lines, 1/A^2
    int mPossible = 0;          ///< distinct calculated Q up to Q_N
    int fLines = 0;             ///< N of F(N)
    double f = 0.0;             ///< F(N) = N / (<|d2theta|> N_poss)
    double meanAbsDeltaTwoTheta = 0.0; ///< <|2theta_obs - 2theta_calc|>, degrees
    int fPossible = 0;                 ///< distinct calculated 2-theta up to the N-th line
};

/// The lattice centring letter of a space-group symbol ("I 1 2/c 1" gives 'I'); 'P' when the
/// symbol is empty or starts with no centring letter.
char latticeCentring(std::string_view spaceGroup);

/// True when reflection h k l is allowed by the centring ('P', 'A', 'B', 'C', 'I', 'F', and 'R'
/// for the obverse setting on hexagonal axes, -h + k + l = 3n).
bool centringAllows(char centring, int h, int k, int l);

/// The figures of merit of `lines` for the refined `cell` (angles in radians), counting the
/// distinct positions the cell and its centring allow up to each figure's last line. The lines
/// should share one wavelength; the first line's wavelength is used for counting.
FiguresOfMerit figuresOfMerit(std::vector<MeritLine> lines, const CellVector& cell, char centring);

} // namespace quarvex
