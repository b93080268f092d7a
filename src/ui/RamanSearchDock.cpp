// The Raman Search dock: range, search, result list, reference overlay and library line.
#include "ui/RamanSearchDock.h"

#include "common/IndexCast.h"
#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "library/DotProdSearch.h"
#include "library/SearchExplain.h"
#include "processing/InterpAndNorm.h"
#include "readers/LoadSpectra.h"
#include "ui/BackgroundCompilation.h"
#include "ui/Commands.h"
#include "ui/CsvExport.h"
#include "ui/ProgressRunner.h"
#include "ui/RangeEditor.h"
#include "ui/SpectrumView.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTime>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace quarvex::ui {

namespace {

enum Column { kRank, kScore, kMineral, kIdentifier, kLaser, kChemistry, kLocality, kColumns };

constexpr int kWidestChemistry = 150; // pixels; the whole formula is the cell's tool tip

constexpr int kScoreRole = Qt::UserRole + 1;

QString text(const std::string& value) {
    return QString::fromStdString(value).trimmed();
}

// The score drawn as a bar behind its number: the ranking reads at a glance.
class ScoreDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const double score = index.data(kScoreRole).toDouble();
        QRectF bar = QRectF(option.rect).adjusted(2.0, 3.0, -2.0, -3.0);
        bar.setWidth(bar.width() * std::clamp(score, 0.0, 100.0) / 100.0);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(QColor(30, 136, 229, option.state & QStyle::State_Selected ? 90 : 55));
        painter->drawRoundedRect(bar, 2.0, 2.0);
        painter->restore();
        QStyleOptionViewItem plain = option;
        plain.backgroundBrush = Qt::NoBrush;
        QStyledItemDelegate::paint(painter, plain, index);
    }
};

} // namespace

