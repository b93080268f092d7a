// Fuzz target: an undo record replaced on disk by the input. Undo either restores a spectrum of
// the recorded length or reports the record and leaves the spectrum as it was.
#include "FuzzSupport.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "specdata/MineralInfo.h"
#include "specdata/SpecDataManager.h"
#include "specdata/SpectrumRecords.h"
#include "specdata/UndoRecords.h"

#include <cstring>

namespace {

constexpr std::string_view kSpectrum = "100 1\n101 2\n102 3\n103 40\n104 5\n105 6\n106 7\n107 8\n";

bool sameValues(const quarvex::SpectrumRecord& a, const quarvex::SpectrumRecord& b) {
    return a.x.size() == b.x.size() && a.y.size() == b.y.size() &&
           std::memcmp(a.x.data(), b.x.data(), a.x.size() * sizeof(float)) == 0 &&
           std::memcmp(a.y.data(), b.y.data(), a.y.size() * sizeof(float)) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quarvex;
    const auto home = fuzz::freshFolder();
    SPECDATA_GLOBALS specdata;
    MINERALINFO mineralInfo;
    const int index =
        READ_SPECDATA_FILE(specdata, mineralInfo, fuzz::writeFile(home / "s.txt", kSpectrum));
    UndoHistory history;
    appendUndoRecord(history, home, specdata, index, "Test");
    fuzz::writeFile(history.undo.back().file, fuzz::asText(data, size));
    const std::size_t points = history.undo.back().points;
    const SpectrumRecord before = spectrumRecord(specdata, index);
    try {
        undoLastEdit(history, home, specdata);
    } catch (const QuarvexError&) {
        if (!sameValues(spectrumRecord(specdata, index), before)) {
            fuzz::fail("a failed undo changed the spectrum");
        }
        if (!history.undo.empty() || !history.redo.empty()) {
            fuzz::fail("a failed undo left steps behind");
        }
        return 0;
    }
    if (specdata.xValues(index).size() != points || history.redo.size() != 1) {
        fuzz::fail("undo restored a record of another length");
    }
    redoLastEdit(history, home, specdata);
    if (!sameValues(spectrumRecord(specdata, index), before)) {
        fuzz::fail("redo did not bring the spectrum back");
    }
    return 0;
}
