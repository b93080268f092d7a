// Wavelengths stated in free header text: the forms pattern files use, and lines that state
// none (the values are the lines' own numbers, converted to angstroms by hand).
#include "readers/StatedWavelength.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace quarvex {
namespace {

TEST(StatedWavelength, ReadsTheFormsFilesUseAndNothingElse) {
    struct Case {
        std::string line;
        std::optional<double> angstroms;
    };
    const std::vector<Case> cases = {
        {"# Wavelength: 1.540598", 1.540598},
        {"# wavelength = 1.5406 A", 1.5406},
        {"lambda = 1.78897 A", 1.78897},
        {"# Wavelength: 7.2932e-11 m", 0.72932},
        {"# Wavelength: 1.0332e-10 m", 1.0332},
        {"# wavelength (nm): 0.154056", 1.54056},
        {"# lambda 0.0709317 nm", 0.709317},
        {"! Cu K-alpha1 1.540562", 1.540562},
        {"; Cu Ka1 = 1.5406 Angstrom", 1.5406},
        {"Kalpha1: 1.5406", 1.5406},
        {"# Lambda1 = 1.5406", 1.5406},
        {"# wavelength [A] 0.4959", 0.4959},
        {"test scan, Mo K-alpha1 0.70932", 0.70932},
        {"# 2theta counts", std::nullopt},
        {"# wavelength unknown", std::nullopt},
        {"# wavelength: 532 nm", std::nullopt},    // a laser line, not an X-ray wavelength
        {"# wavelength: 0.0001", std::nullopt},    // below 0.05 A
        {"# wavelength: 1.5406 um", std::nullopt}, // a unit we do not read
        {"# wavelength (pm): 154.06", std::nullopt},
        {"# wavelength (A): 1.5406 nm", std::nullopt}, // two units
        {"# Alpha1-quartz 1.5", std::nullopt},         // text between keyword and number
        {"# xlambda = 1.5", std::nullopt},             // the keyword inside a word
        {"# wavelength: (A", std::nullopt},
        {"", std::nullopt},
    };
    for (const Case& c : cases) {
        const std::optional<double> stated = statedWavelength(c.line);
        ASSERT_EQ(stated.has_value(), c.angstroms.has_value()) << c.line;
        if (stated) {
            EXPECT_EQ(*stated, *c.angstroms) << c.line; // the written digits, exactly
        }
    }
}

} // namespace
} // namespace quarvex
