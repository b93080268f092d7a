// quarvex-cli xray-ref: read reference diffraction-data files (or compute the patterns of CIFs)
// and list their cells, modes and reflections.
#include "cli/FileListOutput.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "xray/CifPattern.h"
#include "xray/XrayDataAndFileManager.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <string>

namespace quarvex::cli {

namespace {

Json patternJson(const DIFF_GLOBALS& diff, int p) {
    const auto k = static_cast<std::size_t>(p);
    Json reflections = Json::array();
    const auto twoTheta = diff.reflections(diff.TWO_THETA, p);
    const auto intensity = diff.reflections(diff.INTENS, p);
    const auto dSpacing = diff.reflections(diff.DSPACE, p);
    const auto hkl = diff.reflections(diff.HKL, p);
    for (std::size_t r = 0; r < twoTheta.size(); ++r) {
        Json row{{"two_theta", jsonNumber(twoTheta[r])},
                 {"intensity", jsonNumber(intensity[r])},
                 {"d", jsonNumber(dSpacing[r])},
                 {"h", hkl[r][0]},
                 {"k", hkl[r][1]},
                 {"l", hkl[r][2]}};
        if (diff.MODE[k] == 2) {
            row["two_theta2"] = jsonNumber(diff.reflections(diff.TWO_THETA2, p)[r]);
            row["intensity2"] = jsonNumber(diff.reflections(diff.INTENS2, p)[r]);
        }
        reflections.push_back(std::move(row));
    }
    Json cell = Json::array();
    for (const float value : diff.CELL_PARAMS[k]) {
        cell.push_back(jsonNumber(value));
    }
    Json wavelengths = Json::array();
    for (const double w : diff.WAVELENGTHS[k]) {
        if (w > 0.0) {
            wavelengths.push_back(w);
        }
    }
    return Json{{"name", diff.NAME[k]},
                {"title", diff.TITLE[k]},
                {"cell", cell},
                {"mode", diff.MODE[k]},
                {"count", diff.NUMDATA[k]},
                {"system", std::string(crystalSystemName(diff.SYM[k]))},
                {"space_group", diff.SPACE_GROUP[k]},
                {"wavelengths", wavelengths},
                {"notes", diff.NOTES[k]},
                {"reflections", reflections}};
}

void printPattern(const Json& p) {
    std::cout << p["name"].get<std::string>() << ": " << p["title"].get<std::string>() << '\n'
              << "  cell        ";
    for (const auto& value : p["cell"]) {
        std::cout << ' ' << value;
    }
    std::cout << "\n  system       " << p["system"].get<std::string>() << " (space group "
              << p["space_group"].get<std::string>() << ")\n"
              << "  mode         " << p["mode"] << ", wavelengths " << p["wavelengths"].dump()
              << '\n'
              << "  count        " << p["count"] << '\n';
    for (const auto& note : p["notes"]) {
        std::cout << "  note         " << note.get<std::string>() << '\n';
    }
    std::printf("     2-theta   intensity  d-spacing    h   k   l\n");
    for (const auto& r : p["reflections"]) {
        std::printf("%12.2f %11.2f %10.4f %4d%4d%4d\n", r["two_theta"].get<double>(),
                    r["intensity"].get<double>(), r["d"].get<double>(), r["h"].get<int>(),
                    r["k"].get<int>(), r["l"].get<int>());
    }
}

// The options of the computed patterns of CIFs.
struct CifOptions {
    double wavelength = kCopperKAlpha1;
    std::string range; ///< "LO:HI", degrees 2-theta
};

CifPatternSettings cifSettings(const CifOptions& options) {
    CifPatternSettings settings;
    settings.wavelength = options.wavelength;
    if (!options.range.empty()) {
        const auto colon = options.range.find(':');
        std::size_t lowEnd = 0;
        std::size_t highEnd = 0;
        try {
            settings.twoThetaMin = std::stod(options.range.substr(0, colon), &lowEnd);
            settings.twoThetaMax = std::stod(options.range.substr(colon + 1), &highEnd);
        } catch (const std::exception&) {
            lowEnd = 0;
        }
        if (colon == std::string::npos || lowEnd != colon ||
            highEnd != options.range.size() - colon - 1) {
            throw QuarvexError("--range " + options.range + ": expected LO:HI in degrees 2-theta",
                               std::string(kCifErrorTitle));
        }
    }
    checkCifPatternSettings(settings);
    return settings;
}

} // namespace

CliCommand addXrayRefCommand(CLI::App& app) {
    auto options = std::make_shared<FileListOptions>();
    auto cif = std::make_shared<CifOptions>();
    CLI::App* command = app.add_subcommand(
        "xray-ref", "Read reference diffraction-data files and list cell, mode and reflections");
    addFileListOptions(*command, *options,
                       "Reference files (.out, .txt, .dat), or CIFs (.cif) to compute");
    command->add_option("--wave", cif->wavelength, "CIFs: wavelength in angstroms")
        ->capture_default_str();
    command->add_option("--range", cif->range, "CIFs: 2-theta range LO:HI in degrees (5:90)");
    return {command, [options, cif](ProgramState& state) {
                const auto importFolder = GET_IMPDIFF_PATH(state.quarvex.programFolder);
                const CifPatternSettings settings = cifSettings(*cif);
                return loadFilesAndDescribe(
                    *options, "patterns",
                    [&](const std::string& file) {
                        if (isCifFile(file)) {
                            openCifReference(state.diff, file, importFolder, settings);
                        } else {
                            OPEN_AND_READ_DIFF_FILE(state.diff, file, importFolder);
                        }
                    },
                    [&] { return state.diff.count(); },
                    [&](int p) { return patternJson(state.diff, p); }, printPattern);
            }};
}

} // namespace quarvex::cli
