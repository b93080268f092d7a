// The File Manager's table, details and buttons.
#include "ui/FileManagerDock.h"

#include "common/IndexCast.h"
#include "ui/Commands.h"
#include "ui/SpectrumView.h"
#include "ui/ToolIcons.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <iterator>

namespace quarvex::ui {

namespace {

enum Column { kNumber, kName, kMineral, kChemistry, kLocality, kIdentifier, kType, kPoints };

// The header of each column, in the order of Column: header and cells come from one list.
constexpr const char* kColumnHeaders[] = {"#",        "Name", "Mineral", "Chemistry",
                                          "Locality", "ID",   "Type",    "Points"};
static_assert(std::size(kColumnHeaders) == kPoints + 1);

// The rows of the details form, in the order showDetails() fills them.
constexpr const char* kDetailLabels[] = {
    "Name:",      "File:",       "Mineral:", "Chemistry:", "Locality:", "ID:",
    "Data type:", "Wavelength:", "Points:",  "x range:",   "y range:",  "Scale:"};

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

} // namespace

FileManagerDock::FileManagerDock(ProgramState& state, QWidget* parent)
    : QDockWidget(QStringLiteral("File Manager"), parent), state_(state) {
    setObjectName(QStringLiteral("FileManagerDock"));
    auto* body = new QWidget(this);
    auto* layout = new QVBoxLayout(body);
    layout->setContentsMargins(6, 4, 6, 6);

    table_ = new QTreeWidget(body);
    QStringList headers;
    for (const char* header : kColumnHeaders) {
        headers.append(QString::fromUtf8(header));
    }
    table_->setColumnCount(static_cast<int>(headers.size()));
    table_->setHeaderLabels(headers);
    table_->setRootIsDecorated(false);
    table_->setUniformRowHeights(true);
    table_->setAlternatingRowColors(true);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setContextMenuPolicy(Qt::CustomContextMenu);
    table_->setIconSize(QSize(28, 12));
    table_->header()->setStretchLastSection(false);
    table_->header()->setSectionResizeMode(QHeaderView::Interactive);
    table_->setToolTip(QStringLiteral("Tick to show a spectrum, double-click to make it primary, "
                                      "right-click for its menu"));
    layout->addWidget(table_, 2);

    auto* details = new QGroupBox(QStringLiteral("Selected spectrum"), body);
    auto* form = new QFormLayout(details);
    form->setRowWrapPolicy(QFormLayout::DontWrapRows);
    form->setLabelAlignment(Qt::AlignRight);
    for (const char* label : kDetailLabels) {
        auto* value = new QLabel(details);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        value->setWordWrap(true);
        value->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // wrap, never widen
        form->addRow(QString::fromUtf8(label), value);
        details_.push_back(value);
    }
    layout->addWidget(details);

    auto* buttons = new QGridLayout();
    visibilityButton_ = new QPushButton(QStringLiteral("Make Invisible"), body);
    primaryButton_ = new QPushButton(QStringLiteral("Make Primary"), body);
    scaleButton_ = new QPushButton(QStringLiteral("Adjust Scale..."), body);
    dataTypeButton_ = new QPushButton(QStringLiteral("Adjust Data Type..."), body);
    deleteButton_ = new QPushButton(QStringLiteral("Delete"), body);
    buttons->addWidget(visibilityButton_, 0, 0);
    buttons->addWidget(primaryButton_, 0, 1);
    buttons->addWidget(deleteButton_, 0, 2);
    buttons->addWidget(scaleButton_, 1, 0);
    buttons->addWidget(dataTypeButton_, 1, 1);
    layout->addLayout(buttons);
    setWidget(body);

    const std::pair<QPushButton*, int> commands[] = {{visibilityButton_, kCmdMakeInvisible},
                                                     {primaryButton_, kCmdMakePrimary},
                                                     {scaleButton_, kCmdAdjustScale},
                                                     {dataTypeButton_, kCmdAdjustDataType},
                                                     {deleteButton_, kCmdDelete}};
    for (const auto& [button, command] : commands) {
        connect(button, &QPushButton::clicked, this,
                [this, command] { emit commandRequested(command, selectedSpectrum()); });
    }
    connect(table_, &QTreeWidget::itemSelectionChanged, this, [this] {
        SET_UP_SPECDATA_BUTTONS();
        showDetails();
        emit selectionChanged(selectedSpectrum());
    });
    connect(table_, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
        emit commandRequested(kCmdMakePrimary, table_->indexOfTopLevelItem(item));
    });
    connect(table_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        const int spectrum = table_->indexOfTopLevelItem(item);
        if (filling_ || column != kNumber || spectrum < 0) {
            return;
        }
        const bool wanted = item->checkState(kNumber) == Qt::Checked;
        if (wanted != static_cast<bool>(state_.specdata.VISIBLE[at(spectrum)])) {
            emit commandRequested(kCmdMakeInvisible, spectrum); // the command toggles
        }
    });
    connect(table_, &QTreeWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
        const int spectrum = table_->indexOfTopLevelItem(table_->itemAt(pos));
        if (spectrum >= 0) {
            selectSpectrum(spectrum);
            emit popupRequested(table_->viewport()->mapToGlobal(pos), spectrum);
        }
    });
    HANDLE_FILEMANAGER_LISTVIEW();
}