RamanSearchDock::RamanSearchDock(ModeContext context, QWidget* parent)
    : QDockWidget(QStringLiteral("Raman Search"), parent), context_(std::move(context)) {
    setObjectName(QStringLiteral("RamanSearchDock"));
    auto* body = new QWidget(this);
    auto* layout = new QVBoxLayout(body);
    layout->setContentsMargins(6, 4, 6, 6);

    auto* unknown = new QGroupBox(QStringLiteral("Unknown"), body);
    auto* unknownLayout = new QVBoxLayout(unknown);
    unknownLabel_ = new QLabel(unknown);
    unknownLabel_->setWordWrap(true);
    unknownLabel_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    unknownLayout->addWidget(unknownLabel_);
    range_ = new RangeEditor(
        context_.view, [this](QString& note) { return defaultRange(note); }, unknown);
    unknownLayout->addWidget(range_);
    auto* buttons = new QHBoxLayout();
    searchButton_ = new QPushButton(QStringLiteral("Search"), unknown);
    searchButton_->setDefault(true);
    searchButton_->setToolTip(QStringLiteral("Search the library over the range shown"));
    compileButton_ = new QPushButton(QStringLiteral("Compile Library"), unknown);
    compileButton_->setToolTip(
        QStringLiteral("Compile the reference spectra of SearchRecords/RamanLib/ again"));
    examButton_ = new QPushButton(QStringLiteral("Consistency Exam..."), unknown);
    examButton_->setToolTip(QStringLiteral("Check the library against itself"));
    mode_ = new QComboBox(unknown);
    mode_->setObjectName(QStringLiteral("searchMode"));
    mode_->addItems(
        {QStringLiteral("Dot product"), QStringLiteral("Robust"), QStringLiteral("Mixture")});
    mode_->setToolTip(QStringLiteral(
        "Dot product: the standard search. Robust: tolerates a background, a shift of up to "
        "3 cm-1 and one dominant band. Mixture: finds up to 3 components one after another."));
    residualButton_ = new QPushButton(QStringLiteral("Search Residual"), unknown);
    residualButton_->setToolTip(
        QStringLiteral("Subtract the components found so far and search what is left"));
    buttons->addWidget(mode_);
    buttons->addWidget(searchButton_, 1);
    buttons->addWidget(residualButton_);
    buttons->addWidget(compileButton_);
    buttons->addWidget(examButton_);
    unknownLayout->addLayout(buttons);
    layout->addWidget(unknown);

    summary_ = new QLabel(body);
    summary_->setWordWrap(true);
    layout->addWidget(summary_);
    results_ = new QTreeWidget(body);
    results_->setColumnCount(kColumns);
    results_->setHeaderLabels({QStringLiteral("#"), QStringLiteral("Score"),
                               QStringLiteral("Mineral"), QStringLiteral("ID"),
                               QStringLiteral("Laser"), QStringLiteral("Chemistry"),
                               QStringLiteral("Locality")});
    results_->setRootIsDecorated(false);
    results_->setUniformRowHeights(true);
    results_->setAlternatingRowColors(true);
    results_->setSelectionMode(QAbstractItemView::SingleSelection);
    results_->setItemDelegateForColumn(kScore, new ScoreDelegate(results_));
    results_->header()->setStretchLastSection(true);
    results_->setToolTip(QStringLiteral("Select an entry to draw its spectrum over the unknown"));
    layout->addWidget(results_, 1);

    auto* more = new QHBoxLayout();
    moreButton_ = new QPushButton(QStringLiteral("Show More"), body);
    csvButton_ = new QPushButton(QStringLiteral("Export CSV..."), body);
    csvButton_->setToolTip(QStringLiteral("Save the whole ranking of the search as a CSV file"));
    more->addStretch(1);
    more->addWidget(moreButton_);
    more->addWidget(csvButton_);
    layout->addLayout(more);
    details_ = new QLabel(body);
    details_->setWordWrap(true);
    details_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    details_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->addWidget(details_);
    libraryLabel_ = new QLabel(body);
    libraryLabel_->setWordWrap(true);
    libraryLabel_->setForegroundRole(QPalette::PlaceholderText);
    libraryLabel_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->addWidget(libraryLabel_);
    setWidget(body);

    const std::pair<QPushButton*, int> commands[] = {{searchButton_, kCmdSearchLibrary},
                                                     {compileButton_, kCmdCompileLibrary},
                                                     {examButton_, kCmdConsistencyExam}};
    for (const auto& [button, command] : commands) {
        connect(button, &QPushButton::clicked, this,
                [this, command] { emit commandRequested(command); });
    }
    connect(moreButton_, &QPushButton::clicked, this, &RamanSearchDock::showMore);
    connect(residualButton_, &QPushButton::clicked, this, [this] {
        try {
            searchResidual();
        } catch (const QuarvexError& error) {
            context_.interaction->showError(this, QString::fromStdString(error.text()),
                                            QString::fromStdString(error.title()));
        }
    });
    connect(csvButton_, &QPushButton::clicked, this, [this] {
        try {
            exportResultsCsv();
        } catch (const QuarvexError& error) {
            context_.interaction->showError(this, QString::fromStdString(error.text()),
                                            QString::fromStdString(error.title()));
        }
    });
    connect(results_, &QTreeWidget::itemSelectionChanged, this, &RamanSearchDock::overlaySelected);
    connect(libraryLabel_, &QLabel::linkActivated, this, [this] {
        QStringList lines;
        for (const SkippedFile& file : compilation_->skipped) {
            lines.append(QString::fromStdString(file.name + ": " + file.reason));
        }
        context_.interaction->showInformation(this, lines.join(QLatin1Char('\n')),
                                              QStringLiteral("Files Left Out Of The Library"));
    });
    libraryLabel_->setText(
        QStringLiteral("Library: %1")
            .arg(QString::fromStdString(ramanLibraryFolder(context_.home).string())));
    spectraChanged();
}

std::optional<XRange> RamanSearchDock::defaultRange(QString& note) const {
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const int k = activeSpectrum(s);
    if (k < 0 || s.NUMDATA[at(k)] == 0) {
        return std::nullopt;
    }
    const auto x = s.xValues(k);
    const Preferences& preferences = context_.state.quarvex.preferences;
    const double start = std::max<double>(preferences.searchRangeStart, x.front());
    const double end = std::min<double>(preferences.searchRangeEnd, x.back());
    if (start < end) {
        note = QStringLiteral("The search range of the preferences, within the spectrum. "
                              "Drag on the view to choose another.");
        return XRange{start, end};
    }
    note = QStringLiteral("The whole spectrum. Drag on the view to choose a range.");
    return XRange{x.front(), x.back()};
}

