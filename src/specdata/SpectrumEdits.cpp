#include "specdata/SpectrumEdits.h"

#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "processing/PolynomialBaseline.h"
#include "processing/SavitzkyGolay.h"
#include "processing/Trim.h"
#include "specdata/SpectrumFileWriter.h"
#include "specdata/SpectrumRecords.h"

#include <sstream>

namespace quarvex {

namespace {

// Spike positions listed in a processing line; more are counted only (the line is read back
// cut at 256 characters).
constexpr std::size_t kListedSpikes = 8;

std::string text(double value) {
    return shortestText(value);
}

void keepPoints(SpectrumRecord& record, std::size_t first, std::size_t count) {
    record.x = std::vector<float>(record.x.begin() + static_cast<std::ptrdiff_t>(first),
                                  record.x.begin() + static_cast<std::ptrdiff_t>(first + count));
    record.y = std::vector<float>(record.y.begin() + static_cast<std::ptrdiff_t>(first),
                                  record.y.begin() + static_cast<std::ptrdiff_t>(first + count));
}

std::string spikeList(const std::vector<float>& spikeX) {
    std::ostringstream out;
    out << spikeX.size() << (spikeX.size() == 1 ? " point" : " points");
    if (!spikeX.empty()) {
        out << " at x =";
        for (std::size_t k = 0; k < std::min(spikeX.size(), kListedSpikes); ++k) {
            out << ' ' << shortestText(spikeX[k]);
        }
        if (spikeX.size() > kListedSpikes) {
            out << " ...";
        }
    }
    return out.str();
}

void takeSpikes(EditOutcome& outcome, const DespikeResult& result) {
    for (const std::size_t i : result.spikes) {
        outcome.spikeX.push_back(outcome.record.x[i]);
    }
    outcome.record.y = result.y;
}

void compute(EditOutcome& outcome, const TrimEdit& edit) {
    const TrimRange range = trimRange(outcome.record.x, edit.low, edit.high);
    keepPoints(outcome.record, range.first, range.count);
    outcome.label = "Trim";
    outcome.processingLine = "trim to " + text(edit.low) + " .. " + text(edit.high) + " (" +
                             std::to_string(range.count) + " of " +
                             std::to_string(outcome.pointsIn) + " points kept)";
}

void compute(EditOutcome& outcome, const DespikeEdit& edit) {
    takeSpikes(outcome, RUN_AUTO_CRE(outcome.record.x, outcome.record.y, edit.parameters));
    outcome.label = "Cosmic-Ray Removal";
    outcome.processingLine =
        "cosmic rays removed (threshold " + text(edit.parameters.threshold) +
        " x local noise, width <= " + std::to_string(edit.parameters.maxWidth) +
        " points): " + spikeList(outcome.spikeX);
}

void compute(EditOutcome& outcome, const ManualSpikeEdit& edit) {
    takeSpikes(outcome,
               removeSpikeNear(outcome.record.x, outcome.record.y, edit.x, edit.parameters));
    if (outcome.spikeX.empty()) {
        throw QuarvexError("No spike stands above its neighbours at x = " + text(edit.x) + ".",
                           "Cosmic Rays");
    }
    outcome.label = "Spike Removal";
    outcome.processingLine = "spike removed by hand: " + spikeList(outcome.spikeX);
}

std::string baselineParameters(const BaselineEdit& edit) {
    switch (edit.method) {
    case BaselineMethod::Als:
        return "penalty " + text(edit.als.penalty) + " per x unit^4, asymmetry " +
               text(edit.als.asymmetry);
    case BaselineMethod::Arpls:
        return "penalty " + text(edit.arpls.penalty) + " per x unit^4, tolerance " +
               text(edit.arpls.tolerance);
    case BaselineMethod::Snip:
        return "half-width " + text(edit.snip.halfWidth) + " x units";
    case BaselineMethod::Polynomial: {
        std::string anchors;
        for (const double position : edit.anchors) {
            anchors += ' ' + text(position);
        }
        return "degree " + std::to_string(edit.degree) + " through x =" + anchors;
    }
    }
    return {};
}

void compute(EditOutcome& outcome, const BaselineEdit& edit) {
    outcome.baseline =
        proposedBaseline(outcome.record.x, outcome.record.y, edit, &outcome.baselineIterations);
    for (std::size_t i = 0; i < outcome.record.y.size(); ++i) {
        outcome.record.y[i] -= outcome.baseline[i];
    }
    outcome.label = "Background (" + std::string(baselineMethodName(edit.method)) + ")";
    outcome.processingLine = "background removed, " + std::string(baselineMethodName(edit.method)) +
                             ' ' + baselineParameters(edit) + ", " +
                             std::to_string(outcome.baselineIterations) + " passes";
}

void compute(EditOutcome& outcome, const SmoothEdit& edit) {
    outcome.record.y =
        smoothedValues(outcome.record.x, outcome.record.y, edit, &outcome.windowPoints);
    outcome.label = "Smoothing";
    outcome.processingLine = "Savitzky-Golay smoothing, window " +
                             std::to_string(outcome.windowPoints) + " points, order " +
                             std::to_string(edit.order);
}

} // namespace

std::string_view baselineMethodName(BaselineMethod method) {
    switch (method) {
    case BaselineMethod::Als:
        return "als";
    case BaselineMethod::Arpls:
        return "arpls";
    case BaselineMethod::Snip:
        return "snip";
    case BaselineMethod::Polynomial:
        return "polynomial";
    }
    return "als";
}

std::vector<float> proposedBaseline(std::span<const float> x, std::span<const float> y,
                                    const BaselineEdit& edit, int* iterations) {
    BaselineFit fit;
    switch (edit.method) {
    case BaselineMethod::Als:
        fit = alsBaseline(x, y, edit.als);
        break;
    case BaselineMethod::Arpls:
        fit = arplsBaseline(x, y, edit.arpls);
        break;
    case BaselineMethod::Snip:
        fit = snipBaseline(x, y, edit.snip);
        break;
    case BaselineMethod::Polynomial:
        fit = polynomialBaseline(x, y, edit.anchors, edit.degree);
        break;
    }
    if (iterations != nullptr) {
        *iterations = fit.iterations;
    }
    return std::move(fit.baseline);
}

std::vector<float> smoothedValues(std::span<const float> x, std::span<const float> y,
                                  const SmoothEdit& edit, int* windowPoints) {
    const int points =
        edit.windowPoints > 0 ? edit.windowPoints : windowPointsForWidth(x, edit.width);
    if (windowPoints != nullptr) {
        *windowPoints = points;
    }
    return savitzkyGolay(x, y, {points, edit.order, 0});
}

EditOutcome computeEdit(const SpectrumRecord& record, const SpectrumEdit& edit) {
    EditOutcome outcome;
    outcome.record = record;
    outcome.pointsIn = record.x.size();
    std::visit([&outcome](const auto& e) { compute(outcome, e); }, edit);
    outcome.pointsOut = outcome.record.x.size();
    outcome.record.comments.push_back(std::string(kProcessingKey) + ' ' + outcome.processingLine);
    return outcome;
}

EditOutcome applyEdit(SPECDATA_GLOBALS& specdata, UndoHistory& history,
                      const std::filesystem::path& home, int index, const SpectrumEdit& edit) {
    EditOutcome outcome = computeEdit(spectrumRecord(specdata, index), edit);
    appendUndoRecord(history, home, specdata, index, outcome.label);
    replaceSpectrum(specdata, index, outcome.record);
    return outcome;
}

void ORGANIZE_SAVEFILE(SPECDATA_GLOBALS& specdata, UndoHistory& history, int index,
                       const std::filesystem::path& path, SpectrumFileFormat format) {
    writeSpectrumFile(path, spectrumRecord(specdata, index), format);
    if (format != SpectrumFileFormat::Program) {
        return;
    }
    const auto k = static_cast<std::size_t>(index);
    const std::string oldPath = specdata.PATH[k];
    specdata.PATH[k] = path.string();
    specdata.NAME[k] = path.filename().string();
    for (auto* entries : {&history.undo, &history.redo}) {
        for (UndoEntry& entry : *entries) {
            if (entry.spectrum == index && entry.spectrumPath == oldPath) {
                entry.spectrumPath = specdata.PATH[k];
            }
        }
    }
}

std::vector<float> cleanedValues(std::span<const float> x, std::span<const float> y) {
    const DespikeResult despiked = RUN_AUTO_CRE(x, y);
    const BaselineFit fit = alsBaseline(x, despiked.y, {});
    std::vector<float> cleaned(despiked.y);
    for (std::size_t i = 0; i < cleaned.size(); ++i) {
        cleaned[i] -= fit.baseline[i];
    }
    return cleaned;
}

} // namespace quarvex