void FileManagerDock::HANDLE_FILEMANAGER_LISTVIEW() {
    const SPECDATA_GLOBALS& s = state_.specdata;
    const int selected = selectedSpectrum();
    filling_ = true;
    // Rows are updated in place while their number stays: a tick box's change arrives here
    // while its row is still being changed.
    const bool sameRows = table_->topLevelItemCount() == s.count();
    if (!sameRows) {
        table_->clear();
    }
    for (int k = 0; k < s.count(); ++k) {
        const MINERALINFO& header = s.HEADER[at(k)];
        QTreeWidgetItem* item = sameRows ? table_->topLevelItem(k) : new QTreeWidgetItem(table_);
        item->setText(kNumber, QString::number(k + 1));
        item->setIcon(kNumber, colourSwatch(spectrumColour(state_.painting, k)));
        item->setCheckState(kNumber, s.VISIBLE[at(k)] ? Qt::Checked : Qt::Unchecked);
        item->setText(kName, text(s.NAME[at(k)]));
        item->setToolTip(kName, text(s.PATH[at(k)]));
        item->setText(kMineral, text(header.names));
        item->setText(kChemistry, text(header.chemistry));
        item->setText(kLocality, text(header.locality));
        item->setToolTip(kLocality, text(header.locality));
        item->setText(kIdentifier, text(header.id));
        item->setText(kType, text(s.DTYPE[at(k)]));
        item->setText(kPoints, QString::number(s.NUMDATA[at(k)]));
        item->setTextAlignment(kPoints, Qt::AlignRight | Qt::AlignVCenter);
        QFont font = item->font(kName);
        font.setBold(s.ACTIVE[at(k)]);
        for (int column = 0; column < table_->columnCount(); ++column) {
            item->setFont(column, font);
        }
    }
    for (int column = 0; column < table_->columnCount(); ++column) {
        table_->resizeColumnToContents(column);
        table_->setColumnWidth(column, std::min(table_->columnWidth(column), 260));
    }
    filling_ = false;
    selectSpectrum(selected >= 0 && selected < s.count() ? selected : s.count() - 1);
    SET_UP_SPECDATA_BUTTONS();
    showDetails();
}

void FileManagerDock::SET_UP_SPECDATA_BUTTONS() {
    const int spectrum = selectedSpectrum();
    const bool any = spectrum >= 0;
    for (QPushButton* button :
         {visibilityButton_, primaryButton_, scaleButton_, dataTypeButton_, deleteButton_}) {
        button->setEnabled(any);
    }
    const bool hidden = any && !state_.specdata.VISIBLE[at(spectrum)];
    visibilityButton_->setText(hidden ? QStringLiteral("Make Visible")
                                      : QStringLiteral("Make Invisible"));
    primaryButton_->setEnabled(any && !state_.specdata.ACTIVE[at(spectrum)]);
}

int FileManagerDock::selectedSpectrum() const {
    const QList<QTreeWidgetItem*> items = table_->selectedItems();
    return items.isEmpty() ? -1 : table_->indexOfTopLevelItem(items.front());
}

void FileManagerDock::selectSpectrum(int spectrum) {
    if (QTreeWidgetItem* item = table_->topLevelItem(spectrum)) {
        table_->setCurrentItem(item);
    } else {
        table_->clearSelection();
    }
}

void FileManagerDock::showDetails() {
    const SPECDATA_GLOBALS& s = state_.specdata;
    const int k = selectedSpectrum();
    if (k < 0) {
        for (QLabel* value : details_) {
            value->clear();
        }
        return;
    }
    const MINERALINFO& header = s.HEADER[at(k)];
    const auto x = s.xValues(k);
    const auto& y = s.Y_EXTREMES[at(k)];
    const float absolute = s.ABS_SCALE[at(k)];
    const QString values[] = {
        text(s.NAME[at(k)]),
        text(s.PATH[at(k)]).replace(QLatin1Char('/'), QStringLiteral("/\u200B")), // may wrap
        text(header.names),
        text(header.chemistry),
        text(header.locality),
        text(header.id),
        text(s.DTYPE[at(k)]),
        text(s.WAVE_INFO[at(k)]),
        QString::number(s.NUMDATA[at(k)]),
        x.empty() ? QString() : QStringLiteral("%1 to %2").arg(x.front()).arg(x.back()),
        QStringLiteral("%1 to %2").arg(y[0]).arg(y[1]),
        absolute > 0.0F
            ? QStringLiteral("× %1, full scale %2").arg(s.SCALE_FACT[at(k)]).arg(absolute)
            : QStringLiteral("× %1, automatic").arg(s.SCALE_FACT[at(k)]),
    };
    for (std::size_t row = 0; row < details_.size(); ++row) {
        details_[row]->setText(values[row]);
    }
}

} // namespace quarvex::ui
