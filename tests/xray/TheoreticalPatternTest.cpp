// Theoretical powder patterns: peaks at the Bragg angle with the chosen width, the default
// range, counting noise with the right statistics, bad settings, and the file read back.
#include "TestSupport.h"

#include "common/QuarvexError.h"
#include "specdata/SpecDataManager.h"
#include "xray/TheoreticalPattern.h"
#include "xray/XrayDataAndFileManager.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace quarvex {
namespace {

constexpr double kDegree = 3.141592653589793 / 180.0;

// Where `y` crosses `level` by linear interpolation: the first crossing upwards and the last
// downwards.
std::pair<double, double> crossings(const TheoreticalPattern& p, double level) {
    double rise = 0.0;
    double fall = 0.0;
    for (std::size_t i = 1; i < p.x.size(); ++i) {
        const double a = p.y[i - 1] - level;
        const double b = p.y[i] - level;
        const double at = p.x[i - 1] + (p.x[i] - p.x[i - 1]) * a / (a - b);
        if (a < 0.0 && b >= 0.0 && rise == 0.0) {
            rise = at;
        } else if (a >= 0.0 && b < 0.0) {
            fall = at;
        }
    }
    return {rise, fall};
}

DIFF_GLOBALS quartz() {
    DIFF_GLOBALS diff;
    OPEN_AND_READ_DIFF_FILE(diff, test::sourcePath("data/xray/reference/Quartz.out"), {});
    return diff;
}

TEST(TheoreticalPattern, OnePeakSitsAtItsBraggAngleWithItsWidth) {
    const struct {
        double wavelength, fwhm, step, zeroShift;
    } rows[] = {
        {1.540562, 0.10, 0.01, 0.0}, {0.709319, 0.05, 0.005, 0.03}, {1.540562, 0.30, 0.02, -0.05}};
    const std::vector<float> d{3.3427F};
    const std::vector<float> intensity{100.0F};
    for (const auto& row : rows) {
        TheoreticalPatternSettings settings;
        settings.wavelength = row.wavelength;
        settings.fwhm = row.fwhm;
        settings.step = row.step;
        settings.zeroShift = row.zeroShift;
        const TheoreticalPattern p = theoreticalPattern(d, intensity, settings);
        const double bragg =
            2.0 * std::asin(row.wavelength / (2.0 * 3.3427F)) / kDegree + row.zeroShift;
        // Half the height is reached half a width from the centre on either side.
        const auto [rise, fall] = crossings(p, 50.0);
        const std::string what = "wavelength " + std::to_string(row.wavelength);
        EXPECT_NEAR(0.5 * (rise + fall), bragg, 2e-4) << what;
        EXPECT_NEAR(fall - rise, row.fwhm, 0.01 * row.fwhm) << what;
        EXPECT_EQ(p.reflections, 1) << what;
        EXPECT_EQ(p.wavelength, row.wavelength) << what;
        EXPECT_NEAR(p.x[1] - p.x[0], row.step, 1e-12) << what;
    }
}

TEST(TheoreticalPattern, DefaultRangeReachesPastTheFirstAndLastReflection) {
    const DIFF_GLOBALS diff = quartz();
    const TheoreticalPattern p = theoreticalPattern(diff, 0, {});
    // Quartz.out runs from 20.86 to 87.47 degrees at its own wavelength.
    EXPECT_EQ(p.x.front(), 18.0);
    EXPECT_NEAR(p.x.back(), 90.0, 1e-9);
    EXPECT_EQ(p.x.size(), 7201U);
    EXPECT_EQ(p.reflections, diff.NUMDATA[0]);

    TheoreticalPatternSettings narrow;
    narrow.from = 20.0;
    narrow.to = 30.005;
    narrow.step = 0.02;
    const TheoreticalPattern q = theoreticalPattern(diff, 0, narrow);
    EXPECT_EQ(q.x.size(), 501U); // the last point stays within the range
    EXPECT_NEAR(q.x.back(), 30.0, 1e-9);
}

TEST(TheoreticalPattern, CountingNoiseHasTheStatisticsOfCounts) {
    const DIFF_GLOBALS diff = quartz();
    TheoreticalPatternSettings settings;
    const TheoreticalPattern clean = theoreticalPattern(diff, 0, settings);
    settings.noise = 10000.0;
    settings.seed = 7;
    const TheoreticalPattern noisy = theoreticalPattern(diff, 0, settings);
    EXPECT_EQ(theoreticalPattern(diff, 0, settings).y, noisy.y) << "a seed repeats its pattern";
    settings.seed = 8;
    EXPECT_NE(theoreticalPattern(diff, 0, settings).y, noisy.y);

    // The strongest line (100) gets 10000 counts over a background of 200; each point is a
    // whole count whose deviation, in units of sqrt(expected), is standard normal.
    std::vector<double> z;
    for (std::size_t i = 0; i < clean.y.size(); ++i) {
        const double expected = 200.0 + clean.y[i] * 100.0;
        ASSERT_EQ(noisy.y[i], std::round(noisy.y[i]));
        z.push_back((noisy.y[i] - expected) / std::sqrt(expected));
    }
    const double n = static_cast<double>(z.size());
    const double mean = std::accumulate(z.begin(), z.end(), 0.0) / n;
    const double square = std::inner_product(z.begin(), z.end(), z.begin(), 0.0) / n;
    EXPECT_NEAR(mean, 0.0, 0.05);
    EXPECT_NEAR(std::sqrt(square - mean * mean), 1.0, 0.05);
}

TEST(TheoreticalPattern, BadSettingsAreRefused) {
    const std::vector<float> d{3.3427F};
    const std::vector<float> intensity{100.0F};
    const auto with = [](auto change) {
        TheoreticalPatternSettings settings;
        change(settings);
        return settings;
    };
    const struct {
        const char* what;
        TheoreticalPatternSettings settings;
        std::vector<float> d;
    } rows[] = {
        {"zero FWHM", with([](auto& s) { s.fwhm = 0.0; }), d},
        {"negative step", with([](auto& s) { s.step = -0.01; }), d},
        {"NaN wavelength", with([](auto& s) { s.wavelength = std::nan(""); }), d},
        {"range upside down", with([](auto& s) {
             s.from = 40.0;
             s.to = 30.0;
         }),
         d},
        {"range beyond 180", with([](auto& s) { s.to = 185.0; }), d},
        {"too many points", with([](auto& s) {
             s.to = 170.0;
             s.step = 1e-5;
         }),
         d},
        {"no count", with([](auto& s) { s.noise = 0.0; }), d},
        {"out of reach, no range", with([](auto&) {}), {0.5F}},
    };
    for (const auto& row : rows) {
        try {
            theoreticalPattern(row.d, intensity, row.settings);
            ADD_FAILURE() << row.what;
        } catch (const QuarvexError& error) {
            EXPECT_EQ(error.title(), "X-ray Diffraction") << row.what;
        }
    }
}

TEST(TheoreticalPattern, WrittenFileReadsBackAsADiffractionPattern) {
    const DIFF_GLOBALS diff = quartz();
    TheoreticalPatternSettings settings;
    settings.noise = 5000.0;
    const TheoreticalPattern p = theoreticalPattern(diff, 0, settings);
    const std::vector<std::string> notes = theoreticalPatternNotes(diff, 0, settings, p);
    ASSERT_EQ(notes.size(), 4U); // synthetic, profile, range, noise (no zero shift)
    EXPECT_EQ(notes[0], "synthetic: theoretical powder pattern of Quartz (Quartz.out), not a "
                        "measurement");
    test::TempFolder folder;
    writeTheoreticalPattern(folder.path() / "q.txt", p, "Quartz", notes);

    SPECDATA_GLOBALS specdata;
    MINERALINFO header;
    const int k = READ_SPECDATA_FILE(specdata, header, folder.path() / "q.txt");
    EXPECT_EQ(specdata.DTYPE[0], "XRD");
    EXPECT_EQ(specdata.WAVE_INFO[0], "1.540562");
    EXPECT_EQ(header.names, "Quartz");
    ASSERT_EQ(specdata.NUMDATA[0], static_cast<int>(p.x.size()));
    for (std::size_t i = 0; i < p.x.size(); i += 97) {
        EXPECT_NEAR(specdata.xValues(k)[i], p.x[i], 1e-4) << i;
        EXPECT_EQ(specdata.yValues(k)[i], static_cast<float>(p.y[i])) << i; // whole counts
    }
}

} // namespace
} // namespace quarvex
