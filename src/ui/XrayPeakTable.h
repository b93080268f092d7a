// The matched table of the X-ray Diffraction mode: the pattern's peaks with their h k l, which
// the user can change, clear and take out of use.
#pragma once

#include "xray/XrayPeakModel.h"

#include <QTreeWidget>

#include <array>
#include <functional>
#include <limits>
#include <optional>
#include <span>
#include <vector>

namespace quarvex::ui {

/// The text of an assignment in the table: "h k l", with " (λ2)" or " (λ3)" for a line of the
/// second or third wavelength.
QString hklText(const std::array<int, 3>& hkl, int wave);

/// Reads what the user typed or chose in the h k l column: three whole numbers, optionally
/// followed by "(λ2)" or "(λ3)"; text after that (a chosen reflection's position) is ignored.
/// False when the text does not start with three whole numbers.
bool parseHkl(const QString& text, std::array<int, 3>& hkl, int& wave);

/// What the last refinement says of a peak's line. NaN: not computed (the diagnostics come from
/// the joint refinement only).
struct LineFit {
    static constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    double obsMinusCalc = kNone; ///< observed (corrected) minus calculated 2-theta, degrees
    double hat = kNone;          ///< leverage
    double rstudent = kNone;     ///< studentised deleted residual
    double dffits = kNone;
    bool flagged = false; ///< high leverage or |Rstudent| above 2: the row is marked
    QString why;          ///< the row's tooltip when flagged
};

/// One row per peak of the phase, in peak order: number, use flag (a tick box), fitted 2-theta
/// and d, h k l, the reflection's 2-theta and the difference peak minus reflection. Double-click
/// the h k l to change it: a list of the nearby reflections, or type any "h k l"; choose "none"
/// (or clear it) to unassign the peak. After a refinement the refined lines show observed
/// minus calculated 2-theta, and after the joint refinement their hat value, Rstudent and DFFITS,
/// the flagged rows marked in colour.
class XrayPeakTable : public QTreeWidget {
    Q_OBJECT

public:
    enum Column {
        kNumber,
        kUse,
        kTwoTheta,
        kDSpacing,
        kHkl,
        kReference,
        kDifference,
        kObsMinusCalc,
        kHat,
        kRstudent,
        kDffits,
        kColumns
    };
    /// The entry of the h k l list that unassigns a peak.
    static constexpr const char* kNone = "none";

    explicit XrayPeakTable(QWidget* parent = nullptr);

    /// Shows the phase's peaks (none for null), keeping the selected row.
    void showPhase(const XrayPhase* phase);

    /// Shows the refinement's word on each peak (index: peak; none or a short list: nothing for
    /// the others); kept until the next call, across showPhase. Its columns that stay empty are
    /// hidden.
    void showLineFits(std::vector<std::optional<LineFit>> fits);

    /// The width that shows every visible column without a horizontal scroll bar, pixels.
    int widthForAllColumns() const;

    /// The choices of the h k l list of a peak (0-based), nearest first; set by the mode.
    std::function<QStringList(int peak)> choices;

signals:
    /// The user changed the h k l of peak `peak` (0-based) to `text` (a text other than shown).
    void hklEdited(int peak, const QString& text);
    /// The user ticked or cleared the use flag of peak `peak` (only a real change: a colour or
    /// a tooltip set on the row is none).
    void useToggled(int peak, bool use);

private:
    void renderLineFit(QTreeWidgetItem& item, int peak);

    bool filling_ = false;
    std::vector<std::optional<LineFit>> fits_;
};

} // namespace quarvex::ui
