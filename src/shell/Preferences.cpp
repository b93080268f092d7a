#include "shell/Preferences.h"

#include "common/AtomicFile.h"
#include "common/LineReader.h"
#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"

#include <iomanip>
#include <string>

namespace quarvex {

namespace {

// Visits the sixteen values in file order.
template <class F> void forEachPreference(Preferences& p, F&& f) {
    f(p.compileLibraryAtStart);
    f(p.profileSetting);
    f(p.machineErrorSearch);
    f(p.reportIterations);
    f(p.stackSpectra);
    f(p.noiseSegments);
    f(p.peakThreshold);
    f(p.matchTolerance);
    f(p.xrayWavelength);
    f(p.searchRangeStart);
    f(p.searchRangeEnd);
    f(p.resultsShown);
    f(p.peakSmoothingPoints);
    f(p.peakMinSeparation);
    f(p.reverseXAxis);
    f(p.showGrid);
}

// One value per line in list-directed form: a leading blank, then the value; a real is first
// turned into text in a 25-character field.
void writeValue(std::ostream& out, bool value) {
    out << ' ' << (value ? 'T' : 'F') << '\n';
}
void writeValue(std::ostream& out, int value) {
    out << ' ' << value << '\n';
}
void writeValue(std::ostream& out, float value) {
    out << ' ' << std::setw(25) << shortestText(value) << '\n';
}

void writePreferences(const std::filesystem::path& path, Preferences& preferences) {
    AtomicFile file(path);
    if (!file.isOpen()) {
        return;
    }
    forEachPreference(preferences, [&](auto& value) { writeValue(file.stream(), value); });
    file.commit(); // a failure to write the preferences is not reported
}

void readValues(const std::filesystem::path& path, Preferences& preferences) {
    LineReader reader(path);
    if (!reader.isOpen()) {
        return;
    }
    bool readingOn = true;
    forEachPreference(preferences, [&](auto& value) {
        if (!readingOn) {
            return;
        }
        // Each value has its own read, which starts on a new line; as in any list-directed
        // read, blank lines are passed over on the way to the value.
        std::string_view line;
        do {
            if (!reader.next(line)) {
                readingOn = false;
                return;
            }
        } while (trimmed(line).empty());
        ListReader values(line);
        readingOn = values.read(value) != FieldStatus::Failed;
    });
}

// A preferences file that cannot be read (a pipe, a device, a binary file) is passed over like a
// missing one: the values read before the fault are kept, the rest keep their defaults.
void readPreferences(const std::filesystem::path& path, Preferences& preferences) {
    try {
        readValues(path, preferences);
    } catch (const QuarvexError&) {
    }
}

} // namespace

void INI_PREF_SETUP(int mode, const std::filesystem::path& home, Preferences& preferences) {
    const std::filesystem::path path = home / kPreferencesFileName;
    if (mode == 1) {
        writePreferences(path, preferences);
    } else if (mode == 2) {
        readPreferences(path, preferences);
    }
}

} // namespace quarvex
