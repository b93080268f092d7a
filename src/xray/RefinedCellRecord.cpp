// The refinement record of a project: tag lines in a fixed order, read back strictly.
#include "xray/RefinedCellRecord.h"

#include "common/TextUtils.h"
#include "xray/ProjectLines.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <ostream>
#include <sstream>
#include <vector>

namespace quarvex {

namespace {

namespace tag {
constexpr std::string_view kRefined = "<refined> ";
constexpr std::string_view kSystem = "<system> ";
constexpr std::string_view kLines = "<lines> ";
constexpr std::string_view kCell = "<cell> ";
constexpr std::string_view kErrors = "<errors> ";
constexpr std::string_view kVolume = "<volume> ";
constexpr std::string_view kRmse = "<rmse> ";
constexpr std::string_view kMachineError = "<machineerror> ";
constexpr std::string_view kIterations = "<iterations> ";
constexpr std::string_view kInput = "<input> ";
constexpr std::string_view kReport = "<report> ";
constexpr std::string_view kReportLines = "<reportlines> ";
} // namespace tag

constexpr int kRecordVersion = 1;

void writeSix(std::ostream& out, std::string_view name, const std::array<double, 6>& values) {
    out << name;
    for (std::size_t k = 0; k < values.size(); ++k) {
        out << (k == 0 ? "" : " ") << shortestText(values[k]);
    }
    out << '\n';
}

std::string oneLine(const std::filesystem::path& path) {
    std::string text = path.string();
    for (char& c : text) {
        if (c == '\n' || c == '\r') {
            c = ' ';
        }
    }
    return text;
}

// The values after `name`, each finite.
template <class... T> void readTagged(ProjectLines& lines, std::string_view name, T&... values) {
    const std::string_view rest = lines.tagged(name);
    const auto finite = [](const auto value) { return std::isfinite(static_cast<double>(value)); };
    if (!readAll(rest, values...) || !(finite(values) && ...)) {
        lines.fail("expected " + std::to_string(sizeof...(T)) + " finite value(s) after \"" +
                   std::string(name) + "\"");
    }
}

void readSix(ProjectLines& lines, std::string_view name, std::array<double, 6>& values) {
    readTagged(lines, name, values[0], values[1], values[2], values[3], values[4], values[5]);
}

bool readFlag(ProjectLines& lines, int value) {
    if (value != 0 && value != 1) {
        lines.fail("a switch must be 0 or 1");
    }
    return value == 1;
}

} // namespace

std::filesystem::path refinedRecordPath(const std::filesystem::path& mainFile) {
    return mainFile.parent_path() / (mainFile.stem().string() + std::string(kRefinedExtension));
}

RefinedCellRecord refinedCellRecord(const INOUTPARMS& io, const DATASTFF& data,
                                    const std::filesystem::path& input) {
    RefinedCellRecord record;
    record.system = std::string(trimmed(data.XTLSYS));
    record.lines = data.NREF;
    record.cell = data.CELL;
    record.error = data.ERROR;
    record.volume = io.volume;
    record.volumeError = io.volumeError;
    record.rmse = io.rmse;
    record.machineErrorSearched = io.machineErrorSearched;
    record.machineErrorConverged = io.machineErrorConverged;
    record.machineError = io.machineError;
    record.iterations = io.iterations;
    record.iterationLimitHit = io.iterationLimitHit;
    record.input = input;
    record.report = io.reportPath;
    std::ifstream report(io.reportPath, std::ios::binary);
    std::string line;
    while (std::getline(report, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        record.reportText.append(line).append("\n");
    }
    return record;
}

void writeRefinedRecord(std::ostream& out, const RefinedCellRecord& record) {
    std::vector<std::string_view> report;
    for (std::string_view rest = record.reportText; !rest.empty();) {
        const std::size_t end = rest.find('\n');
        report.push_back(rest.substr(0, end));
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    }
    out << tag::kRefined << kRecordVersion << '\n'
        << tag::kSystem << record.system << '\n'
        << tag::kLines << record.lines << '\n';
    writeSix(out, tag::kCell, record.cell);
    writeSix(out, tag::kErrors, record.error);
    out << tag::kVolume << shortestText(record.volume) << ' ' << shortestText(record.volumeError)
        << '\n'
        << tag::kRmse << shortestText(record.rmse) << '\n'
        << tag::kMachineError << int{record.machineErrorSearched} << ' '
        << int{record.machineErrorConverged} << ' ' << shortestText(record.machineError) << '\n'
        << tag::kIterations << record.iterations << ' ' << int{record.iterationLimitHit} << '\n'
        << tag::kInput << oneLine(record.input) << '\n'
        << tag::kReport << oneLine(record.report) << '\n'
        << tag::kReportLines << report.size() << '\n';
    for (const std::string_view line : report) {
        out << line << '\n';
    }
}

std::string refinedCellSummary(const RefinedCellRecord& record) {
    const char* const names[] = {"a", "b", "c", "alpha", "beta", "gamma"};
    std::string text =
        "Refined cell: " + record.system + ", " + std::to_string(record.lines) + " lines\n";
    char line[160];
    for (std::size_t p = 0; p < 6; ++p) {
        const int decimals = p < 3 ? 6 : 4;
        const char* unit = p < 3 ? " A" : " deg";
        if (record.error[p] > 0.0) {
            std::snprintf(line, sizeof line, "%-6s= %.*f +/- %.*f%s\n", names[p], decimals,
                          record.cell[p], decimals, record.error[p], unit);
        } else {
            std::snprintf(line, sizeof line, "%-6s= %.*f%s (fixed)\n", names[p], decimals,
                          record.cell[p], unit);
        }
        text += line;
    }
    std::snprintf(line, sizeof line, "V     = %.4f +/- %.4f A^3\nrmse  = %.3g\n", record.volume,
                  record.volumeError, record.rmse);
    text += line;
    if (record.machineErrorSearched) {
        std::snprintf(line, sizeof line, "machine error %.4f deg (search %s)\n",
                      record.machineError,
                      record.machineErrorConverged ? "converged" : "did not converge");
        text += line;
    } else {
        text += "no machine-error search\n";
    }
    return text + "input  " + record.input.string() + "\nreport " + record.report.string() + "\n";
}

std::optional<RefinedCellRecord> loadRefinedRecord(const std::filesystem::path& mainFile) {
    std::error_code error;
    if (!std::filesystem::exists(refinedRecordPath(mainFile), error)) {
        return std::nullopt;
    }
    return readRefinedRecord(refinedRecordPath(mainFile));
}

RefinedCellRecord readRefinedRecord(const std::filesystem::path& path) {
    ProjectLines lines(path);
    if (lines.count(tag::kRefined) != kRecordVersion) {
        lines.fail("a refinement record of another version");
    }
    RefinedCellRecord record;
    record.system = std::string(trimmed(lines.tagged(tag::kSystem)));
    record.lines = lines.count(tag::kLines);
    readSix(lines, tag::kCell, record.cell);
    readSix(lines, tag::kErrors, record.error);
    readTagged(lines, tag::kVolume, record.volume, record.volumeError);
    readTagged(lines, tag::kRmse, record.rmse);
    int searched = 0;
    int converged = 0;
    readTagged(lines, tag::kMachineError, searched, converged, record.machineError);
    record.machineErrorSearched = readFlag(lines, searched);
    record.machineErrorConverged = readFlag(lines, converged);
    int limitHit = 0;
    readTagged(lines, tag::kIterations, record.iterations, limitHit);
    record.iterationLimitHit = readFlag(lines, limitHit);
    record.input = std::string(trimmedRight(lines.tagged(tag::kInput)));
    record.report = std::string(trimmedRight(lines.tagged(tag::kReport)));
    const int reportLines = lines.count(tag::kReportLines);
    for (int k = 0; k < reportLines; ++k) {
        record.reportText.append(lines.next("the report's lines")).append("\n");
    }
    lines.end();
    return record;
}

} // namespace quarvex
