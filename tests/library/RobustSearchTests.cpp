// The robust search mode: shifts found exactly on synthetic bands, bad input, the robust file
// derived on demand, the measured examples, and the model library under a background twice its
// highest band, a calibration shift of +-2 cm-1 and noise at S/N 20.
#include "TestSupport.h"
#include "library/LibraryTestSupport.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "library/RobustSearch.h"
#include "specdata/SpecDataManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace quarvex {
namespace {

// Lorentzian bands of the given centres on the whole-number grid from `first`, `count` points.
std::vector<float> bands(int first, std::size_t count, std::initializer_list<double> centres) {
    std::vector<float> y(count);
    for (std::size_t i = 0; i < count; ++i) {
        double sum = 0.0;
        for (const double c : centres) {
            const double u = (first + static_cast<double>(i) - c) / 5.0;
            sum += 1.0 / (1.0 + u * u);
        }
        y[i] = static_cast<float>(sum);
    }
    return y;
}

RobustSpectrum transformed(int first, const std::vector<float>& y) {
    return {"", first, robustTransform(first, y)};
}

TEST(RobustMatchTest, FindsTheShiftOfMovedBands) {
    const RobustSpectrum entry = transformed(200, bands(200, 801, {400.0, 610.0, 777.0}));
    for (int shift = -kMaxShift; shift <= kMaxShift; ++shift) {
        const auto centre = [shift](double c) { return c + shift; };
        const RobustSpectrum unknown =
            transformed(250, bands(250, 701, {centre(400.0), centre(610.0), centre(777.0)}));
        const RobustMatch match = robustMatch(unknown, entry);
        EXPECT_EQ(match.shift, shift);
        // Bands far from both ends: the moved spectra are the same values, cosine 1.
        EXPECT_NEAR(match.score, 100.0, 1.0e-3) << "shift " << shift;
    }
    // Beyond the shifts tried the score falls and the nearest shift is reported.
    const RobustSpectrum far = transformed(250, bands(250, 701, {406.0, 616.0, 783.0}));
    const RobustMatch match = robustMatch(far, entry);
    EXPECT_EQ(match.shift, kMaxShift);
    EXPECT_LT(match.score, 90.0);
}

TEST(RobustMatchTest, NoOverlapNoValuesOrFlatGiveZero) {
    const RobustSpectrum entry = transformed(200, bands(200, 301, {300.0}));
    EXPECT_EQ(robustMatch(transformed(600, bands(600, 301, {700.0})), entry).score, 0.0);
    EXPECT_EQ(robustMatch(RobustSpectrum{}, entry).score, 0.0);
    EXPECT_EQ(robustMatch(transformed(200, std::vector<float>(301, 5.0F)), entry).score, 0.0);
    EXPECT_TRUE(robustTransform(0, std::vector<float>(kDerivativeWindow - 1, 1.0F)).empty());
}

class RobustSearchTest : public ::testing::Test {
protected:
    // The model library, compiled: the robust file is left for the first robust search.
    static void SetUpTestSuite() {
        home = new test::TempFolder;
        test::compileModelLibrary(home->path());
    }
    static void TearDownTestSuite() {
        delete home;
        home = nullptr;
    }

    static std::filesystem::path folder() { return ramanLibraryFolder(home->path()); }

    // The file name of the best entry of a robust search of (x, y).
    std::string best(std::span<const float> x, std::span<const float> y) {
        searchLibrary(home->path(), x, y, library, SearchMode::Robust);
        return library.MI_FILENAMES[static_cast<std::size_t>(library.MI_SORTINDEXPERCENTS[0])];
    }

