// The matched table: its rows, the h k l editor with the nearby reflections, the use flags.
#include "ui/XrayPeakTable.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QHeaderView>
#include <QRegularExpression>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <algorithm>
#include <cmath>

namespace quarvex::ui {

namespace {

// Offers the nearby reflections of a peak, and takes any typed "h k l".
class HklDelegate : public QStyledItemDelegate {
public:
    explicit HklDelegate(XrayPeakTable& table) : QStyledItemDelegate(&table), table_(table) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                          const QModelIndex& index) const override {
        auto* box = new QComboBox(parent);
        box->setEditable(true);
        box->setInsertPolicy(QComboBox::NoInsert);
        if (table_.choices) {
            box->addItems(table_.choices(index.row()));
        }
        box->addItem(QString::fromUtf8(XrayPeakTable::kNone));
        box->view()->setMinimumWidth(box->view()->sizeHintForColumn(0) + 24);
        return box;
    }

    void setEditorData(QWidget* editor, const QModelIndex& index) const override {
        static_cast<QComboBox*>(editor)->setCurrentText(index.data().toString());
    }

private:
    const XrayPeakTable& table_;
};

// What a row last showed of the use flag and the h k l: an item change that leaves them as they
// were (a colour, a tooltip) is no edit of the user.
constexpr int kShownRole = Qt::UserRole + 1;

// True (and the new value remembered) when the cell's value differs from the one last shown.
bool changedByUser(QTreeWidgetItem& item, int column, const QVariant& value) {
    if (item.data(column, kShownRole) == value) {
        return false;
    }
    item.setData(column, kShownRole, value);
    return true;
}

QString fixed(double value, int decimals) {
    return std::isfinite(value) ? QString::number(value, 'f', decimals) : QStringLiteral("–");
}

} // namespace

QString hklText(const std::array<int, 3>& hkl, int wave) {
    QString text = QStringLiteral("%1 %2 %3").arg(hkl[0]).arg(hkl[1]).arg(hkl[2]);
    if (wave > 1) {
        text += QStringLiteral(" (λ%1)").arg(wave);
    }
    return text;
}

bool parseHkl(const QString& text, std::array<int, 3>& hkl, int& wave) {
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*(-?\d+)[\s,]+(-?\d+)[\s,]+(-?\d+)(?:\s*\(λ([123])\))?)"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch()) {
        return false;
    }
    for (int i = 0; i < 3; ++i) {
        hkl[static_cast<std::size_t>(i)] = match.captured(i + 1).toInt();
    }
    wave = match.captured(4).isEmpty() ? 1 : match.captured(4).toInt();
    return true;
}

XrayPeakTable::XrayPeakTable(QWidget* parent) : QTreeWidget(parent) {
    setColumnCount(kColumns);
    setHeaderLabels({QStringLiteral("#"), QStringLiteral("Use"), QStringLiteral("2-theta"),
                     QStringLiteral("d / Å"), QStringLiteral("h k l"),
                     QStringLiteral("Ref. 2-theta"), QStringLiteral("Δ 2-theta"),
                     QStringLiteral("obs−calc"), QStringLiteral("hat"), QStringLiteral("Rstudent"),
                     QStringLiteral("DFFITS")});
    headerItem()->setToolTip(kHkl, QStringLiteral("Double-click to change; \"none\" unassigns"));
    headerItem()->setToolTip(kDifference, QStringLiteral("Peak minus reflection, degrees"));
    headerItem()->setToolTip(kObsMinusCalc,
                             QStringLiteral("Observed minus calculated 2-theta of the refined "
                                            "cell, degrees"));
    headerItem()->setToolTip(kHat, QStringLiteral("Leverage of the line in the joint refinement; "
                                                  "flagged above 2p/n"));
    headerItem()->setToolTip(kRstudent, QStringLiteral("Studentised deleted residual; flagged "
                                                       "above 2 in magnitude"));
    headerItem()->setToolTip(kDffits,
                             QStringLiteral("Change of the line's fitted value when it is left "
                                            "out, in its standard errors"));
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                    QAbstractItemView::SelectedClicked);
    setItemDelegateForColumn(kHkl, new HklDelegate(*this));
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::Interactive);
    connect(this, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        if (filling_) {
            return;
        }
        const int peak = indexOfTopLevelItem(item);
        const bool use = item->checkState(kUse) == Qt::Checked;
        if (column == kHkl && changedByUser(*item, kHkl, item->text(kHkl))) {
            emit hklEdited(peak, item->text(kHkl));
        } else if (column == kUse && changedByUser(*item, kUse, use)) {
            emit useToggled(peak, use);
        }
    });
}

