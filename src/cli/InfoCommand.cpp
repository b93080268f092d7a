// quarvex-cli info: load spectrum files and describe each loaded spectrum.
#include "cli/FileListOutput.h"
#include "cli/SpectrumLoading.h"
#include "specdata/SpecDataManager.h"

#include <cstdint>
#include <iostream>
#include <memory>
#include <vector>

namespace quarvex::cli {

namespace {

// What a load tells of each spectrum it added.
struct SpectrumSource {
    std::string format;
    SkippedLines skipped;
    std::vector<std::string> notes;
};

Json spectrumJson(const SPECDATA_GLOBALS& specdata, int k, const SpectrumSource& source) {
    const SkippedLines& skipped = source.skipped;
    const auto i = static_cast<std::size_t>(k);
    const auto x = specdata.xValues(k);
    const MINERALINFO& header = specdata.HEADER[i];
    return Json{{"number", k + 1},
                {"name", specdata.NAME[i]},
                {"path", specdata.PATH[i]},
                {"numdata", specdata.NUMDATA[i]},
                {"x_first", jsonNumber(x.front())},
                {"x_last", jsonNumber(x.back())},
                {"y_min", jsonNumber(specdata.Y_EXTREMES[i][0])},
                {"y_max", jsonNumber(specdata.Y_EXTREMES[i][1])},
                {"dtype", specdata.DTYPE[i]},
                {"wave_info", specdata.WAVE_INFO[i]},
                {"names", header.names},
                {"locality", header.locality},
                {"id", header.id},
                {"chemistry", header.chemistry},
                {"skipped_lines", skipped.count},
                {"first_skipped_line", skipped.firstLine},
                {"skipped", describeSkipped(skipped)},
                {"format", source.format},
                {"notes", source.notes}};
}

void printSpectrum(const Json& s) {
    std::cout << "Spectrum " << s["number"] << ": " << s["name"].get<std::string>() << '\n'
              << "  path       " << s["path"].get<std::string>() << '\n'
              << "  points     " << s["numdata"] << '\n'
              << "  x          " << s["x_first"] << " to " << s["x_last"] << '\n'
              << "  y          " << s["y_min"] << " to " << s["y_max"] << '\n'
              << "  dtype      " << s["dtype"].get<std::string>() << '\n'
              << "  wave       " << s["wave_info"].get<std::string>() << '\n'
              << "  names      " << s["names"].get<std::string>() << '\n'
              << "  locality   " << s["locality"].get<std::string>() << '\n'
              << "  id         " << s["id"].get<std::string>() << '\n'
              << "  chemistry  " << s["chemistry"].get<std::string>() << '\n'
              << "  format     " << s["format"].get<std::string>() << '\n';
    for (const auto& note : s["notes"]) {
        std::cout << "  note       " << note.get<std::string>() << '\n';
    }
    if (s["skipped_lines"].get<std::int64_t>() > 0) {
        std::cout << "  skipped    " << s["skipped"].get<std::string>() << '\n';
    }
}

} // namespace

CliCommand addInfoCommand(CLI::App& app) {
    auto options = std::make_shared<FileListOptions>();
    auto columns = std::make_shared<std::string>();
    CLI::App* info = app.add_subcommand(
        "info", "Load spectrum files and print, per spectrum, its points, ranges and header");
    addFileListOptions(*info, *options, "Spectrum files (any format Quarvex reads)");
    addColumnsOption(*info, *columns);
    return {info, [options, columns](ProgramState& state) {
                std::vector<SpectrumSource> sources; // one per loaded spectrum
                const ReadOptions readOptions = readOptionsFor(*columns);
                return loadFilesAndDescribe(
                    *options, "spectra",
                    [&](const std::string& file) {
                        const LoadedFile loaded =
                            loadSpectrumFile(state.specdata, state.mineralInfo, file, readOptions);
                        sources.insert(sources.end(), static_cast<std::size_t>(loaded.count),
                                       {std::string(loaded.format), loaded.skipped, loaded.notes});
                    },
                    [&] { return state.specdata.count(); },
                    [&](int k) {
                        return spectrumJson(state.specdata, k,
                                            sources[static_cast<std::size_t>(k)]);
                    },
                    printSpectrum);
            }};
}

} // namespace quarvex::cli