    static test::TempFolder* home;
    LIBRARY_GLOBALS library;
};

test::TempFolder* RobustSearchTest::home = nullptr;

TEST_F(RobustSearchTest, RobustFileIsDerivedWhenMissingAndDroppedByACompilation) {
    std::filesystem::remove(folder() / kRobustLibraryFile);
    std::vector<float> x;
    for (int i = 100; i <= 1200; ++i) {
        x.push_back(static_cast<float>(i));
    }
    const std::vector<float> y = bands(100, x.size(), {1086.0, 712.0, 281.0});
    best(x, y);
    EXPECT_TRUE(std::filesystem::exists(folder() / kRobustLibraryFile));
    EXPECT_EQ(library.MATCH_SHIFT.size(), library.PERC_MATCH.size());
    CREATE_SEARCH_LIB(home->path());
    EXPECT_FALSE(std::filesystem::exists(folder() / kRobustLibraryFile));
    EXPECT_THROW(forEachLibraryBlock(folder() / kRobustLibraryFile, {}), QuarvexError);
}

TEST_F(RobustSearchTest, BadUnknowns) {
    const std::vector<float> narrowX{500.0F, 504.0F, 508.0F, 512.0F};
    const std::vector<float> narrowY{1.0F, 3.0F, 2.0F, 1.0F};
    EXPECT_THROW(best(narrowX, narrowY), QuarvexError);

    // Nothing above the noise: a ranking with the verdict, no error.
    std::vector<float> x;
    std::vector<float> flat;
    std::vector<float> noise;
    std::mt19937 random(7);
    std::normal_distribution<float> normal(0.0F, 1.0F);
    for (int i = 150; i <= 1500; ++i) {
        x.push_back(static_cast<float>(i));
        flat.push_back(100.0F);
        noise.push_back(100.0F + normal(random));
    }
    for (const auto* y : {&flat, &noise}) {
        EXPECT_NO_THROW(best(x, *y));
        EXPECT_TRUE(noGoodMatch(library));
    }
}

TEST_F(RobustSearchTest, MeasuredExamplesRankTheirMineralFirst) {
    const std::pair<const char*, const char*> cases[] = {
        {"anatase_in_matrix_bwtek_785nm_fnmt.txt", "Anatase"},
        {"anatase_in_matrix_bwtek_785nm_icv.txt", "Anatase"},
        {"calcite_bwtek_532nm_fnmt.txt", "Calcite"},
        {"calcite_bwtek_532nm_icv.txt", "Calcite"},
        {"calcite_bwtek_785nm_icv.txt", "Calcite"},
        {"calcite_horiba_633nm_top.txt", "Calcite"},
    };
    for (const auto& [file, mineral] : cases) {
        SPECDATA_GLOBALS specdata;
        MINERALINFO info;
        const int index =
            READ_SPECDATA_FILE(specdata, info, test::sourcePath("data/raman/examples") / file);
        best(specdata.xValues(index), specdata.yValues(index));
        const auto k = static_cast<std::size_t>(library.MI_SORTINDEXPERCENTS[0]);
        EXPECT_EQ(library.MINAMES[k], mineral) << file;
        EXPECT_FALSE(noGoodMatch(library)) << file;
    }
}

TEST_F(RobustSearchTest, ModelLibraryWithBackgroundShiftAndNoise) {
    std::mt19937 random(1414);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    int cases = 0;
    int first = 0;
    int verdicts = 0;
    for (const auto& file :
         std::filesystem::directory_iterator(test::sourcePath("data/raman/model_library"))) {
        SPECDATA_GLOBALS specdata;
        MINERALINFO info;
        const int index = READ_SPECDATA_FILE(specdata, info, file.path());
        const std::span<const float> x = specdata.xValues(index);
        const std::span<const float> y = specdata.yValues(index);
        const double highest = *std::max_element(y.begin(), y.end());
        for (const float shift : {-2.0F, 2.0F}) {
            std::normal_distribution<double> noise(0.0, highest / 20.0);
            // A broad hump on a slope, together twice the highest band at their top.
            const double centre = x.front() + uniform(random) * (x.back() - x.front());
            const double sigma = 300.0 + 900.0 * uniform(random);
            std::vector<float> movedX(x.size());
            std::vector<float> measured(x.size());
            for (std::size_t i = 0; i < x.size(); ++i) {
                const double u = (x[i] - centre) / sigma;
                const double slope = (x[i] - x.front()) / (x.back() - x.front());
                const double background =
                    2.0 * highest * (0.7 * std::exp(-0.5 * u * u) + 0.3 * slope);
                movedX[i] = x[i] + shift;
                measured[i] = static_cast<float>(y[i] + background + noise(random));
            }
            const bool right = best(movedX, measured) == file.path().filename().string();
            ++cases;
            first += right ? 1 : 0;
            verdicts += noGoodMatch(library) ? 1 : 0;
            if (!right) {
                std::cout << file.path().filename().string() << " shift " << shift
                          << ": not first\n";
            }
        }
    }
    ASSERT_EQ(cases, 134);
    EXPECT_GE(first, 0.97 * cases);
    EXPECT_EQ(verdicts, 0) << "a right match called no good match";
    std::cout << first << " of " << cases << " first\n";
}

} // namespace
} // namespace quarvex
