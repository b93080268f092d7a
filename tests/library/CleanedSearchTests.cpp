// Cleaning before the search, on the model library: every entry with a broad background 2 and 5
// times its highest band, three one-point spikes 10 times that band and noise added, cleaned as
// quarvex-cli process --despike --baseline als does, still finds itself first; the spikes are
// gone and the strongest bands keep their height.
#include "TestSupport.h"

#include "common/WorkingFolders.h"
#include "library/DotProdSearch.h"
#include "specdata/SpecDataManager.h"
#include "specdata/SpectrumEdits.h"
#include "specdata/SpectrumRecords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <sstream>

namespace quarvex {
namespace {

struct Tally {
    int cases = 0;
    int selfFirst = 0;
    int spikes = 0;
    int spikesRemoved = 0; // within 5% of the highest band of the value without the spike
    int bandsKept = 0;     // the three strongest bands keep >= 90% of their height
};

// Indices of the three highest local maxima of y (at least 10 points apart).
std::vector<std::size_t> strongestBands(const std::vector<float>& y) {
    std::vector<std::size_t> maxima;
    for (std::size_t i = 1; i + 1 < y.size(); ++i) {
        if (y[i] >= y[i - 1] && y[i] > y[i + 1]) {
            maxima.push_back(i);
        }
    }
    std::sort(maxima.begin(), maxima.end(), [&y](auto a, auto b) { return y[a] > y[b]; });
    std::vector<std::size_t> bands;
    for (const std::size_t i : maxima) {
        if (std::none_of(bands.begin(), bands.end(),
                         [i](std::size_t b) { return (i > b ? i - b : b - i) < 10; }) &&
            bands.size() < 3) {
            bands.push_back(i);
        }
    }
    return bands;
}

class CleanedSearchTest : public ::testing::Test {
protected:
    void SetUp() override {
        SET_UP_FOLDERS(home.path());
        for (const auto& file :
             std::filesystem::directory_iterator(test::sourcePath("data/raman/model_library"))) {
            std::filesystem::copy_file(file.path(),
                                       ramanLibraryFolder(home.path()) / file.path().filename());
        }
        CREATE_SEARCH_LIB(home.path());
    }

    // One entry with a background `factor` times its highest band.
    void examine(const std::filesystem::path& file, double factor, std::mt19937& random,
                 Tally& tally) {
        SPECDATA_GLOBALS specdata;
        MINERALINFO info;
        const SpectrumRecord model =
            spectrumRecord(specdata, READ_SPECDATA_FILE(specdata, info, file));
        const std::size_t n = model.y.size();
        const float highest = *std::max_element(model.y.begin(), model.y.end());
        std::uniform_real_distribution<double> uniform(0.0, 1.0);
        std::normal_distribution<double> noise(0.0, 0.01 * highest);
        // A Gaussian hump whose centre and width vary from entry to entry, on a gentle slope.
        const double centre =
            model.x.front() + uniform(random) * (model.x.back() - model.x.front());
        const double sigma = 400.0 + 800.0 * uniform(random);
        SpectrumRecord measured = model;
        std::vector<float> withoutSpikes(n);
        for (std::size_t i = 0; i < n; ++i) {
            const double u = (model.x[i] - centre) / sigma;
            const double background = factor * highest * (0.8 * std::exp(-0.5 * u * u) + 0.2);
            withoutSpikes[i] = static_cast<float>(model.y[i] + background + noise(random));
        }
        measured.y = withoutSpikes;
        std::vector<std::size_t> spikes;
        while (spikes.size() < 3) {
            const auto i =
                static_cast<std::size_t>(10 + uniform(random) * static_cast<double>(n - 20));
            if (std::none_of(spikes.begin(), spikes.end(),
                             [i](std::size_t s) { return (i > s ? i - s : s - i) < 10; })) {
                spikes.push_back(i);
                measured.y[i] += 10.0F * highest;
            }
        }

        const EditOutcome despiked = computeEdit(measured, DespikeEdit{});
        const EditOutcome cleaned = computeEdit(despiked.record, BaselineEdit{});

        READ_LIBRARY(ramanLibraryFolder(home.path()), cleaned.record.x, cleaned.record.y, library);
        const auto best = static_cast<std::size_t>(library.MI_SORTINDEXPERCENTS.front());
        const bool first = library.MI_FILENAMES[best] == file.filename().string();
        ++tally.cases;
        tally.selfFirst += first ? 1 : 0;
        for (const std::size_t i : spikes) {
            ++tally.spikes;
            tally.spikesRemoved +=
                std::abs(despiked.record.y[i] - withoutSpikes[i]) <= 0.05F * highest ? 1 : 0;
        }
        bool kept = true;
        std::ostringstream ratios;
        for (const std::size_t band : strongestBands(model.y)) {
            kept = kept && cleaned.record.y[band] >= 0.9F * model.y[band];
            ratios << ' ' << model.x[band] << ':' << cleaned.record.y[band] / model.y[band];
        }
        tally.bandsKept += kept ? 1 : 0;
        if (!first || !kept) {
            std::cout << file.filename().string() << " x" << factor << ": "
                      << (first ? "" : "not first ") << (kept ? "" : "bands not kept")
                      << ratios.str() << '\n';
        }
    }

    test::TempFolder home;
    LIBRARY_GLOBALS library;
};

TEST_F(CleanedSearchTest, ModelLibraryWithBackgroundSpikesAndNoiseIsIdentified) {
    std::mt19937 random(2024);
    for (const double factor : {2.0, 5.0}) {
        Tally tally;
        for (const auto& file :
             std::filesystem::directory_iterator(test::sourcePath("data/raman/model_library"))) {
            examine(file.path(), factor, random, tally);
        }
        ASSERT_EQ(tally.cases, 67);
        EXPECT_GE(tally.selfFirst, 0.95 * tally.cases) << "background x" << factor;
        EXPECT_EQ(tally.spikesRemoved, tally.spikes) << "background x" << factor;
        EXPECT_GE(tally.bandsKept, 0.9 * tally.cases) << "background x" << factor;
        std::cout << "background x" << factor << ": " << tally.selfFirst << " of " << tally.cases
                  << " first, " << tally.spikesRemoved << " of " << tally.spikes
                  << " spikes removed, bands kept in " << tally.bandsKept << '\n';
    }
}

} // namespace
} // namespace quarvex
