// What a mode dock works with: the program state, the view, the home folder and the user.
#pragma once

#include "processing/PeakFitting.h"
#include "shell/ProgramState.h"
#include "ui/UserInteraction.h"

#include <filesystem>
#include <memory>

class QLabel;
class QWidget;

namespace quarvex::ui {

class BackgroundCompilation;
class SpectrumView;

/// Handed by the main window to each mode dock; it outlives the docks.
struct ModeContext {
    ProgramState& state;
    SpectrumView& view;
    std::filesystem::path home; ///< the program's home folder (library, working folders)
    std::shared_ptr<UserInteraction> interaction;
    /// The start-up compilation, which every use of the library waits for; null: none.
    const BackgroundCompilation* libraryCompilation = nullptr;
};

/// The spectrum the modes work on (0-based): the primary one, else the last loaded; -1 when
/// nothing is loaded.
int activeSpectrum(const SPECDATA_GLOBALS& specdata);

/// "<b>name</b> N points": the spectrum a mode works on, as its dock heads it (rich text).
QString spectrumCaption(const SPECDATA_GLOBALS& specdata, int spectrum);

/// The peak search and fit settings of the preferences: profile (preference 2) and the peak
/// search's noise segments, threshold, smoothing and least separation.
PeakFitSettings peakFitSettings(const Preferences& preferences);

/// A label for a mode's notes: wrapped, selectable, never widening its dock.
QLabel* noteLabel(QWidget* parent);

/// The run of points of x (ascending) within [low, high]: first index and count.
struct PointRun {
    std::size_t first = 0;
    std::size_t count = 0;
};
PointRun pointsWithin(std::span<const float> x, double low, double high);

} // namespace quarvex::ui
