#include "cli/ExplainOutput.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace quarvex::cli {

namespace {

Json bandList(const std::vector<float>& bands) {
    Json list = Json::array();
    for (const float band : bands) {
        list.push_back(jsonNumber(band));
    }
    return list;
}

std::string bandText(const std::vector<float>& bands) {
    std::ostringstream text;
    for (std::size_t i = 0; i < bands.size(); ++i) {
        text << (i == 0 ? "" : " ") << std::lround(bands[i]);
    }
    return bands.empty() ? std::string("-") : text.str();
}

} // namespace

void addExplanationJson(const SearchExplanation& explanation, const LIBRARY_GLOBALS& library,
                        Json& result) {
    Json hits = Json::array();
    for (std::size_t rank = 0; rank < explanation.hits.size(); ++rank) {
        const BandTable& hit = explanation.hits[rank];
        Json matched = Json::array();
        for (const BandPair& pair : hit.matched) {
            matched.push_back(Json::array({jsonNumber(pair.unknown), jsonNumber(pair.entry)}));
        }
        hits.push_back(Json{{"rank", rank + 1},
                            {"file", library.MI_FILENAMES[hit.entry]},
                            {"matched", matched},
                            {"unknown_only", bandList(hit.unknownOnly)},
                            {"entry_only", bandList(hit.entryOnly)}});
    }
    result["explain"] = hits;
    result["snr"] = std::isfinite(explanation.snr) ? Json(explanation.snr) : Json(nullptr);
    result["ambiguous"] = explanation.ambiguous;
}

void printExplanation(const SearchExplanation& explanation, const LIBRARY_GLOBALS& library,
                      std::ostream& out) {
    std::array<char, 32> snr{};
    std::snprintf(snr.data(), snr.size(), "%.1f", explanation.snr);
    out << "Signal-to-noise of the unknown: "
        << (std::isfinite(explanation.snr) ? snr.data() : "no noise") << '\n';
    if (explanation.ambiguous) {
        out << "Ambiguous: the first two scores lie within " << kAmbiguousMargin << " points\n";
    }
    for (std::size_t rank = 0; rank < explanation.hits.size(); ++rank) {
        const BandTable& hit = explanation.hits[rank];
        out << rank + 1 << ' ' << library.MI_FILENAMES[hit.entry] << ": matched";
        for (const BandPair& pair : hit.matched) {
            out << ' ' << std::lround(pair.unknown) << '~' << std::lround(pair.entry);
        }
        out << (hit.matched.empty() ? " -" : "") << "; unknown only: " << bandText(hit.unknownOnly)
            << "; entry only: " << bandText(hit.entryOnly) << '\n';
    }
}

} // namespace quarvex::cli
