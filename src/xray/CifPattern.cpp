// The computed stick pattern of a structure: h k l enumeration bounded by the d range, Laue
// sets merged with their multiplicity, structure factors from IT92 form factors.
#include "xray/CifPattern.h"

#include "common/QuarvexError.h"
#include "xray/CifStructure.h"
#include "xray/XraySymmetry.h"

#include <gemmi/it92.hpp>
#include <gemmi/sfcalc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>

namespace quarvex {

namespace {

using Miller = gemmi::Miller;

constexpr double kDegree = std::numbers::pi / 180.0;

[[noreturn]] void fail(const std::string& text) {
    throw QuarvexError(text, std::string(kCifErrorTitle));
}

struct Line {
    Miller hkl{};
    double dSpacing = 0.0;
    double intensity = 0.0;
    double strongest = 0.0; ///< intensity of the member whose h k l the line carries
};

// The Laue-equivalent set of `hkl`: the rotations of the group and Friedel's law.
std::vector<Miller> laueSet(const gemmi::GroupOps& group, const Miller& hkl) {
    std::vector<Miller> members;
    for (const gemmi::Op& op : group.sym_ops) {
        const Miller m = op.apply_to_hkl(hkl);
        for (const Miller& member : {m, Miller{{-m[0], -m[1], -m[2]}}}) {
            if (std::find(members.begin(), members.end(), member) == members.end()) {
                members.push_back(member);
            }
        }
    }
    return members;
}

// Fewest negative indices, then the largest: h >= k >= l in cubic sets.
Miller representative(const std::vector<Miller>& members) {
    const auto negatives = [](const Miller& m) {
        return (m[0] < 0 ? 1 : 0) + (m[1] < 0 ? 1 : 0) + (m[2] < 0 ? 1 : 0);
    };
    return *std::min_element(members.begin(), members.end(), [&](const Miller& a, const Miller& b) {
        const int na = negatives(a);
        const int nb = negatives(b);
        return na != nb ? na < nb : a > b;
    });
}

// (1 + cos^2 2theta) / (sin^2 theta cos theta): an unpolarised source, no monochromator.
double lorentzPolarisation(double thetaRad) {
    const double cos2Theta = std::cos(2.0 * thetaRad);
    const double sinTheta = std::sin(thetaRad);
    return (1.0 + cos2Theta * cos2Theta) / (sinTheta * sinTheta * std::cos(thetaRad));
}

// Sites without displacement parameters get the default; occupancies become crystallographic
// (divided by the site's multiplicity of images), as the structure-factor sum runs over every
// operation of the group.
gemmi::SmallStructure scatteringModel(const CifCrystal& crystal, double defaultUIso) {
    gemmi::SmallStructure model = crystal.structure;
    for (gemmi::SmallStructure::Site& site : model.sites) {
        if (site.u_iso <= 0.0 && !site.aniso.nonzero()) {
            site.u_iso = defaultUIso;
        }
    }
    model.change_occupancies_to_crystallographic();
    return model;
}

std::vector<Line> reflectionSets(const CifCrystal& crystal, const CifPatternSettings& settings) {
    const gemmi::UnitCell& cell = crystal.structure.cell;
    const double dMin =
        settings.wavelength / (2.0 * std::sin(settings.twoThetaMax * kDegree / 2.0));
    const double dMax =
        settings.wavelength / (2.0 * std::sin(settings.twoThetaMin * kDegree / 2.0));
    // |h| <= a / dMin: the index is the projection of d* on the a axis, times a.
    const std::array<double, 3> limits{cell.a / dMin, cell.b / dMin, cell.c / dMin};
    std::array<int, 3> bound{};
    double triplets = 1.0;
    for (std::size_t i = 0; i < 3; ++i) {
        triplets *= 2.0 * std::floor(limits[i]) + 1.0;
    }
    if (!(triplets <= static_cast<double>(kMaxCifHklTriplets))) {
        fail("the cell and the 2-theta range give " +
             std::to_string(static_cast<long long>(std::min(triplets, 1e18))) +
             " h k l to try, more than " + std::to_string(kMaxCifHklTriplets) +
             ": narrow the range or check \"_cell_length_a\", \"_cell_length_b\" and "
             "\"_cell_length_c\"");
    }
    for (std::size_t i = 0; i < 3; ++i) {
        bound[i] = static_cast<int>(std::floor(limits[i]));
    }
    const auto index = [&](const Miller& m) {
        return (static_cast<std::size_t>(m[0] + bound[0]) *
                    static_cast<std::size_t>(2 * bound[1] + 1) +
                static_cast<std::size_t>(m[1] + bound[1])) *
                   static_cast<std::size_t>(2 * bound[2] + 1) +
               static_cast<std::size_t>(m[2] + bound[2]);
    };
    const auto inside = [&](const Miller& m) {
        return std::abs(m[0]) <= bound[0] && std::abs(m[1]) <= bound[1] &&
               std::abs(m[2]) <= bound[2];
    };
    std::vector<char> seen(static_cast<std::size_t>(triplets), 0);
    const gemmi::SmallStructure model = scatteringModel(crystal, settings.defaultUIso);
    gemmi::StructureFactorCalculator<gemmi::IT92<double>> calculator(model.cell);
    std::vector<Line> lines;
    for (int h = -bound[0]; h <= bound[0]; ++h) {
        for (int k = -bound[1]; k <= bound[1]; ++k) {
            for (int l = -bound[2]; l <= bound[2]; ++l) {
                const Miller hkl{{h, k, l}};
                if (seen[index(hkl)] != 0 || (h == 0 && k == 0 && l == 0)) {
                    continue;
                }
                const double d = cell.calculate_d(hkl);
                if (d < dMin || d > dMax) {
                    continue;
                }
                const std::vector<Miller> members = laueSet(crystal.group, hkl);
                for (const Miller& m : members) {
                    if (inside(m)) {
                        seen[index(m)] = 1;
                    }
                }
                if (crystal.group.is_systematically_absent(hkl)) {
                    continue;
                }
                const Miller shown = representative(members);
                const double f =
                    std::norm(calculator.calculate_sf_from_small_structure(model, shown));
                const double theta = std::asin(settings.wavelength / (2.0 * d));
                const double intensity =
                    f * static_cast<double>(members.size()) * lorentzPolarisation(theta);
                // A cell and displacement parameters that disagree (a cubic group on a cell
                // with another angle, a huge U) give no finite structure factor.
                if (!std::isfinite(intensity)) {
                    fail("the intensity of " + std::to_string(shown[0]) + " " +
                         std::to_string(shown[1]) + " " + std::to_string(shown[2]) +
                         " is not a finite number: check the cell (_cell_angle_*) and the "
                         "displacement parameters (_atom_site_aniso_U_*, "
                         "_atom_site_U_iso_or_equiv)");
                }
                lines.push_back({shown, d, intensity, intensity});
            }
        }
    }
    return lines;
}

// Lines within the tolerance of the first line of their group (in falling d) are one line.
std::vector<Line> mergedLines(std::vector<Line> sets, double tolerance) {
    std::sort(sets.begin(), sets.end(), [](const Line& a, const Line& b) {
        return a.dSpacing != b.dSpacing ? a.dSpacing > b.dSpacing : a.hkl > b.hkl;
    });
    std::vector<Line> merged;
    double groupD = 0.0;
    for (const Line& set : sets) {
        if (!merged.empty() && groupD - set.dSpacing <= tolerance) {
            Line& line = merged.back();
            line.intensity += set.intensity;
            if (set.strongest > line.strongest) {
                line.strongest = set.strongest;
                line.hkl = set.hkl;
            }
            continue;
        }
        groupD = set.dSpacing;
        merged.push_back(set);
    }
    return merged;
}

} // namespace

void checkCifPatternSettings(const CifPatternSettings& settings) {
    if (!(settings.wavelength > 0.0) || !std::isfinite(settings.wavelength)) {
        fail("the wavelength must be a positive number of angstroms");
    }
    if (!(settings.twoThetaMin > 0.0 && settings.twoThetaMin < settings.twoThetaMax &&
          settings.twoThetaMax < 180.0)) {
        fail("the 2-theta range must lie inside 0 to 180 degrees, low end first");
    }
}

DiffFileRecord cifReferencePattern(const CifCrystal& crystal, const CifPatternSettings& settings) {
    checkCifPatternSettings(settings);
    const std::vector<Line> lines =
        mergedLines(reflectionSets(crystal, settings), settings.dTolerance);
    double strongest = 0.0;
    for (const Line& line : lines) {
        strongest = std::max(strongest, line.intensity);
    }
    DiffFileRecord record;
    record.title = crystal.title;
    record.spaceGroup = crystal.spaceGroup;
    record.mode = 1;
    record.wavelengths = {settings.wavelength, 0.0};
    const gemmi::UnitCell& cell = crystal.structure.cell;
    record.cell = {static_cast<float>(cell.a),    static_cast<float>(cell.b),
                   static_cast<float>(cell.c),    static_cast<float>(cell.alpha),
                   static_cast<float>(cell.beta), static_cast<float>(cell.gamma)};
    record.sym = record.spaceGroup.empty() ? symFromCell(record.cell)
                                           : symFromSpaceGroup(record.spaceGroup, record.cell);
    record.notes = crystal.notes;
    for (auto line = lines.begin(); line != lines.end(); ++line) { // falling d: rising 2-theta
        const double relative = strongest > 0.0 ? 100.0 * line->intensity / strongest : 0.0;
        if (relative < settings.smallestIntensity) {
            continue;
        }
        DiffReflection reflection;
        reflection.dSpacing = static_cast<float>(line->dSpacing);
        reflection.twoTheta = static_cast<float>(
            2.0 * std::asin(settings.wavelength / (2.0 * line->dSpacing)) / kDegree);
        reflection.intensity = static_cast<float>(relative);
        reflection.hkl = {line->hkl[0], line->hkl[1], line->hkl[2]};
        record.reflections.push_back(reflection);
    }
    if (record.reflections.empty()) {
        record.notes.push_back("no reflection lies in the 2-theta range");
    }
    return record;
}

std::vector<std::string> cifPatternDescription(const std::string& cifName,
                                               const CifPatternSettings& settings) {
    char conditions[200];
    std::snprintf(
        conditions, sizeof conditions,
        "  wavelength %.6f A, 2-theta %g-%g deg, default U_iso %g A^2, no anomalous terms,",
        settings.wavelength, settings.twoThetaMin, settings.twoThetaMax, settings.defaultUIso);
    char merging[200];
    std::snprintf(merging, sizeof merging,
                  "  lines closer than %g A in d merged, lines below %g left out.",
                  settings.dTolerance, settings.smallestIntensity);
    return {"computed from " + cifName + " by Quarvex (IT92 form factors):", conditions,
            "  I = |F|^2 x multiplicity x (1 + cos^2 2theta) / (sin^2 theta cos theta),", merging};
}

DiffFileRecord readCifReference(const std::filesystem::path& path,
                                const CifPatternSettings& settings) {
    checkCifPatternSettings(settings);
    DiffFileRecord record = cifReferencePattern(readCifCrystal(path), settings);
    record.name = path.filename().string();
    record.folder = path.parent_path().string();
    return record;
}

} // namespace quarvex
