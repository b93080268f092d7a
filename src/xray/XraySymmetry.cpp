// SYM codes: names, the metric of a cell, and the crystal family of a space-group symbol.
#include "xray/XraySymmetry.h"

#include "common/TextUtils.h"
#include "xray/Refine.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace quarvex {

namespace {

constexpr int kTriclinic = 1;
constexpr int kMonoclinicC = 2; // unique axis c
constexpr int kMonoclinicB = 3; // unique axis b
constexpr int kMonoclinicA = 4; // unique axis a
constexpr int kOrthorhombic = 5;
constexpr int kTetragonal = 6;
constexpr int kHexagonal = 7;
constexpr int kRhombohedral = 8;
constexpr int kCubic = 9;

// Reference files print edges to 5 and angles to 4 decimals: these tolerances are far wider
// than that rounding and far narrower than any real departure from symmetry.
constexpr double kEdgeTolerance = 1.0e-4;
constexpr double kAngleToleranceDeg = 1.0e-3;

bool sameEdge(float a, float b) {
    return std::abs(static_cast<double>(a) - b) <=
           kEdgeTolerance * std::max(std::abs(static_cast<double>(a)), std::abs(1.0 * b));
}

bool isAngle(float angle, double value) {
    return std::abs(static_cast<double>(angle) - value) <= kAngleToleranceDeg;
}

bool sameAngle(float a, float b) {
    return std::abs(static_cast<double>(a) - b) <= kAngleToleranceDeg;
}

bool equalEdges(const std::array<float, 6>& cell) {
    return sameEdge(cell[0], cell[1]) && sameEdge(cell[1], cell[2]);
}

// The monoclinic code whose unique axis carries the one angle that is not 90 (b when all are).
int monoclinicFromCell(const std::array<float, 6>& cell) {
    if (!isAngle(cell[3], 90.0)) {
        return kMonoclinicA;
    }
    if (!isAngle(cell[5], 90.0)) {
        return kMonoclinicC;
    }
    return kMonoclinicB;
}

bool isRhombohedralCell(const std::array<float, 6>& cell) {
    return equalEdges(cell) && sameAngle(cell[3], cell[4]) && sameAngle(cell[4], cell[5]) &&
           !isAngle(cell[3], 90.0);
}

std::vector<std::string_view> words(std::string_view text) {
    std::vector<std::string_view> parts;
    while (!(text = trimmed(text)).empty()) {
        const auto end = text.find_first_of(" \t");
        parts.push_back(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view{} : text.substr(end);
    }
    return parts;
}

bool holds(std::string_view part, char digit) {
    return part.find(digit) != std::string_view::npos;
}

} // namespace

std::string_view crystalSystemName(int sym) {
    if (sym < 1 || sym > static_cast<int>(kCrystalSystemNames.size())) {
        return {};
    }
    return kCrystalSystemNames[static_cast<std::size_t>(sym - 1)];
}

int symCode(std::string_view name) {
    const std::string normalized = normalizedSystemName(trimmed(name));
    const auto found =
        std::find(kCrystalSystemNames.begin(), kCrystalSystemNames.end(), trimmed(normalized));
    return found == kCrystalSystemNames.end()
               ? kSymUnknown
               : static_cast<int>(found - kCrystalSystemNames.begin()) + 1;
}

int symFromCell(const std::array<float, 6>& cell) {
    if (!(cell[0] > 0.0F && cell[1] > 0.0F && cell[2] > 0.0F)) {
        return kSymUnknown;
    }
    const int rightAngles = static_cast<int>(isAngle(cell[3], 90.0)) +
                            static_cast<int>(isAngle(cell[4], 90.0)) +
                            static_cast<int>(isAngle(cell[5], 90.0));
    if (rightAngles == 3) {
        if (equalEdges(cell)) {
            return kCubic;
        }
        return sameEdge(cell[0], cell[1]) ? kTetragonal : kOrthorhombic;
    }
    if (rightAngles == 2 && isAngle(cell[5], 120.0) && sameEdge(cell[0], cell[1])) {
        return kHexagonal;
    }
    if (isRhombohedralCell(cell)) {
        return kRhombohedral;
    }
    return rightAngles == 2 ? monoclinicFromCell(cell) : kTriclinic;
}

int symFromSpaceGroup(std::string_view symbol, const std::array<float, 6>& cell) {
    const auto colon = symbol.find(':');
    const std::string_view setting =
        colon == std::string_view::npos ? std::string_view{} : trimmed(symbol.substr(colon + 1));
    const std::vector<std::string_view> parts = words(symbol.substr(0, colon));
    if (parts.size() < 2 ||
        std::string_view("PABCFIR").find(parts[0][0]) == std::string_view::npos ||
        parts[0].size() != 1) {
        return symFromCell(cell);
    }
    const char lattice = parts[0][0];
    const std::vector<std::string_view> axes(parts.begin() + 1, parts.end());
    if (holds(axes[0], '3') || holds(axes[0], '6')) {
        if (lattice != 'R' || setting == "H") {
            return kHexagonal;
        }
        return setting == "R" || isRhombohedralCell(cell) ? kRhombohedral : kHexagonal;
    }
    if (axes.size() >= 2 && holds(axes[1], '3')) {
        return kCubic;
    }
    if (holds(axes[0], '4')) {
        return kTetragonal;
    }
    if (axes.size() == 1) {
        return axes[0] == "1" || axes[0] == "-1" ? kTriclinic : monoclinicFromCell(cell);
    }
    if (axes.size() == 3) {
        const auto ones = std::count(axes.begin(), axes.end(), std::string_view("1"));
        if (ones == 0) {
            return kOrthorhombic;
        }
        if (ones == 2) {
            constexpr std::array<int, 3> kUniqueAxis{kMonoclinicA, kMonoclinicB, kMonoclinicC};
            const auto unique =
                std::find_if(axes.begin(), axes.end(), [](std::string_view a) { return a != "1"; });
            return kUniqueAxis[static_cast<std::size_t>(unique - axes.begin())];
        }
    }
    return symFromCell(cell);
}

} // namespace quarvex
