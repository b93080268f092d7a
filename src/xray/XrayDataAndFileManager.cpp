// The reference-pattern list as parallel arrays: every change goes through the working copies,
// so that all fields of a pattern always move together.
#include "xray/XrayDataAndFileManager.h"

#include "common/AtomicFile.h"
#include "common/WorkingFolders.h"
#include "xray/CifPattern.h"
#include "xray/DiffFileWriter.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <stdexcept>

namespace quarvex {

namespace {

// Colours of the reflection marks of successive patterns, chosen to stay apart on white.
constexpr std::array<std::uint32_t, 10> kMarkColours{0xD62728, 0x1F77B4, 0x2CA02C, 0x9467BD,
                                                     0xFF7F0E, 0x8C564B, 0xE377C2, 0x17BECF,
                                                     0xBCBD22, 0x7F7F7F};

// Calls f(main, copy) for every per-pattern array.
template <class F> void forEachPatternField(DIFF_GLOBALS& d, F&& f) {
    f(d.NAME, d.NAME_TEMP);
    f(d.PATH, d.PATH_TEMP);
    f(d.TITLE, d.TITLE_TEMP);
    f(d.SPACE_GROUP, d.SG_TEMP);
    f(d.NUMDATA, d.NDD_TEMP);
    f(d.CELL_PARAMS, d.CP_TEMP);
    f(d.SYM, d.SYM_TEMP);
    f(d.MODE, d.MODE_TEMP);
    f(d.WAVELENGTHS, d.WAVE_TEMP);
    f(d.ACTIVE, d.ACT_TEMP);
    f(d.BRUSH, d.BRUSH_TEMP);
    f(d.NOTES, d.NOTE_TEMP);
}

// Calls f(main, copy) for every per-reflection array.
template <class F> void forEachReflectionField(DIFF_GLOBALS& d, F&& f) {
    f(d.TWO_THETA, d.DTT_TEMP);
    f(d.INTENS, d.DINT_TEMP);
    f(d.DSPACE, d.DSP_TEMP);
    f(d.TWO_THETA2, d.DTT2_TEMP);
    f(d.INTENS2, d.DINT2_TEMP);
    f(d.HKL, d.DHKL_TEMP);
}

template <class T> void release(std::vector<T>& values) {
    std::vector<T>().swap(values);
}

std::ptrdiff_t offsetOf(int pattern, int rows) {
    return static_cast<std::ptrdiff_t>(pattern) * rows;
}

// Copies pattern `from` of the working copies to place `to` of the main arrays.
void placeFromCopies(DIFF_GLOBALS& diff, int from, int to) {
    const auto source = static_cast<std::size_t>(from);
    const auto target = static_cast<std::size_t>(to);
    const int rows = std::min(diff.NDD_TEMP[source], diff.reflectionDimension);
    forEachPatternField(diff, [&](auto& main, auto& copy) { main[target] = copy[source]; });
    forEachReflectionField(diff, [&](auto& main, auto& copy) {
        std::copy_n(copy.begin() + offsetOf(from, diff.dimensionTemp), rows,
                    main.begin() + offsetOf(to, diff.reflectionDimension));
    });
}

void releaseCopies(DIFF_GLOBALS& diff) {
    forEachPatternField(diff, [](auto&, auto& copy) { release(copy); });
    forEachReflectionField(diff, [](auto&, auto& copy) { release(copy); });
    diff.dimensionTemp = 0;
}

// Rebuilds the list from the patterns `order` (indices of the current list) in that order.
void rebuild(DIFF_GLOBALS& diff, std::span<const int> order) {
    EXCHANGE_DIFF_INFO(diff, 1);
    int rows = 0;
    for (const int k : order) {
        rows = std::max(rows, diff.NDD_TEMP[static_cast<std::size_t>(k)]);
    }
    CREATE_AND_ALLOCATE_DIFF_ARRAYS(diff, static_cast<int>(order.size()), rows);
    for (std::size_t place = 0; place < order.size(); ++place) {
        placeFromCopies(diff, order[place], static_cast<int>(place));
    }
    releaseCopies(diff);
}

} // namespace

std::vector<int> DIFF_GLOBALS::ACTIVE_ARRAY() const {
    std::vector<int> active;
    for (int k = 0; k < count(); ++k) {
        if (ACTIVE[static_cast<std::size_t>(k)]) {
            active.push_back(k);
        }
    }
    return active;
}

std::filesystem::path GET_IMPDIFF_PATH(const std::filesystem::path& home) {
    return xrayLibraryFolder(home);
}

void CREATE_AND_ALLOCATE_DIFF_ARRAYS(DIFF_GLOBALS& diff, int patterns, int rows) {
    const auto count = static_cast<std::size_t>(patterns);
    forEachPatternField(diff, [count](auto& main, auto&) {
        release(main);
        main.resize(count);
    });
    forEachReflectionField(diff, [&](auto& main, auto&) {
        release(main);
        main.resize(count * static_cast<std::size_t>(rows));
    });
    diff.reflectionDimension = rows;
}

void EXCHANGE_DIFF_INFO(DIFF_GLOBALS& diff, int mode) {
    if (mode == 1) {
        forEachPatternField(diff, [](auto& main, auto& copy) { copy = main; });
        forEachReflectionField(diff, [](auto& main, auto& copy) { copy = main; });
        diff.dimensionTemp = diff.reflectionDimension;
        return;
    }
    const int patterns = std::min(static_cast<int>(diff.NDD_TEMP.size()), diff.count());
    for (int k = 0; k < patterns; ++k) {
        placeFromCopies(diff, k, k);
    }
    releaseCopies(diff);
}

int appendDiffPattern(DIFF_GLOBALS& diff, DiffFileRecord record) {
    const int patterns = diff.count();
    const int rows = static_cast<int>(record.reflections.size());
    EXCHANGE_DIFF_INFO(diff, 1);
    CREATE_AND_ALLOCATE_DIFF_ARRAYS(diff, patterns + 1, std::max(diff.reflectionDimension, rows));
    EXCHANGE_DIFF_INFO(diff, 2);

    const auto k = static_cast<std::size_t>(patterns);
    diff.NAME[k] = std::move(record.name);
    diff.PATH[k] = std::move(record.folder);
    diff.TITLE[k] = std::move(record.title);
    diff.SPACE_GROUP[k] = std::move(record.spaceGroup);
    diff.NUMDATA[k] = rows;
    diff.CELL_PARAMS[k] = record.cell;
    diff.SYM[k] = record.sym;
    diff.MODE[k] = record.mode;
    diff.WAVELENGTHS[k] = record.wavelengths;
    diff.ACTIVE[k] = true;
    diff.BRUSH[k] = kMarkColours[k % kMarkColours.size()];
    diff.NOTES[k] = std::move(record.notes);
    const std::ptrdiff_t first = offsetOf(patterns, diff.reflectionDimension);
    for (int r = 0; r < rows; ++r) {
        const DiffReflection& line = record.reflections[static_cast<std::size_t>(r)];
        const auto at = static_cast<std::size_t>(first + r);
        diff.TWO_THETA[at] = line.twoTheta;
        diff.INTENS[at] = line.intensity;
        diff.DSPACE[at] = line.dSpacing;
        diff.TWO_THETA2[at] = line.twoTheta2;
        diff.INTENS2[at] = line.intensity2;
        diff.HKL[at] = line.hkl;
    }
    return patterns;
}

bool isCifFile(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".cif";
}

int openCifReference(DIFF_GLOBALS& diff, const std::filesystem::path& path,
                     const std::filesystem::path& importFolder,
                     const CifPatternSettings& settings) {
    DiffFileRecord record = readCifReference(path, settings);
    if (!importFolder.empty()) {
        const std::filesystem::path kept =
            importFolder / (path.stem().string() + std::string(kCifPatternSuffix));
        if (!writeDiffFile(kept, record, cifPatternDescription(record.name, settings))) {
            record.notes.push_back("its pattern could not be kept as " + kept.string());
        }
    }
    return appendDiffPattern(diff, std::move(record));
}

int OPEN_AND_READ_DIFF_FILE(DIFF_GLOBALS& diff, const std::filesystem::path& path,
                            const std::filesystem::path& importFolder) {
    if (isCifFile(path)) {
        return openCifReference(diff, path, importFolder, CifPatternSettings{});
    }
    std::optional<AtomicFile> importRecord;
    std::ostream* tableCopy = nullptr;
    if (!importFolder.empty()) {
        importRecord.emplace(importFolder /
                             (path.stem().string() + std::string(kImportRecordExtension)));
        if (importRecord->isOpen()) {
            tableCopy = &importRecord->stream();
            *tableCopy << "PATH " << path.parent_path().string() << '\n'
                       << "NAME " << path.filename().string() << '\n';
        }
    }
    DiffFileRecord record = READ_DIFF_INFO(path, tableCopy);
    if (tableCopy != nullptr) {
        importRecord->commit(); // a side file: failing to keep it is not the user's concern
    }
    return appendDiffPattern(diff, std::move(record));
}

void DELETE_DIFF_FILES(DIFF_GLOBALS& diff, std::span<const int> selected) {
    std::vector<int> kept;
    for (int k = 0; k < diff.count(); ++k) {
        if (std::find(selected.begin(), selected.end(), k) == selected.end()) {
            kept.push_back(k);
        }
    }
    if (static_cast<int>(kept.size()) != diff.count()) {
        rebuild(diff, kept);
    }
}

void DIFF_FILE_SORT(DIFF_GLOBALS& diff, std::span<const int> order) {
    std::vector<int> sorted(order.begin(), order.end());
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t k = 0; k < sorted.size(); ++k) {
        if (sorted[k] != static_cast<int>(k)) {
            throw std::invalid_argument("DIFF_FILE_SORT: the order is not a permutation");
        }
    }
    if (static_cast<int>(sorted.size()) != diff.count()) {
        throw std::invalid_argument("DIFF_FILE_SORT: the order does not cover every pattern");
    }
    rebuild(diff, order);
}

void SORT_DIFF_FILE_ORDER(DIFF_GLOBALS& diff, int from, int to) {
    const int patterns = diff.count();
    if (from < 0 || from >= patterns || to < 0 || to >= patterns || from == to) {
        return;
    }
    std::vector<int> order(static_cast<std::size_t>(patterns));
    for (int k = 0; k < patterns; ++k) {
        order[static_cast<std::size_t>(k)] = k;
    }
    order.erase(order.begin() + from);
    order.insert(order.begin() + to, from);
    DIFF_FILE_SORT(diff, order);
}

} // namespace quarvex