std::optional<XRange> RamanSearchDock::searchRange() const {
    return range_->range();
}

void RamanSearchDock::spectraChanged() {
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const int k = activeSpectrum(s);
    unknownLabel_->setText(k < 0 ? QStringLiteral("Open a Raman spectrum to search.")
                                 : spectrumCaption(s, k));
    range_->refresh(s, k);
    // Results belong to the unknown they were searched for: another unknown clears them.
    const bool stale = searchedSpectrum_ >= 0 &&
                       (searchedSpectrum_ != k || s.PATH[at(searchedSpectrum_)] != searchedPath_);
    if (stale) {
        clearResults();
    }
    updateButtons();
}

void RamanSearchDock::updateButtons() {
    const bool loaded = activeSpectrum(context_.state.specdata) >= 0;
    searchButton_->setEnabled(loaded);
    residualButton_->setEnabled(loaded && searchedSpectrum_ >= 0);
    moreButton_->setVisible(shown_ > 0);
    csvButton_->setVisible(shown_ > 0);
    moreButton_->setEnabled(shown_ < context_.state.library.count());
    moreButton_->setText(QStringLiteral("Show More (%1 of %2 listed)")
                             .arg(shown_)
                             .arg(context_.state.library.count()));
}

void RamanSearchDock::activate() {
    overlaySelected();
    if (mixture_) {
        showMixture();
    }
}

void RamanSearchDock::search() {
    runSearch(mode_->currentIndex() == 2 ? kDefaultMixtureComponents : 0);
}

void RamanSearchDock::searchResidual() {
    if (searchedSpectrum_ < 0) {
        return;
    }
    runSearch(mixture_ ? static_cast<int>(mixture_->components.size()) + 1 : 2);
}

// A search in the selected mode, or a mixture search of up to `mixtureComponents` components.
void RamanSearchDock::runSearch(int mixtureComponents) {
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const int k = activeSpectrum(s);
    const auto range = range_->range();
    if (k < 0 || !range) {
        return;
    }
    // The worker gets its own copy of the unknown; the results join the program state only
    // when the search has ended well.
    const auto x = s.xValues(k);
    const PointRun run = pointsWithin(x, range->start, range->end);
    const std::vector<float> unknownX(x.begin() + static_cast<std::ptrdiff_t>(run.first),
                                      x.begin() +
                                          static_cast<std::ptrdiff_t>(run.first + run.count));
    const auto y = s.yValues(k).subspan(run.first, run.count);
    const std::vector<float> unknownY(y.begin(), y.end());
    LIBRARY_GLOBALS found;
    std::optional<LibraryCompilation> compiled;
    std::optional<MixtureResult> mixture;
    LibrarySearchSource used;
    const SearchMode mode = mode_->currentIndex() == 1 ? SearchMode::Robust : SearchMode::Dot;
    QElapsedTimer clock;
    clock.start();
    const bool finished = runCancellableWithProgress(
        this, QStringLiteral("Raman Search"), [&](const ProgressCallback& progress) {
            waitForLibrary(progress);
            if (mixtureComponents > 0) {
                mixture = searchMixture(context_.home, unknownX, unknownY, mixtureComponents, found,
                                        compiled, progress);
            } else {
                compiled =
                    searchLibrary(context_.home, unknownX, unknownY, found, mode, progress, &used);
            }
        });
    if (!finished) {
        summary_->setText(QStringLiteral("Search cancelled: the results below, if any, are those "
                                         "of the previous search."));
        return;
    }
    const double seconds = static_cast<double>(clock.elapsed()) / 1000.0;
    if (compiled) {
        showCompilation(*compiled);
    }
    context_.state.library = std::move(found);
    searchedSpectrum_ = k;
    searchedPath_ = s.PATH[at(k)];
    searchedRange_ = *range;
    shown_ =
        std::min(context_.state.quarvex.preferences.resultsShown, context_.state.library.count());
    summary_->setText(QStringLiteral("%1 entries searched over %2 to %3%4 (%5 points), %6 s.")
                          .arg(context_.state.library.count())
                          .arg(range->start, 0, 'f', 1)
                          .arg(range->end, 0, 'f', 1)
                          .arg(xUnitFor(s.DTYPE[at(k)]))
                          .arg(run.count)
                          .arg(seconds, 0, 'f', 2));
    if (const std::string note = textFallbackNote(used); !note.empty()) {
        summary_->setText(summary_->text() + QLatin1Char('\n') + QString::fromStdString(note));
    }
    dropMixture();
    mixture_ = std::move(mixture);
    fillResults();
    {
        const QSignalBlocker quiet(results_);
        results_->setCurrentItem(results_->topLevelItem(0)); // null when nothing was found
    }
    overlaySelected(); // the best match of this search, drawn at once
    if (mixture_) {
        const LIBRARY_GLOBALS& library = context_.state.library;
        QStringList parts;
        for (const MixtureComponent& component : mixture_->components) {
            parts.append(QStringLiteral("%1 %2 (%3 % of the signal, shift %4)")
                             .arg(text(library.MINAMES[component.entry]))
                             .arg(component.score, 0, 'f', 2)
                             .arg(100.0 * component.fraction, 0, 'f', 1)
                             .arg(component.shift));
        }
        summary_->setText(summary_->text() +
                          QStringLiteral("\nMixture: %1; residual %2 % of the signal.")
                              .arg(parts.isEmpty() ? QStringLiteral("no component")
                                                   : parts.join(QStringLiteral("; ")))
                              .arg(100.0 * mixture_->residualFraction, 0, 'f', 1));
        showMixture();
    }
}

