// de Wolff's M20 (J. Appl. Cryst. 1 (1968) 108) and Smith & Snyder's F(N) (J. Appl. Cryst. 12
// (1979) 60), counting the possible lines from the cell up to the last observed one.
#include "xray/FiguresOfMerit.h"

#include "xray/XrayBragg.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace quarvex {

namespace {

constexpr int kMeritLinesM = 20;
// Two calculated positions closer than this (relative in Q) are one line.
constexpr double kSamePosition = 1e-7;

double qOf(double twoThetaDeg, double wavelength) {
    const double d = dSpacingFromTwoTheta(twoThetaDeg, wavelength);
    return 1.0 / (d * d);
}

// Every distinct Q = 1/d^2 up to qMax allowed by the centring, ascending.
std::vector<double> possibleQ(const CellVector& cell, char centring, double qMax) {
    // h = a . d* with |d*| = 1/d, so |h| <= a / d_min (and likewise k, l).
    const double dMin = 1.0 / std::sqrt(qMax);
    const int hMax = static_cast<int>(std::ceil(cell[0] / dMin)) + 1;
    const int kMax = static_cast<int>(std::ceil(cell[1] / dMin)) + 1;
    const int lMax = static_cast<int>(std::ceil(cell[2] / dMin)) + 1;
    std::vector<double> qs;
    for (int h = -hMax; h <= hMax; ++h) {
        for (int k = -kMax; k <= kMax; ++k) {
            for (int l = -lMax; l <= lMax; ++l) {
                if ((h == 0 && k == 0 && l == 0) || !centringAllows(centring, h, k, l)) {
                    continue;
                }
                const auto q = reciprocalQ(cell, h, k, l);
                if (q && q->first <= qMax * (1.0 + kSamePosition)) {
                    qs.push_back(q->first);
                }
            }
        }
    }
    std::sort(qs.begin(), qs.end());
    std::vector<double> distinct;
    for (const double q : qs) {
        if (distinct.empty() || q > distinct.back() * (1.0 + kSamePosition)) {
            distinct.push_back(q);
        }
    }
    return distinct;
}

int countUpTo(const std::vector<double>& distinct, double qMax) {
    return static_cast<int>(
        std::upper_bound(distinct.begin(), distinct.end(), qMax * (1.0 + kSamePosition)) -
        distinct.begin());
}

} // namespace

char latticeCentring(std::string_view spaceGroup) {
    const auto first = std::find_if(spaceGroup.begin(), spaceGroup.end(), [](char c) {
        return !std::isspace(static_cast<unsigned char>(c));
    });
    if (first == spaceGroup.end()) {
        return 'P';
    }
    const char letter = static_cast<char>(std::toupper(static_cast<unsigned char>(*first)));
    return std::string_view("PABCIFR").find(letter) != std::string_view::npos ? letter : 'P';
}

bool centringAllows(char centring, int h, int k, int l) {
    switch (centring) {
    case 'A':
        return (k + l) % 2 == 0;
    case 'B':
        return (h + l) % 2 == 0;
    case 'C':
        return (h + k) % 2 == 0;
    case 'I':
        return (h + k + l) % 2 == 0;
    case 'F':
        return (h + k) % 2 == 0 && (k + l) % 2 == 0;
    case 'R':
        return (-h + k + l) % 3 == 0;
    default:
        return true;
    }
}

FiguresOfMerit figuresOfMerit(std::vector<MeritLine> lines, const CellVector& cell, char centring) {
    FiguresOfMerit merit;
    if (lines.empty()) {
        return merit;
    }
    std::sort(lines.begin(), lines.end(), [](const MeritLine& x, const MeritLine& y) {
        return x.twoThetaObsDeg < y.twoThetaObsDeg;
    });
    const double wavelength = lines.front().wavelength;
    const auto qObs = [&](const MeritLine& line) { return qOf(line.twoThetaObsDeg, wavelength); };
    const auto qCalc = [&](const MeritLine& line) { return qOf(line.twoThetaCalcDeg, wavelength); };
    // A line counts itself among the possible ones even when its calculated position lies a
    // little beyond the observed one.
    const auto qReach = [&](const MeritLine& line) { return std::max(qObs(line), qCalc(line)); };
    const std::vector<double> distinct = possibleQ(cell, centring, qReach(lines.back()));

    merit.mLines = std::min(kMeritLinesM, static_cast<int>(lines.size()));
    double sumDeltaQ = 0.0;
    for (int i = 0; i < merit.mLines; ++i) {
        sumDeltaQ += std::fabs(qObs(lines[i]) - qCalc(lines[i]));
    }
    merit.qN = qObs(lines[merit.mLines - 1]);
    merit.meanAbsDeltaQ = sumDeltaQ / merit.mLines;
    merit.mPossible = countUpTo(distinct, qReach(lines[merit.mLines - 1]));

    merit.fLines = static_cast<int>(lines.size());
    double sumDelta = 0.0;
    for (const MeritLine& line : lines) {
        sumDelta += std::fabs(line.twoThetaObsDeg - line.twoThetaCalcDeg);
    }
    merit.meanAbsDeltaTwoTheta = sumDelta / merit.fLines;
    merit.fPossible = countUpTo(distinct, qReach(lines.back()));
    if (merit.mPossible == 0 || merit.fPossible == 0) {
        return merit;
    }
    merit.m = merit.qN / (2.0 * merit.meanAbsDeltaQ * merit.mPossible);
    merit.f = merit.fLines / (merit.meanAbsDeltaTwoTheta * merit.fPossible);
    merit.available = true;
    return merit;
}

} // namespace quarvex
