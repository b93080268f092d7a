// The "Raman Search" mode: the active spectrum searched against the Raman library over a
// selected range, the ranked results, and the chosen reference drawn over the unknown.
#pragma once

#include "library/CreateLibraryFile.h"
#include "library/MixtureSearch.h"
#include "library/RobustSearch.h"
#include "ui/ModeContext.h"
#include "ui/ViewOverlays.h"

#include <QDockWidget>

#include <optional>
#include <span>
#include <string>

class QComboBox;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace quarvex::ui {

class RangeEditor;

/// Its buttons ask the main window to dispatch their commands (Search, Compile Library,
/// Consistency Exam...), which then call search() and compileLibrary(). Selecting a result
/// overlays that reference spectrum on the unknown; a search selects the best match at once.
class RamanSearchDock : public QDockWidget {
    Q_OBJECT

public:
    RamanSearchDock(ModeContext context, QWidget* parent = nullptr);

    /// After spectra, the primary spectrum or the preferences changed: the unknown's name, the
    /// default range; results of a spectrum that is gone are cleared.
    void spectraChanged();

    /// The mode was opened (again): the selected result is drawn over the unknown again.
    void activate();

    /// Searches the active spectrum over the range shown, in a worker thread behind a progress
    /// dialog ("Compiling Library..." first while the start-up compilation runs or when the
    /// library is missing, then "Searching Selected Area..."). When the search had to read the
    /// library's text files, the summary says why. Throws QuarvexError as searchLibrary does;
    /// earlier results stay.
    void search();

    /// Search Residual: a mixture search of the same unknown and range with one component more
    /// than the last mixture search (2 after a dot-product or robust search); the components
    /// and the residual's share in the summary, their sum and the residual drawn over the
    /// unknown. Throws QuarvexError as searchMixture does.
    void searchResidual();

    /// The mode selector: "Dot product" (the default), "Robust" or "Mixture".
    QComboBox* modeSelector() const { return mode_; }

    /// The last mixture search, when the results shown come from one.
    const std::optional<MixtureResult>& mixture() const { return mixture_; }

    /// Compiles the library of the home folder behind a progress dialog. Throws QuarvexError.
    void compileLibrary();

    /// Shows what a compilation did (at start-up or from the button) in the library line.
    void showCompilation(const LibraryCompilation& compilation);

    /// Start-up found the library as its last compilation left it: said in the library line.
    void showUpToDate(int entries);

    /// The start-up compilation failed with `text`: said in the library line.
    void showCompilationFailure(const QString& text);

    /// The range the next search covers; nullopt when nothing is loaded.
    std::optional<XRange> searchRange() const;

    /// The result list: one row per shown entry, best first.
    QTreeWidget* results() const { return results_; }

    /// Lists `preferences.resultsShown` more entries of the last search.
    void showMore();

    /// Asks for a file name and saves the whole ranking of the last search there as CSV.
    /// Throws QuarvexError when it cannot be written.
    void exportResultsCsv();

signals:
    void commandRequested(int command);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    std::optional<XRange> defaultRange(QString& note) const;
    void waitForLibrary(const ProgressCallback& progress) const;
    void runSearch(int mixtureComponents);
    void showMixture();
    void dropMixture();
    void markMatchedBands(std::size_t entry, std::span<const float> x, std::span<const float> y);
    void unmarkBands();
    void fillResults();
    void overlaySelected();
    void clearResults();
    void updateButtons();

    ModeContext context_;
    QLabel* unknownLabel_ = nullptr;
    RangeEditor* range_ = nullptr;
    QPushButton* searchButton_ = nullptr;
    QComboBox* mode_ = nullptr;
    QPushButton* residualButton_ = nullptr;
    std::optional<MixtureResult> mixture_;
    bool marked_ = false; ///< the matched bands of the selected entry are marked in the view
    QPushButton* compileButton_ = nullptr;
    QPushButton* examButton_ = nullptr;
    QPushButton* moreButton_ = nullptr;
    QPushButton* csvButton_ = nullptr;
    QLabel* summary_ = nullptr;
    QTreeWidget* results_ = nullptr;
    QLabel* details_ = nullptr;
    QLabel* libraryLabel_ = nullptr;
    std::optional<LibraryCompilation> compilation_;
    int shown_ = 0;
    int searchedSpectrum_ = -1; ///< the unknown of the results shown
    std::string searchedPath_;
    XRange searchedRange_;
};

} // namespace quarvex::ui