// Forgets the last mixture search and takes its drawing away (another mode's fit stays).
void RamanSearchDock::dropMixture() {
    if (mixture_) {
        mixture_.reset();
        context_.view.setFitOverlay(std::nullopt);
    }
}

// The sum of the last mixture search's components and the residual drawn over the unknown, on
// the 1 cm-1 grid of the search (the unknown there with its background, the sum on it).
void RamanSearchDock::showMixture() {
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const auto x = s.xValues(searchedSpectrum_);
    const PointRun run = pointsWithin(x, searchedRange_.start, searchedRange_.end);
    const InterpData grid = resampleSpectrum(
        x.subspan(run.first, run.count), s.yValues(searchedSpectrum_).subspan(run.first, run.count),
        kFineStep, false);
    FitOverlay overlay;
    overlay.spectrum = searchedSpectrum_;
    overlay.legend = QStringLiteral("Sum of the mixture's components");
    overlay.x = grid.x;
    overlay.measured = grid.y;
    overlay.fitted.resize(grid.y.size());
    for (std::size_t i = 0; i < grid.y.size() && i < mixture_->fitted.size(); ++i) {
        // The unknown minus its background-free part is its background: the sum stands on it.
        overlay.fitted[i] = grid.y[i] - mixture_->unknown.values[i] + mixture_->fitted[i];
    }
    context_.view.setFitOverlay(std::move(overlay));
}

