// The dialogs of the X-ray Diffraction mode: a text file shown for reading, the reflection
// table of a reference pattern, and the settings of a theoretical pattern.
#pragma once

#include "xray/TheoreticalPattern.h"
#include "xray/XrayGlobals.h"

#include <QDialog>

#include <filesystem>

class QDoubleSpinBox;
class QPlainTextEdit;
class QTreeWidget;

namespace quarvex::ui {

/// A text shown read-only in a fixed-width font, with a Close button.
class TextViewDialog : public QDialog {
    Q_OBJECT

public:
    TextViewDialog(const QString& title, const QString& text, QWidget* parent = nullptr);
    QString text() const;

private:
    QPlainTextEdit* view_ = nullptr;
};

/// The whole text of a file for a TextViewDialog. Throws QuarvexError ("ERROR WITH INCOMING
/// DATA, FILE READ", title "SHARING ERROR") when it cannot be read.
QString readTextFile(const std::filesystem::path& path);

/// "View...": a reference pattern's header (title, cell, space group, crystal system,
/// wavelengths, the reader's notes) and its reflections (2-theta, intensity, d, h k l).
class ReferenceTableDialog : public QDialog {
    Q_OBJECT

public:
    ReferenceTableDialog(const DIFF_GLOBALS& diff, int reference, QWidget* parent = nullptr);
    QTreeWidget* table() const { return table_; }

private:
    QTreeWidget* table_ = nullptr;
};

/// "Create Spectrum From DIF": wavelength, FWHM, step, range (automatic: from the reflections),
/// zero shift and counting noise (none) of the theoretical pattern.
class TheoreticalPatternDialog : public QDialog {
    Q_OBJECT

public:
    TheoreticalPatternDialog(const QString& referenceName,
                             const TheoreticalPatternSettings& settings, QWidget* parent = nullptr);
    TheoreticalPatternSettings settings() const;

private:
    TheoreticalPatternSettings settings_;
    QDoubleSpinBox* wavelength_ = nullptr;
    QDoubleSpinBox* fwhm_ = nullptr;
    QDoubleSpinBox* step_ = nullptr;
    QDoubleSpinBox* from_ = nullptr;
    QDoubleSpinBox* to_ = nullptr;
    QDoubleSpinBox* zeroShift_ = nullptr;
    QDoubleSpinBox* noise_ = nullptr;
};

} // namespace quarvex::ui
