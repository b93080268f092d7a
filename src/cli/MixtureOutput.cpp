#include "cli/MixtureOutput.h"

#include <array>
#include <cstdio>

namespace quarvex::cli {

Json mixtureJson(const MixtureResult& mixture, const LIBRARY_GLOBALS& library) {
    Json components = Json::array();
    for (const MixtureComponent& component : mixture.components) {
        components.push_back(Json{{"file", library.MI_FILENAMES[component.entry]},
                                  {"names", library.MINAMES[component.entry]},
                                  {"score", component.score},
                                  {"fraction", component.fraction},
                                  {"shift", component.shift}});
    }
    return Json{{"components", components}, {"residual_fraction", mixture.residualFraction}};
}

void printMixture(const MixtureResult& mixture, const LIBRARY_GLOBALS& library, std::ostream& out) {
    out << "Component   Score  Fraction  Shift  File  (Names)\n";
    std::array<char, 64> figures{};
    for (std::size_t i = 0; i < mixture.components.size(); ++i) {
        const MixtureComponent& component = mixture.components[i];
        std::snprintf(figures.data(), figures.size(), "%9zu  %6.2f  %7.1f%%  %5d", i + 1,
                      component.score, 100.0 * component.fraction, component.shift);
        out << figures.data() << "  " << library.MI_FILENAMES[component.entry] << "  ("
            << library.MINAMES[component.entry] << ")\n";
    }
    if (mixture.components.empty()) {
        out << "No component found: no band stands above the noise.\n";
    }
    std::snprintf(figures.data(), figures.size(), "%.1f%%", 100.0 * mixture.residualFraction);
    out << "Residual: " << figures.data() << " of the signal\n";
}

} // namespace quarvex::cli
