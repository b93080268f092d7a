// The mixture search: the shipped mixtures and pairs of model-library spectra give back the
// components they were built from; the signal shares add up; bad component counts are refused.
#include "TestSupport.h"
#include "library/LibraryTestSupport.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "library/MixtureSearch.h"
#include "specdata/SpecDataManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace quarvex {
namespace {

class MixtureSearchTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        home = new test::TempFolder;
        test::compileModelLibrary(home->path());
        models = new MixtureLibrary(loadMixtureLibrary(folder()));
    }
    static void TearDownTestSuite() {
        delete models;
        delete home;
        models = nullptr;
        home = nullptr;
    }

    static std::filesystem::path folder() { return ramanLibraryFolder(home->path()); }

    // The names of the components found in (x, y).
    std::vector<std::string> components(std::span<const float> x, std::span<const float> y,
                                        int most = kDefaultMixtureComponents) {
        std::optional<LibraryCompilation> compilation;
        const MixtureResult result = searchMixture(home->path(), x, y, most, library, compilation);
        std::vector<std::string> names;
        double shares = result.residualFraction;
        for (const MixtureComponent& component : result.components) {
            names.push_back(library.MINAMES[component.entry]);
            shares += component.fraction;
            EXPECT_GT(component.fraction, 0.0);
        }
        EXPECT_NEAR(shares, 1.0, 1.0e-9) << "the shares of the signal add up to 1";
        return names;
    }

    static test::TempFolder* home;
    static MixtureLibrary* models;
    LIBRARY_GLOBALS library;
};

test::TempFolder* MixtureSearchTest::home = nullptr;
MixtureLibrary* MixtureSearchTest::models = nullptr;

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

TEST_F(MixtureSearchTest, ShippedMixturesGiveTheirComponents) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"mixture_calcite_dolomite_quartz.txt", {"Calcite", "Dolomite", "Quartz"}},
        {"mixture_forsterite_enstatite.txt", {"Forsterite", "Enstatite"}},
        {"mixture_quartz_albite_muscovite.txt", {"Quartz", "Albite", "Muscovite"}},
    };
    for (const auto& [file, stated] : cases) {
        SPECDATA_GLOBALS specdata;
        MINERALINFO info;
        const int index =
            READ_SPECDATA_FILE(specdata, info, test::sourcePath("data/raman/examples") / file);
        const std::vector<std::string> found =
            components(specdata.xValues(index), specdata.yValues(index));
        for (const std::string& mineral : stated) {
            EXPECT_TRUE(contains(found, mineral)) << file << ": " << mineral << " not found";
        }
    }
}

TEST_F(MixtureSearchTest, PureEntryIsOneComponentExplainingAlmostAll) {
    SPECDATA_GLOBALS specdata;
    MINERALINFO info;
    const int index = READ_SPECDATA_FILE(
        specdata, info, test::sourcePath("data/raman/model_library/Calcite_M00014_532.txt"));
    std::optional<LibraryCompilation> compilation;
    const MixtureResult result = searchMixture(home->path(), specdata.xValues(index),
                                               specdata.yValues(index), 3, library, compilation);
    ASSERT_FALSE(result.components.empty());
    EXPECT_EQ(library.MINAMES[result.components[0].entry], "Calcite");
    EXPECT_EQ(result.components[0].shift, 0);
    // Only the resampling from 0.5 to 1 cm-1 and the background removal separate the two.
    EXPECT_GT(result.components[0].fraction, 0.95);
    EXPECT_LT(result.residualFraction, kMixtureResidualShare);
}

TEST_F(MixtureSearchTest, ComponentCountBelowOneIsRefused) {
    const std::vector<float> x{100.0F, 200.0F, 300.0F};
    for (const int most : {0, -2}) {
        std::optional<LibraryCompilation> compilation;
        EXPECT_THROW(searchMixture(home->path(), x, x, most, library, compilation), QuarvexError);
    }
}

// Two model spectra mixed 0.5/0.5 and 0.7/0.3 (each at its highest point 1000), noise at
// S/N 20 of the mixture's highest point: both among the first two components found.
TEST_F(MixtureSearchTest, PairsOfModelSpectra) {
    std::vector<std::vector<float>> spectra;
    std::vector<std::string> names;
    // Every model starts at 100 cm-1 in steps of 0.5; beyond its end a model is 0.
    constexpr std::size_t kPoints = 7401; // 100 to 3800 cm-1
    for (const auto& file :
         std::filesystem::directory_iterator(test::sourcePath("data/raman/model_library"))) {
        SPECDATA_GLOBALS specdata;
        MINERALINFO info;
        const int index = READ_SPECDATA_FILE(specdata, info, file.path());
        ASSERT_EQ(specdata.xValues(index).front(), 100.0F);
        std::vector<float> y(kPoints, 0.0F);
        const std::span<const float> values = specdata.yValues(index);
        std::copy_n(values.begin(), std::min(values.size(), kPoints), y.begin());
        spectra.push_back(std::move(y));
        names.push_back(
            file.path().filename().string().substr(0, file.path().filename().string().find('_')));
    }
    std::vector<float> x(kPoints);
    for (std::size_t i = 0; i < kPoints; ++i) {
        x[i] = 100.0F + 0.5F * static_cast<float>(i);
    }
    components(x, spectra[0]); // the entry descriptions into `library`
    std::mt19937 random(1415);
    std::uniform_int_distribution<std::size_t> pick(0, spectra.size() - 1);
    int cases = 0;
    int both = 0;
    for (int pair = 0; pair < 60; ++pair) {
        const std::size_t a = pick(random);
        std::size_t b = pick(random);
        while (b == a) {
            b = pick(random);
        }
        for (const double weight : {0.5, 0.7}) {
            std::vector<float> y(kPoints);
            for (std::size_t i = 0; i < kPoints; ++i) {
                y[i] = static_cast<float>(weight * spectra[a][i] + (1.0 - weight) * spectra[b][i]);
            }
            std::normal_distribution<float> noise(0.0F,
                                                  *std::max_element(y.begin(), y.end()) / 20.0F);
            for (float& v : y) {
                v += noise(random);
            }
            std::vector<std::string> found;
            for (const MixtureComponent& component :
                 mixtureSearch(backgroundFreeUnknown(x, y), *models, 2).components) {
                found.push_back(library.MINAMES[component.entry]);
            }
            ++cases;
            const bool right = contains(found, names[a]) && contains(found, names[b]);
            both += right ? 1 : 0;
            if (!right) {
                std::cout << names[a] << ' ' << weight << " + " << names[b] << ": "
                          << (found.empty() ? "" : found[0]) << ' '
                          << (found.size() > 1 ? found[1] : "") << '\n';
            }
        }
    }
    EXPECT_GE(both, 0.9 * cases);
    std::cout << both << " of " << cases << " pairs both found\n";
}

} // namespace
} // namespace quarvex
