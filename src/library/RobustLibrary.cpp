#include "library/RobustLibrary.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "library/CreateLibraryFile.h"
#include "library/DotProdSearch.h"
#include "library/LibraryFileReader.h"
#include "processing/AlsBaseline.h"
#include "processing/InterpAndNorm.h"
#include "processing/SavitzkyGolay.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numeric>

namespace quarvex {

namespace {

constexpr std::size_t kNameWidth = 150;
constexpr std::string_view kSeparatorLine = "==\n";
// A band must rise this many noise deviations above the median of the cleaned unknown.
constexpr float kBandAboveNoise = 6.0F;

// The median of the values (a copy is partly sorted).
float median(std::vector<float> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The noise deviation of evenly spaced values from the median of their absolute second
// differences: broad bands hardly move it, white noise of deviation s gives s.
float noiseDeviation(std::span<const float> y) {
    std::vector<float> second(y.size() - 2);
    for (std::size_t i = 1; i + 1 < y.size(); ++i) {
        second[i - 1] = std::fabs(y[i - 1] - 2.0F * y[i] + y[i + 1]);
    }
    // median |N(0, 6 s^2)| = 0.6745 sqrt(6) s
    return median(std::move(second)) / (0.6745F * std::sqrt(6.0F));
}

// True when the highest value stands more than kBandAboveNoise noise deviations above the median.
bool hasBandAboveNoise(std::span<const float> y) {
    const float highest = *std::max_element(y.begin(), y.end());
    return highest - median({y.begin(), y.end()}) > kBandAboveNoise * noiseDeviation(y);
}

[[noreturn]] void throwNeedsCompiling() {
    throw QuarvexError(std::string(kNeedsCompilingText), std::string(kLibraryErrorTitle));
}

// The whole-number grid first, first + 1, ... of `count` points, as floats.
std::vector<float> wholeGrid(int first, std::size_t count) {
    std::vector<float> x(count);
    std::iota(x.begin(), x.end(), static_cast<float>(first));
    return x;
}

} // namespace

void forEachLibraryBlock(const std::filesystem::path& path,
                         const std::function<void(RobustSpectrum&, double)>& use) {
    LibraryFileReader file(path);
    if (!file.isOpen()) {
        throwNeedsCompiling();
    }
    RobustSpectrum block;
    bool more = file.skipPastSeparator();
    while (more) {
        std::string_view nameLine;
        if (!file.next(nameLine, kNameWidth)) {
            break;
        }
        block.name = trimmed(nameLine);
        block.values.clear();
        float x = 0.0F;
        float y = 0.0F;
        bool inRun = true;
        LibraryFileReader::Line line = LibraryFileReader::Line::Pair;
        while ((line = file.nextPair(x, y)) == LibraryFileReader::Line::Pair) {
            if (block.values.empty()) {
                block.first = static_cast<int>(std::lround(x));
            }
            inRun = inRun &&
                    x == static_cast<float>(block.first) + static_cast<float>(block.values.size());
            if (inRun) {
                block.values.push_back(y);
            }
        }
        more = line == LibraryFileReader::Line::Separator ||
               (line == LibraryFileReader::Line::Unreadable && file.skipPastSeparator());
        use(block, file.fractionRead());
    }
}

namespace {

void appendBlock(std::string& out, const RobustSpectrum& spectrum) {
    out.append(kSeparatorLine);
    out.append(spectrum.name);
    out.push_back('\n');
    std::array<char, 40> text{};
    for (std::size_t i = 0; i < spectrum.values.size(); ++i) {
        char* end = std::to_chars(text.data(), text.data() + text.size(),
                                  spectrum.first + static_cast<int>(i))
                        .ptr;
        *end++ = ' ';
        end = std::to_chars(end, text.data() + text.size(), spectrum.values[i]).ptr;
        *end++ = '\n';
        out.append(text.data(), end);
    }
}

} // namespace

std::vector<float> robustTransform(int first, std::span<const float> gridValues) {
    if (gridValues.size() < static_cast<std::size_t>(kDerivativeWindow)) {
        return {};
    }
    std::vector<float> roots(gridValues.size());
    std::transform(gridValues.begin(), gridValues.end(), roots.begin(),
                   [](float v) { return v > 0.0F ? std::sqrt(v) : 0.0F; });
    return savitzkyGolay(wholeGrid(first, roots.size()), roots,
                         {kDerivativeWindow, kDerivativeOrder, 1});
}

RobustSpectrum backgroundFreeUnknown(std::span<const float> x, std::span<const float> y) {
    const InterpData grid = resampleSpectrum(x, y, kFineStep, false);
    if (grid.capacity() < kDerivativeWindow) {
        throw QuarvexError("The selected area spans " + std::to_string(grid.capacity()) +
                               " points of the 1 cm-1 grid: the robust search needs at least " +
                               std::to_string(kDerivativeWindow) +
                               ", the width of its derivative window.",
                           std::string(kLibraryErrorTitle));
    }
    if (!std::all_of(grid.y.begin(), grid.y.end(), [](float v) { return std::isfinite(v); })) {
        throw QuarvexError("The selected area holds values that are not numbers.",
                           std::string(kLibraryErrorTitle));
    }
    RobustSpectrum clean;
    clean.first = static_cast<int>(std::lround(grid.x.front()));
    const BaselineFit background = alsBaseline(grid.x, grid.y, AlsParameters{});
    clean.values.resize(grid.y.size());
    std::transform(grid.y.begin(), grid.y.end(), background.baseline.begin(), clean.values.begin(),
                   std::minus<>());
    return clean;
}

RobustSpectrum robustView(const RobustSpectrum& clean) {
    RobustSpectrum view{clean.name, clean.first, {}};
    // Without a band the transform would only magnify the rounding left by the background.
    if (clean.values.size() >= 3 && hasBandAboveNoise(clean.values)) {
        view.values = robustTransform(clean.first, clean.values);
    }
    return view;
}

RobustSpectrum robustUnknown(std::span<const float> x, std::span<const float> y) {
    return robustView(backgroundFreeUnknown(x, y));
}

void compileRobustLibrary(const std::filesystem::path& folder, const ProgressCallback& progress) {
    AtomicFile file(folder / kRobustLibraryFile);
    std::string text;
    forEachLibraryBlock(folder / kSlowLibraryFile, [&](RobustSpectrum& entry, double fraction) {
        entry.values = robustTransform(entry.first, entry.values);
        text.clear();
        appendBlock(text, entry);
        file.stream().write(text.data(), static_cast<std::streamsize>(text.size()));
        reportProgress(progress, kCompilingStatus, fraction);
    });
    if (!file.isOpen() || !file.commit()) {
        throw QuarvexError("The robust library file cannot be written in " + folder.string(),
                           std::string(kLibraryErrorTitle));
    }
}

} // namespace quarvex
