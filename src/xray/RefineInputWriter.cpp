// The "_refine.DAT" writer: title, crystal system, starting cell, wavelengths, switches, then
// one weighted line per matched peak and "stop".
#include "xray/RefineInputWriter.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "xray/RefineEngine.h"
#include "xray/XrayMessages.h"

#include <algorithm>
#include <cmath>
#include <ostream>

namespace quarvex {

namespace {

[[noreturn]] void fail(const std::string& text) {
    throw QuarvexError(text, std::string(kXrayDiffractionTitle));
}

bool hasCell(const std::array<float, 6>& cell) {
    return cell[0] > 0.0F && cell[1] > 0.0F && cell[2] > 0.0F && cell[3] > 0.0F && cell[4] > 0.0F &&
           cell[5] > 0.0F;
}

} // namespace

std::filesystem::path refineInputPath(const std::filesystem::path& patternPath) {
    return patternPath.parent_path() / (patternPath.stem().string() + "_refine.DAT");
}

double twoThetaWeight(double twoThetaDeg, double wavelength) {
    return wavelength * wavelength / (2.0 * std::sin(twoThetaDeg * kDegree) * kDegree);
}

std::vector<RefineInputLine> refineInputLines(const XrayPhase& phase) {
    std::vector<const PeakAssignment*> used;
    for (const PeakAssignment& a : phase.assignments) {
        if (a.peak >= 0 && a.peak < phase.peaks.count() &&
            phase.peaks.USEPK[static_cast<std::size_t>(a.peak)]) {
            used.push_back(&a);
        }
    }
    if (used.size() > static_cast<std::size_t>(PARMMAX::kMaxReflections)) {
        std::stable_sort(used.begin(), used.end(), [&](const auto* a, const auto* b) {
            return phase.peaks.height(a->peak) > phase.peaks.height(b->peak);
        });
        used.resize(PARMMAX::kMaxReflections);
    }
    std::vector<RefineInputLine> lines;
    for (const PeakAssignment* a : used) {
        lines.push_back({a->hkl, a->wave, phase.peaks.twoTheta(a->peak)});
    }
    std::stable_sort(lines.begin(), lines.end(),
                     [](const auto& a, const auto& b) { return a.twoTheta < b.twoTheta; });
    return lines;
}

void writeRefineInput(const std::filesystem::path& path, const RefineInputContent& content) {
    const std::string_view system = crystalSystemName(content.sym);
    if (system.empty()) {
        fail("The crystal system is not known: choose one before refining.");
    }
    if (content.wavelengths.empty() ||
        content.wavelengths.size() > static_cast<std::size_t>(PARMMAX::kMaxWavelengths)) {
        fail("A refinement needs 1 to 3 wavelengths.");
    }
    if (content.lines.size() > static_cast<std::size_t>(PARMMAX::kMaxReflections)) {
        fail("A refinement takes at most 99 lines.");
    }
    for (const RefineInputLine& line : content.lines) {
        if (line.wave < 1 || line.wave > static_cast<int>(content.wavelengths.size())) {
            fail("Wavelength number " + std::to_string(line.wave) + " is not given.");
        }
    }
    AtomicFile file(path);
    std::ostream& out = file.stream();
    const bool cellGiven = hasCell(content.cell);
    std::string title(content.title);
    std::replace_if(
        title.begin(), title.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    out << title << '\n' << system << '\n' << (cellGiven ? 1 : 0);
    for (const float value : content.cell) {
        out << ' ' << shortestText(value);
    }
    out << '\n' << content.wavelengths.size();
    for (const double wavelength : content.wavelengths) {
        out << ' ' << shortestText(wavelength);
    }
    out << '\n'
        << (content.machineErrorSearch ? 1 : 0) << ' ' << (content.reportIterations ? 1 : 0)
        << " 0 " << (cellGiven && content.startFromCell ? 1 : 0) << '\n';
    for (const RefineInputLine& line : content.lines) {
        const double wavelength = content.wavelengths[static_cast<std::size_t>(line.wave - 1)];
        out << line.hkl[0] << ' ' << line.hkl[1] << ' ' << line.hkl[2] << ' ' << line.wave << ' '
            << shortestText(line.twoTheta) << ' '
            << shortestText(twoThetaWeight(line.twoTheta, wavelength)) << '\n';
    }
    out << "stop\n";
    if (!file.commit()) {
        fail("Could not write the refinement input " + path.string() + ".");
    }
}

} // namespace quarvex
