// The two range fields of a mode, their note, and the link to the view's selection.
#include "ui/RangeEditor.h"

#include "ui/SpectrumView.h"

#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace quarvex::ui {

RangeEditor::RangeEditor(SpectrumView& view, Fallback fallback, QWidget* parent)
    : QWidget(parent), view_(view), fallback_(std::move(fallback)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    auto* fields = new QHBoxLayout();
    from_ = new QDoubleSpinBox(this);
    to_ = new QDoubleSpinBox(this);
    for (QDoubleSpinBox* field : {from_, to_}) {
        field->setDecimals(1);
        field->setKeyboardTracking(false);
        field->setAccelerated(true);
        field->setMinimumWidth(110);
        connect(field, &QDoubleSpinBox::editingFinished, this, &RangeEditor::typed);
    }
    auto* reset = new QToolButton(this);
    reset->setText(QStringLiteral("Reset"));
    reset->setToolTip(QStringLiteral("Clear the view's selection and use the default range"));
    fields->addWidget(new QLabel(QStringLiteral("From"), this));
    fields->addWidget(from_, 1);
    fields->addWidget(new QLabel(QStringLiteral("to"), this));
    fields->addWidget(to_, 1);
    fields->addWidget(reset);
    layout->addLayout(fields);
    source_ = new QLabel(this);
    source_->setWordWrap(true);
    source_->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(source_);

    connect(reset, &QToolButton::clicked, this, [this] { view_.setSelectedRange(std::nullopt); });
    connect(&view_, &SpectrumView::selectionChanged, this, [this] {
        showCurrent();
        emit rangeChanged();
    });
}

void RangeEditor::refresh(const SPECDATA_GLOBALS& specdata, int spectrum) {
    limits_.reset();
    if (spectrum >= 0 && !specdata.xValues(spectrum).empty()) {
        const auto x = specdata.xValues(spectrum);
        limits_ = XRange{x.front(), x.back()};
    }
    for (QDoubleSpinBox* field : {from_, to_}) {
        const QSignalBlocker quiet(field);
        field->setSuffix(spectrum >= 0
                             ? xUnitFor(specdata.DTYPE[static_cast<std::size_t>(spectrum)])
                             : QString());
        if (limits_) {
            field->setRange(std::floor(limits_->start), std::ceil(limits_->end));
        }
    }
    showCurrent();
}

void RangeEditor::showCurrent() {
    QString note;
    current_ = view_.selectedRange();
    if (current_) {
        note =
            QStringLiteral("The range selected in the view (drag on the view, or type it here).");
    } else {
        current_ = fallback_(note);
    }
    if (!limits_) {
        current_.reset();
    }
    setEnabled(current_.has_value());
    const QSignalBlocker quietFrom(from_);
    const QSignalBlocker quietTo(to_);
    from_->setValue(current_ ? current_->start : 0.0);
    to_->setValue(current_ ? current_->end : 0.0);
    source_->setText(current_ ? note : QString());
}

std::optional<XRange> RangeEditor::range() const {
    return current_;
}

// A typed bound selects the typed range in the view; the selection's signal refreshes the
// fields. A bound the user left as shown keeps its unrounded value.
void RangeEditor::typed() {
    if (!current_) {
        return;
    }
    const auto bound = [](const QDoubleSpinBox* field, double value) {
        return field->value() == field->valueFromText(field->textFromValue(value)) ? value
                                                                                   : field->value();
    };
    const XRange typedRange{bound(from_, current_->start), bound(to_, current_->end)};
    if (!(typedRange.start < typedRange.end)) {
        // Never swap or clamp behind the user's back: say why the range stays.
        const XRange kept = *current_;
        showCurrent();
        source_->setText(QStringLiteral("From %1 is not below To %2: the range stays %3 to %4.")
                             .arg(from_->textFromValue(typedRange.start),
                                  to_->textFromValue(typedRange.end),
                                  from_->textFromValue(kept.start), to_->textFromValue(kept.end)));
        return;
    }
    if (typedRange.start != current_->start || typedRange.end != current_->end) {
        view_.setSelectedRange(typedRange);
    }
}

} // namespace quarvex::ui