void XrayPeakTable::showPhase(const XrayPhase* phase) {
    filling_ = true;
    const int selected = indexOfTopLevelItem(currentItem());
    const int peaks = phase == nullptr ? 0 : phase->peaks.count();
    // The rows are updated in place when the peaks are the same: an edit of a row arrives here
    // while that row is still being changed.
    const bool samePeaks = topLevelItemCount() == peaks;
    if (!samePeaks) {
        clear();
    }
    for (int k = 0; k < peaks; ++k) {
        const XrayPeakList& list = phase->peaks;
        const auto i = static_cast<std::size_t>(k);
        QTreeWidgetItem* item = samePeaks ? topLevelItem(k) : new QTreeWidgetItem(this);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable |
                       Qt::ItemIsEditable);
        item->setText(kNumber, QString::number(k + 1));
        item->setCheckState(kUse, list.USEPK[i] ? Qt::Checked : Qt::Unchecked);
        item->setText(kTwoTheta, fixed(list.twoTheta(k), 3));
        item->setText(kDSpacing, fixed(list.PKDSP[i], 4));
        const auto assigned = std::find_if(phase->assignments.begin(), phase->assignments.end(),
                                           [k](const PeakAssignment& a) { return a.peak == k; });
        item->setData(kUse, kShownRole, static_cast<bool>(list.USEPK[i]));
        if (assigned != phase->assignments.end()) {
            const double reference = assigned->referenceTwoTheta;
            item->setText(kHkl, hklText(assigned->hkl, assigned->wave));
            item->setText(kReference, fixed(reference, 3));
            const double difference = static_cast<double>(list.twoTheta(k)) - reference;
            item->setText(kDifference, std::isfinite(difference)
                                           ? QString::asprintf("%+.3f", difference)
                                           : QStringLiteral("–"));
        } else {
            for (const int column : {kHkl, kReference, kDifference}) {
                item->setText(column, QString());
            }
        }
        item->setData(kHkl, kShownRole, item->text(kHkl));
        for (const int column : {kNumber, kTwoTheta, kDSpacing, kReference, kDifference,
                                 kObsMinusCalc, kHat, kRstudent, kDffits}) {
            item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        }
        item->setTextAlignment(kHkl, Qt::AlignCenter);
        const bool plain = list.USEPK[i] && assigned != phase->assignments.end();
        for (int column = 0; column < kColumns; ++column) {
            item->setForeground(
                column, palette().brush(plain ? QPalette::Text : QPalette::PlaceholderText));
        }
        renderLineFit(*item, k);
    }
    if (selected >= 0 && selected < peaks) {
        setCurrentItem(topLevelItem(selected));
    }
    for (int column = 0; column < kColumns; ++column) {
        resizeColumnToContents(column);
        setColumnWidth(column, std::max(columnWidth(column), column == kHkl ? 86 : 44));
    }
    filling_ = false;
}

void XrayPeakTable::showLineFits(std::vector<std::optional<LineFit>> fits) {
    fits_ = std::move(fits);
    filling_ = true;
    for (int k = 0; k < topLevelItemCount(); ++k) {
        renderLineFit(*topLevelItem(k), k);
    }
    // A column no refinement has filled stays out of the way of the others.
    for (const int column : {kObsMinusCalc, kHat, kRstudent, kDffits}) {
        bool filled = false;
        for (int k = 0; k < topLevelItemCount() && !filled; ++k) {
            filled = !topLevelItem(k)->text(column).isEmpty();
        }
        setColumnHidden(column, !filled);
        resizeColumnToContents(column);
        setColumnWidth(column, std::max(columnWidth(column), 44));
    }
    filling_ = false;
}

int XrayPeakTable::widthForAllColumns() const {
    return header()->length() + 2 * frameWidth() + verticalScrollBar()->sizeHint().width();
}

void XrayPeakTable::renderLineFit(QTreeWidgetItem& item, int peak) {
    const auto p = static_cast<std::size_t>(peak);
    const LineFit none;
    const LineFit& fit = p < fits_.size() && fits_[p] ? *fits_[p] : none;
    const auto signedText = [](double value, int decimals) {
        return std::isfinite(value) ? QString::asprintf("%+.*f", decimals, value) : QString();
    };
    item.setText(kObsMinusCalc, signedText(fit.obsMinusCalc, 4));
    item.setText(kHat, std::isfinite(fit.hat) ? QString::number(fit.hat, 'f', 3) : QString());
    item.setText(kRstudent, signedText(fit.rstudent, 2));
    item.setText(kDffits, signedText(fit.dffits, 2));
    for (int column = 0; column < kColumns; ++column) {
        item.setBackground(column, fit.flagged ? QBrush(QColor(0xff, 0xe0, 0xe0)) : QBrush());
        item.setToolTip(column, fit.flagged ? fit.why : QString());
    }
}

} // namespace quarvex::ui
