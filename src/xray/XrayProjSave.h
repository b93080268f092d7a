// Saving an X-ray project: the main file and, for each phase, its information, peak, reference
// and input files (XRAYPROJSAVE and its writers).
#pragma once

#include "common/StagedFiles.h"
#include "xray/XrayProject.h"

#include <filesystem>
#include <iosfwd>

namespace quarvex {

/// The main file: "<numxrays> 1", then "<numphases> ", "<wave> " (when known), "<pattern> "
/// and "<dtype> ".
void WRITEXPROJ(std::ostream& out, const XrayProject& project);

/// The information file: "<name> " and the phase's name.
void WRITEPHASEINFO(std::ostream& out, const XrayPhase& phase);

/// The peak file: "<numpeaks> ", then per peak PKPRMS, PKERR, PKDSP, PKDERR, USEPK (T or F),
/// PKTYPE, PKBND and the background pair, one line each (the saved order).
void WRITEPHASEPEAK(std::ostream& out, const XrayPeakList& peaks);

/// The reference file: "<system> ", "<source> ", "<numassign> " and one line per assignment
/// (peak number from 1, h k l, wavelength number, reference 2-theta).
void WRITEPHASEREF(std::ostream& out, const XrayPhase& phase);

/// The input file: "<icp> " and the input cell, "<numinp> ", per input reflection three lines
/// (h k l, d-spacing, intensity), then "<useicp> ", "<useihkl> ", "<useiints> " each with 1 or 0.
void WRITEPHASEINPUT(std::ostream& out, const XrayPhase& phase);

/// XRAYPROJSAVE: writes the main file `mainFile` and the four files of every phase (folders
/// "Phase" + number beside it, made when missing). The files are written all or nothing
/// (StagedFiles, journal projectJournalPath): a failed save leaves the previous project whole,
/// a killed one is either not there or completed by the next read or save. The save first
/// completes an interrupted save and removes the temporary files of killed ones. The names a new
/// project gave its first phase's files ("phase1.peak", "phase1.info") are removed once their
/// saved successors are in place. The pattern file is not rewritten. The project's last
/// refinement (refinedRecordPath) joins the set when it holds one; otherwise a record left from
/// an earlier save is removed after the commit. Throws QuarvexError (title
/// "X-ray Project") when a folder or file cannot be written. `beforeStep` is for tests.
void XRAYPROJSAVE(const std::filesystem::path& mainFile, const XrayProject& project,
                  const CommitStepHook& beforeStep = {});

} // namespace quarvex
