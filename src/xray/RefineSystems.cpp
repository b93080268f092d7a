// The nine crystal systems: their names, their free parameters and how they tie the cell.
#include "xray/RefineEngine.h"

#include "common/TextUtils.h"

#include <algorithm>
#include <cctype>

namespace quarvex {

namespace {

constexpr unsigned kEdges = kEntryA | kEntryB | kEntryC;
constexpr unsigned kAngles = kEntryAlpha | kEntryBeta | kEntryGamma;

// Reciprocal terms g = (g11, g22, g33, g12, g13, g23). A hexagonal cell has gamma* = 60 deg, so
// g12 = a* b* cos(gamma*) = g11 / 2; a rhombohedral one has one edge term and one angle term.
constexpr std::array<double, 6> kG11{1, 0, 0, 0, 0, 0};
constexpr std::array<double, 6> kG22{0, 1, 0, 0, 0, 0};
constexpr std::array<double, 6> kG33{0, 0, 1, 0, 0, 0};
constexpr std::array<double, 6> kG12{0, 0, 0, 1, 0, 0};
constexpr std::array<double, 6> kG13{0, 0, 0, 0, 1, 0};
constexpr std::array<double, 6> kG23{0, 0, 0, 0, 0, 1};

const std::array<CrystalSystemRule, 9> kSystems{{
    {"TRICLINIC",
     6,
     false,
     {kEntryA, kEntryB, kEntryC, kEntryAlpha, kEntryBeta, kEntryGamma},
     {kG11, kG22, kG33, kG12, kG13, kG23}},
    {"MONOCLINIC1", 4, false, {kEntryA, kEntryB, kEntryC, kEntryGamma}, {kG11, kG22, kG33, kG12}},
    {"MONOCLINIC2", 4, false, {kEntryA, kEntryB, kEntryC, kEntryBeta}, {kG11, kG22, kG33, kG13}},
    {"MONOCLINIC3", 4, false, {kEntryA, kEntryB, kEntryC, kEntryAlpha}, {kG11, kG22, kG33, kG23}},
    {"ORTHORHOMBIC", 3, true, {kEntryA, kEntryB, kEntryC}, {kG11, kG22, kG33}},
    {"TETRAGONAL", 2, true, {kEntryA | kEntryB, kEntryC}, {{{1, 1, 0, 0, 0, 0}, kG33}}},
    {"HEXAGONAL", 2, true, {kEntryA | kEntryB, kEntryC}, {{{1, 1, 0, 0.5, 0, 0}, kG33}}},
    {"RHOMBOHEDRAL", 2, false, {kEdges, kAngles}, {{{1, 1, 1, 0, 0, 0}, {0, 0, 0, 1, 1, 1}}}},
    {"CUBIC", 1, true, {kEdges}, {{{1, 1, 1, 0, 0, 0}}}},
}};

} // namespace

const CrystalSystemRule* findCrystalSystem(std::string_view XTLSYS) {
    const std::string_view name = trimmed(XTLSYS);
    const auto found =
        std::find_if(kSystems.begin(), kSystems.end(),
                     [name](const CrystalSystemRule& rule) { return rule.name == name; });
    return found == kSystems.end() ? nullptr : &*found;
}

std::string_view crystalSystemList() {
    return "TRICLINIC, MONOCLINIC1, MONOCLINIC2, MONOCLINIC3, ORTHORHOMBIC, TETRAGONAL, "
           "HEXAGONAL, RHOMBOHEDRAL, CUBIC";
}

std::string_view cellEntryLabel(int m) {
    static constexpr std::array<std::string_view, 6> kLabels{"a",     "b",    "c",
                                                             "alpha", "beta", "gamma"};
    return kLabels.at(static_cast<std::size_t>(m));
}

unsigned freeCellEntries(const CrystalSystemRule& rule) {
    unsigned entries = 0;
    for (int j = 0; j < rule.unknowns; ++j) {
        entries |= rule.directEntries[j];
    }
    return entries;
}

void XTL(std::string_view XTLSYS, int& unknowns) {
    if (const CrystalSystemRule* rule = findCrystalSystem(XTLSYS)) {
        unknowns = rule->unknowns;
    }
}

std::string normalizedSystemName(std::string_view name) {
    std::string upper(trimmed(name));
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (upper == "MONOCLINIC") {
        upper = "MONOCLINIC2"; // unique axis b unless the name says otherwise
    } else if (upper == "ISOMETRIC") {
        upper = "CUBIC";
    }
    upper.resize(std::max(upper.size(), std::size_t{PARMMAX::kSystemNameWidth}), ' ');
    return upper;
}

} // namespace quarvex