void RamanSearchDock::fillResults() {
    const LIBRARY_GLOBALS& library = context_.state.library;
    const int selected = results_->indexOfTopLevelItem(results_->currentItem());
    const QSignalBlocker quiet(results_);
    results_->clear();
    for (int row = 0; row < shown_; ++row) {
        const auto e = at(library.MI_SORTINDEXPERCENTS[at(row)]);
        auto* item = new QTreeWidgetItem(results_);
        item->setText(kRank, QString::number(row + 1));
        item->setText(kScore, QString::number(library.PERC_MATCH[e], 'f', 2));
        item->setData(kScore, kScoreRole, library.PERC_MATCH[e]);
        item->setText(kMineral, text(library.MINAMES[e]));
        item->setText(kIdentifier, text(library.MIGRELT_ID[e]));
        item->setText(kChemistry, text(library.CHEMISTRIES[e]));
        item->setToolTip(kChemistry, text(library.CHEMISTRIES[e]));
        item->setText(kLaser, text(library.MI_WAVE[e]));
        item->setText(kLocality, text(library.LOCALITIES[e]));
        item->setToolTip(kLocality, text(library.LOCALITIES[e]));
        item->setData(kRank, Qt::UserRole, static_cast<int>(e));
        for (const int column : {kRank, kScore}) {
            item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    for (int column = 0; column < kLocality; ++column) {
        results_->resizeColumnToContents(column);
    }
    results_->setColumnWidth(kScore, std::max(results_->columnWidth(kScore), 70));
    results_->setColumnWidth(kChemistry,
                             std::min(results_->columnWidth(kChemistry), kWidestChemistry));
    if (selected >= 0 && selected < shown_) {
        results_->setCurrentItem(results_->topLevelItem(selected));
    }
    updateButtons();
}

void RamanSearchDock::exportResultsCsv() {
    if (searchedSpectrum_ < 0) {
        return;
    }
    const QFileInfo unknown(QString::fromStdString(searchedPath_));
    const QString path = context_.interaction->askSaveFileName(
        this, QStringLiteral("Export Search Results"),
        unknown.dir().filePath(unknown.completeBaseName() + QStringLiteral("_search.csv")),
        QStringLiteral("CSV (*.csv)"));
    if (!path.isEmpty()) {
        saveText(path, rankedResultsCsv(context_.state.library), "Export Search Results");
    }
}

void RamanSearchDock::showMore() {
    shown_ = std::min(shown_ + std::max(context_.state.quarvex.preferences.resultsShown, 1),
                      context_.state.library.count());
    fillResults();
}

// Reads the selected entry's reference spectrum from the library folder, apart from the loaded
// spectra, and draws it over the unknown.
void RamanSearchDock::overlaySelected() {
    const QTreeWidgetItem* item = results_->currentItem();
    if (item == nullptr || searchedSpectrum_ < 0) {
        details_->clear();
        context_.view.setReferenceOverlay(std::nullopt);
        unmarkBands();
        return;
    }
    const LIBRARY_GLOBALS& library = context_.state.library;
    const auto e = at(item->data(kRank, Qt::UserRole).toInt());
    const QString name = text(library.MINAMES[e]);
    const QString score = QString::number(library.PERC_MATCH[e], 'f', 2);
    const std::filesystem::path file = ramanLibraryFolder(context_.home) / library.MI_FILENAMES[e];
    details_->setText(QStringLiteral("<b>%1</b> %2 &nbsp;score %3<br>%4 &nbsp;laser %5<br>%6")
                          .arg(name.toHtmlEscaped(), text(library.MIGRELT_ID[e]).toHtmlEscaped(),
                               score, text(library.CHEMISTRIES[e]).toHtmlEscaped(),
                               text(library.MI_WAVE[e]).toHtmlEscaped(),
                               text(library.LOCALITIES[e]).toHtmlEscaped()));
    SPECDATA_GLOBALS reference;
    MINERALINFO header;
    try {
        loadSpectrumFile(reference, header, file); // a file of several: the first is drawn
    } catch (const QuarvexError& error) {
        details_->setText(details_->text() +
                          QStringLiteral("<br>The reference spectrum cannot be drawn: %1")
                              .arg(QString::fromStdString(error.text()).toHtmlEscaped()));
        context_.view.setReferenceOverlay(std::nullopt);
        unmarkBands();
        return;
    }
    const auto x = reference.xValues(0);
    const auto y = reference.yValues(0);
    context_.view.setReferenceOverlay(ReferenceOverlay{
        QStringLiteral("%1  %2 (score %3)").arg(name, text(library.MIGRELT_ID[e]), score),
        {x.begin(), x.end()},
        {y.begin(), y.end()},
        searchedSpectrum_,
        searchedRange_});
    markMatchedBands(e, x, y);
}

namespace {

QString bandList(const std::vector<float>& bands) {
    QStringList list;
    for (const float band : bands) {
        list.append(QString::number(std::lround(band)));
    }
    return list.isEmpty() ? QStringLiteral("none") : list.join(QLatin1Char(' '));
}

} // namespace

// After a robust or mixture search: the unknown's bands that match the entry's (x, y) once
// moved by its shift are marked on the unknown and listed with the unmatched ones.
void RamanSearchDock::markMatchedBands(std::size_t entry, std::span<const float> x,
                                       std::span<const float> y) {
    const LIBRARY_GLOBALS& library = context_.state.library;
    if (entry >= library.MATCH_SHIFT.size()) {
        unmarkBands();
        return;
    }
    const SPECDATA_GLOBALS& s = context_.state.specdata;
    const auto unknownX = s.xValues(searchedSpectrum_);
    const PointRun run = pointsWithin(unknownX, searchedRange_.start, searchedRange_.end);
    const BandTable table =
        matchBands(significantBands(unknownX.subspan(run.first, run.count),
                                    s.yValues(searchedSpectrum_).subspan(run.first, run.count)),
                   significantBands(x, y), library.MATCH_SHIFT[entry]);
    PeakMarks marks{searchedSpectrum_, {}, {}};
    QStringList pairs;
    for (const BandPair& pair : table.matched) {
        marks.found.push_back(pair.unknown);
        pairs.append(
            QStringLiteral("%1~%2").arg(std::lround(pair.unknown)).arg(std::lround(pair.entry)));
    }
    context_.view.setPeakMarks(std::move(marks));
    marked_ = true;
    details_->setText(
        details_->text() +
        QStringLiteral("<br>Shift %1 cm-1. Bands matched (unknown~entry): %2; "
                       "the unknown's alone: %3; the entry's alone: %4")
            .arg(library.MATCH_SHIFT[entry])
            .arg(pairs.isEmpty() ? QStringLiteral("none") : pairs.join(QLatin1Char(' ')))
            .arg(bandList(table.unknownOnly), bandList(table.entryOnly)));
}

void RamanSearchDock::unmarkBands() {
    if (marked_) {
        context_.view.setPeakMarks({});
        marked_ = false;
    }
}

void RamanSearchDock::clearResults() {
    searchedSpectrum_ = -1;
    searchedPath_.clear();
    shown_ = 0;
    summary_->clear();
    dropMixture();
    results_->clear(); // no current item: the overlay goes too
    overlaySelected();
    updateButtons();
}

void RamanSearchDock::compileLibrary() {
    LibraryCompilation compiled;
    if (!runCancellableWithProgress(this, QStringLiteral("Compile Library"),
                                    [&](const ProgressCallback& progress) {
                                        waitForLibrary(progress);
                                        compiled = CREATE_SEARCH_LIB(context_.home, progress);
                                    })) {
        libraryLabel_->setText(
            QStringLiteral("Compilation cancelled: the library stays as it was."));
        return;
    }
    showCompilation(compiled);
}

void RamanSearchDock::showCompilation(const LibraryCompilation& compilation) {
    compilation_ = compilation;
    QString line = QStringLiteral("Library: %1 entries, compiled %2 from %3")
                       .arg(compilation.entries)
                       .arg(QTime::currentTime().toString(QStringLiteral("HH:mm")))
                       .arg(QString::fromStdString(compilation.folder.string()).toHtmlEscaped());
    const auto skipped = compilation.skipped.size();
    if (skipped > 0) {
        line += QStringLiteral(". <a href=\"skipped\">%1 %2 left out</a>")
                    .arg(skipped)
                    .arg(skipped == 1 ? QStringLiteral("file") : QStringLiteral("files"));
    }
    libraryLabel_->setText(line);
}

void RamanSearchDock::showUpToDate(int entries) {
    libraryLabel_->setText(
        QStringLiteral("Library: %1 entries, unchanged since its last "
                       "compilation, in %2")
            .arg(entries)
            .arg(QString::fromStdString(ramanLibraryFolder(context_.home).string())
                     .toHtmlEscaped()));
}

void RamanSearchDock::showCompilationFailure(const QString& text) {
    libraryLabel_->setText(
        QStringLiteral("The library could not be compiled: %1").arg(text.toHtmlEscaped()));
}

// In a job's worker thread: the start-up compilation, if it still runs, ends first.
void RamanSearchDock::waitForLibrary(const ProgressCallback& progress) const {
    if (context_.libraryCompilation != nullptr) {
        context_.libraryCompilation->wait(progress);
    }
}

void RamanSearchDock::closeEvent(QCloseEvent* event) {
    context_.view.setReferenceOverlay(std::nullopt); // the results stay for the next opening
    if (mixture_) {
        context_.view.setFitOverlay(std::nullopt); // another mode's fit is not ours to remove
    }
    unmarkBands();
    QDockWidget::closeEvent(event);
}

} // namespace quarvex::ui
