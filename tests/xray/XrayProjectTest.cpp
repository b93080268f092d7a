// X-ray projects: new, save and read back reproduce every value bit for bit, the last refinement
// included; a failed save leaves the previous project whole; damaged projects are refused with
// the file and line.
#include "CommitKill.h"
#include "TestSupport.h"

#include "common/QuarvexError.h"
#include "xray/XrayProjNew.h"
#include "xray/XrayProjRead.h"
#include "xray/XrayProjSave.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <fstream>
#include <limits>

namespace quarvex {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// Values whose shortest texts are long or unusual.
XrayPeak testPeak(int k) {
    const float f = static_cast<float>(k);
    XrayPeak peak;
    peak.parameters = {1.0F / 3.0F + f, 20.0F + 0.1F * f, 0.07F, 0.5F};
    peak.errors = {kNaN, 1.0e-30F, std::numeric_limits<float>::max(), -0.0F};
    peak.dSpacing = 4.25F / (1.0F + f);
    peak.dSpacingError = 6.1e-5F;
    peak.use = k % 2 == 0;
    peak.type = k % 2 + 1;
    peak.bounds = {19.5F + f, 21.25F + f};
    peak.background = {-3.5F, kNaN};
    return peak;
}

XrayProject testProject() {
    XrayProject project;
    project.pattern.name = "pattern with blanks.txt";
    project.pattern.dtype = "XRD";
    for (int k = 0; k < 50; ++k) {
        project.pattern.x.push_back(10.0F + 0.01F * static_cast<float>(k));
        project.pattern.y.push_back(std::sqrt(static_cast<float>(k)) * 123.456F);
    }
    project.wavelengths = {1.540562, 1.54439};
    for (int p = 0; p < 2; ++p) {
        XrayPhase phase;
        phase.name = p == 0 ? "Quartz (alpha)" : "Calcite";
        phase.SYM = p == 0 ? 7 : 8;
        phase.source = "/data/ref/Quartz.out";
        for (int k = 0; k < 3 + p; ++k) {
            phase.peaks.append(testPeak(k));
        }
        phase.IHKL = {{1, 0, 0}, {-1, 2, -3}};
        phase.IDSP = {4.2543F, 0.1F};
        phase.IINTS = {20.01F, 0.0F};
        phase.ICP = {4.91239F, 4.91239F, 5.40385F, 90.0F, 90.0F, 120.0F};
        phase.USEICP = p == 0;
        phase.USEIHKL = p == 1;
        phase.USEIINTS = p == 0;
        phase.assignments = {{0, {1, 0, 0}, 1, 20.862946F}, {2, {-1, 2, -3}, 2, kNaN}};
        project.phases.push_back(phase);
    }
    return project;
}

std::uint32_t bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

template <std::size_t N>
void expectSame(const std::array<float, N>& a, const std::array<float, N>& b, const char* what) {
    for (std::size_t i = 0; i < N; ++i) {
        EXPECT_EQ(bits(a[i]), bits(b[i])) << what << " " << i;
    }
}

void expectSamePeaks(const XrayPeakList& a, const XrayPeakList& b) {
    ASSERT_EQ(a.count(), b.count());
    for (int k = 0; k < a.count(); ++k) {
        const XrayPeak p = a.peak(k);
        const XrayPeak q = b.peak(k);
        expectSame(p.parameters, q.parameters, "PKPRMS");
        expectSame(p.errors, q.errors, "PKERR");
        expectSame(std::array{p.dSpacing, p.dSpacingError, p.bounds[0], p.bounds[1],
                              p.background[0], p.background[1]},
                   std::array{q.dSpacing, q.dSpacingError, q.bounds[0], q.bounds[1],
                              q.background[0], q.background[1]},
                   "PKDSP, PKDERR, PKBND, background");
        EXPECT_EQ(p.use, q.use) << k;
        EXPECT_EQ(p.type, q.type) << k;
    }
}

void expectSamePhase(const XrayPhase& a, const XrayPhase& b) {
    EXPECT_EQ(a.name, b.name);
    EXPECT_EQ(a.SYM, b.SYM);
    EXPECT_EQ(a.source, b.source);
    expectSamePeaks(a.peaks, b.peaks);
    EXPECT_EQ(a.IHKL, b.IHKL);
    EXPECT_EQ(a.IDSP, b.IDSP);
    EXPECT_EQ(a.IINTS, b.IINTS);
    expectSame(a.ICP, b.ICP, "ICP");
    EXPECT_EQ(std::tuple(a.USEICP, a.USEIHKL, a.USEIINTS),
              std::tuple(b.USEICP, b.USEIHKL, b.USEIINTS));
    ASSERT_EQ(a.assignments.size(), b.assignments.size());
    for (std::size_t k = 0; k < a.assignments.size(); ++k) {
        const PeakAssignment& x = a.assignments[k];
        const PeakAssignment& y = b.assignments[k];
        EXPECT_EQ(std::tuple(x.peak, x.hkl, x.wave), std::tuple(y.peak, y.hkl, y.wave));
        EXPECT_EQ(bits(x.referenceTwoTheta), bits(y.referenceTwoTheta));
    }
}

void expectSamePattern(const SpectrumRecord& a, const SpectrumRecord& b) {
    EXPECT_EQ(a.x, b.x);
    EXPECT_EQ(a.y, b.y);
}

TEST(XrayProject, NewSaveAndReadBackReproduceEveryValue) {
    test::TempFolder folder;
    const XrayProject project = testProject();
    const auto mainFile = XRAYPROJNEW(folder.path() / "quartz.xproj", project);
    EXPECT_EQ(mainFile, folder.path() / "quartz" / "quartz.xproj");
    EXPECT_EQ(test::readFile(mainFile), "<numxrays> 1\n");

    const XrayProject fresh = readXrayProject(mainFile);
    expectSamePattern(fresh.pattern, project.pattern);
    ASSERT_EQ(fresh.phases.size(), 1U);
    EXPECT_EQ(fresh.phases[0].name, project.phases[0].name);
    expectSamePeaks(fresh.phases[0].peaks, project.phases[0].peaks);

    XRAYPROJSAVE(mainFile, project);
    EXPECT_FALSE(std::filesystem::exists(mainFile.parent_path() / "Phase1" / "phase1.peak"));
    EXPECT_TRUE(std::filesystem::exists(mainFile.parent_path() / "Phase2" / "Phase2.input"));
    const XrayProject back = readXrayProject(resolveProjectFile(folder.path() / "quartz"));
    expectSamePattern(back.pattern, project.pattern);
    EXPECT_EQ(back.pattern.name, project.pattern.name);
    EXPECT_EQ(back.pattern.dtype, project.pattern.dtype);
    EXPECT_EQ(back.wavelengths, project.wavelengths);
    ASSERT_EQ(back.phases.size(), 2U);
    for (std::size_t p = 0; p < 2; ++p) {
        expectSamePhase(back.phases[p], project.phases[p]);
    }
    EXPECT_NE(test::readFile(mainFile.parent_path() / "Phase1" / "Phase1.input")
                  .find("\n<useicp> 1\n<useihkl> 0\n<useiints> 1\n"),
              std::string::npos);
    EXPECT_THROW(XRAYPROJNEW(folder.path() / "quartz.xproj", project), QuarvexError);
    EXPECT_THROW(XRAYPROJNEW(folder.path() / "no" / "q.xproj", project), QuarvexError);
}

TEST(XrayProject, AFailedSaveLeavesThePreviousProjectWhole) {
    test::TempFolder folder;
    XrayProject project = testProject();
    const auto mainFile = XRAYPROJNEW(folder.path() / "q", project);
    XRAYPROJSAVE(mainFile, project);
    const XrayProject saved = readXrayProject(mainFile);

    project.phases[0].name = "changed";
    project.phases.push_back(project.phases[1]);
    std::filesystem::create_directories(mainFile.parent_path() / "Phase3" / "Phase3.ref");
    EXPECT_THROW(XRAYPROJSAVE(mainFile, project), QuarvexError);
    const XrayProject back = readXrayProject(mainFile);
    ASSERT_EQ(back.phases.size(), 2U);
    expectSamePhase(back.phases[0], saved.phases[0]);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
        EXPECT_EQ(entry.path().string().find(".quarvex-"), std::string::npos) << entry.path();
    }
}

// Killed at each step of its commit (in a child process), a save leaves a project that reads
// back entirely old or entirely new; the next save succeeds and leaves no temporary file.
TEST(XrayProject, AKilledSaveIsOldOrNewNeverAMix) {
    XrayProject old = testProject();
    old.phases.resize(1);
    old.phases[0].name = "old";
    XrayProject next = testProject();
    next.phases[0].name = "new";
    next.phases[1].name = "new";
    const auto stateOf = [](const XrayProject& project) {
        std::string names;
        for (const XrayPhase& phase : project.phases) {
            names += phase.name + ";";
        }
        return names;
    };
    test::TempFolder saved;
    XRAYPROJSAVE(XRAYPROJNEW(saved.path() / "q", old), old);
    const int files = 4 * static_cast<int>(next.phases.size()) + 1;
    for (int step = 0; step < 2 * files + 2; ++step) {
        test::TempFolder folder;
        std::filesystem::copy(saved.path(), folder.path(),
                              std::filesystem::copy_options::recursive);
        const auto mainFile = folder.path() / "q" / "q.xproj";
        ASSERT_TRUE(test::killedAtCommitStep(step, [&](const CommitStepHook& hook) {
            XRAYPROJSAVE(mainFile, next, hook);
        })) << step;
        EXPECT_EQ(stateOf(readXrayProject(mainFile)), step > files ? "new;new;" : "old;") << step;
        XRAYPROJSAVE(mainFile, next);
        EXPECT_EQ(stateOf(readXrayProject(mainFile)), "new;new;") << step;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
            const std::string name = entry.path().filename().string();
            EXPECT_EQ(name.find(".quarvex-"), std::string::npos) << step << " " << entry.path();
        }
    }
}

RefinedCellRecord testRefinement() {
    RefinedCellRecord record;
    record.system = "Hexagonal";
    record.lines = 17;
    record.cell = {4.9134 + 1.0 / 3.0, 4.9134 + 1.0 / 3.0, 5.40512, 90.0, 90.0, 120.0};
    record.error = {2.0e-5 / 3.0, 2.0e-5 / 3.0, 0.1, 0.0, 0.0, 0.0};
    record.volume = 113.0 / 7.0;
    record.volumeError = 1.0e-300;
    record.rmse = 3.3e-5;
    record.machineErrorSearched = true;
    record.machineError = -0.0412;
    record.iterations = 3;
    record.iterationLimitHit = true;
    record.input = "/data/run 1/quartz_refine.DAT";
    record.report = "/data/run 1/quartzRefine.out";
    record.reportText = "Cell refinement\n\n  a = 4.91\n<cell> is not a tag here\n\n";
    return record;
}

struct DamageCase {
    const char* what;
    const char* file; ///< below the project folder
    const char* from; ///< text replaced ("" removes the file)
    const char* to;
    const char* message; ///< a fragment of the error text
};

TEST(XrayProject, DamagedProjectsAreRefusedWithFileAndLine) {
    const DamageCase cases[] = {
        {"missing input file", "Phase1/Phase1.input", "", "", "Phase1.input is missing"},
        {"more peaks announced", "Phase2/Phase2.peak", "<numpeaks> 4", "<numpeaks> 5",
         "ends before"},
        {"fewer peaks announced", "Phase2/Phase2.peak", "<numpeaks> 4", "<numpeaks> 3",
         "more lines than its count"},
        {"two patterns", "q.xproj", "<numxrays> 1", "<numxrays> 2", "one pattern"},
        {"letters in the pattern", "q.spec", "10.01 ", "10.01x ", "line 2: expected x and y"},
        {"assignment to no peak", "Phase1/Phase1.ref", "\n3 -1 2 -3", "\n9 -1 2 -3",
         "peak 9 or wavelength 2 does not exist"},
        {"switch not 0 or 1", "Phase1/Phase1.input", "<useicp> 1", "<useicp> 2", "expected 0 or 1"},
        {"profile type 3", "Phase1/Phase1.peak", "\nT\n1\n", "\nT\n3\n", "1 or 2"},
        {"record of another version", "q.refined", "<refined> 1", "<refined> 2",
         "q.refined: line 1: a refinement"},
        {"cell not a number", "q.refined", "<cell> ", "<cell> x", "q.refined: line 4: expected 6"},
        {"infinite volume", "q.refined", "<volume> ", "<volume> inf ",
         "q.refined: line 6: expected 2 finite"},
        {"switch 2", "q.refined", "<machineerror> 1", "<machineerror> 2",
         "q.refined: line 8: a switch must be 0 or 1"},
        {"tag missing", "q.refined", "<rmse> ", "<rms> ",
         "q.refined: line 7: expected a line beginning"},
        {"more report lines", "q.refined", "<reportlines> 5", "<reportlines> 6",
         "q.refined ends before"},
        {"fewer report lines", "q.refined", "<reportlines> 5", "<reportlines> 3",
         "q.refined: line 16: more lines than its count"},
    };
    for (const DamageCase& c : cases) {
        test::TempFolder folder;
        XrayProject project = testProject();
        project.refined = testRefinement();
        const auto mainFile = XRAYPROJNEW(folder.path() / "q", project);
        XRAYPROJSAVE(mainFile, project);
        const auto damaged = mainFile.parent_path() / c.file;
        if (*c.from == '\0') {
            std::filesystem::remove(damaged);
        } else {
            std::string text = test::readFile(damaged);
            ASSERT_NE(text.find(c.from), std::string::npos) << c.what;
            text.replace(text.find(c.from), std::string(c.from).size(), c.to);
            std::ofstream(damaged, std::ios::binary) << text;
        }
        try {
            readXrayProject(mainFile);
            ADD_FAILURE() << c.what;
        } catch (const QuarvexError& error) {
            EXPECT_NE(error.text().find(c.message), std::string::npos)
                << c.what << ": " << error.text();
            EXPECT_EQ(error.title(), "X-ray Project");
        }
    }
}

// The record joins the staged set: it comes back equal, and a save without one removes it.
TEST(XrayProject, TheLastRefinementIsKeptAndDroppedWithTheProject) {
    test::TempFolder folder;
    XrayProject project = testProject();
    const auto mainFile = XRAYPROJNEW(folder.path() / "q", project);
    EXPECT_EQ(refinedRecordPath(mainFile), folder.path() / "q" / "q.refined");
    XRAYPROJSAVE(mainFile, project);
    EXPECT_FALSE(readXrayProject(mainFile).refined.has_value());

    project.refined = testRefinement();
    XRAYPROJSAVE(mainFile, project);
    const XrayProject back = readXrayProject(mainFile);
    ASSERT_TRUE(back.refined.has_value());
    EXPECT_EQ(*back.refined, *project.refined);
    EXPECT_NE(test::readFile(refinedRecordPath(mainFile)).find("\n<reportlines> 5\n"),
              std::string::npos);

    ASSERT_TRUE(loadRefinedRecord(mainFile).has_value());
    EXPECT_EQ(loadRefinedRecord(mainFile)->cell, project.refined->cell);

    project.refined.reset();
    XRAYPROJSAVE(mainFile, project);
    EXPECT_FALSE(std::filesystem::exists(refinedRecordPath(mainFile)));
}

// The record made from a run: the figures of the run, the system without its padding, the
// report with its Windows line ends read as lines.
TEST(XrayProject, ARefinementRecordHoldsTheRunAndItsReport) {
    test::TempFolder folder;
    INOUTPARMS io;
    DATASTFF data;
    data.XTLSYS = "Cubic       ";
    data.NREF = 8;
    data.CELL = {5.4309, 5.4309, 5.4309, 90.0, 90.0, 90.0};
    data.ERROR = {1.0e-4, 0.0, 0.0, 0.0, 0.0, 0.0};
    io.volume = 160.18;
    io.volumeError = 0.01;
    io.rmse = 2.0e-5;
    io.iterations = 2;
    io.reportPath = folder.path() / "siRefine.out";
    std::ofstream(io.reportPath, std::ios::binary) << "Title\r\n\r\nCell 5.4309\r\n";
    const RefinedCellRecord record = refinedCellRecord(io, data, folder.path() / "si_refine.DAT");
    EXPECT_EQ(record.system, "Cubic");
    EXPECT_EQ(record.lines, 8);
    EXPECT_EQ(record.cell, data.CELL);
    EXPECT_EQ(record.error, data.ERROR);
    EXPECT_EQ(record.volume, 160.18);
    EXPECT_EQ(record.iterations, 2);
    EXPECT_EQ(record.input, folder.path() / "si_refine.DAT");
    EXPECT_EQ(record.report, io.reportPath);
    EXPECT_EQ(record.reportText, "Title\n\nCell 5.4309\n");
}

TEST(XrayProject, TheRefinedCellSummaryReadsAsTheCell) {
    RefinedCellRecord record = testRefinement();
    record.cell = {4.913400, 4.913400, 5.405120, 90.0, 90.0, 120.0};
    record.error = {2.1e-5, 2.1e-5, 3.04e-5, 0.0, 0.0, 0.0};
    record.volume = 113.0108;
    record.volumeError = 0.0012;
    EXPECT_EQ(refinedCellSummary(record), "Refined cell: Hexagonal, 17 lines\n"
                                          "a     = 4.913400 +/- 0.000021 A\n"
                                          "b     = 4.913400 +/- 0.000021 A\n"
                                          "c     = 5.405120 +/- 0.000030 A\n"
                                          "alpha = 90.0000 deg (fixed)\n"
                                          "beta  = 90.0000 deg (fixed)\n"
                                          "gamma = 120.0000 deg (fixed)\n"
                                          "V     = 113.0108 +/- 0.0012 A^3\n"
                                          "rmse  = 3.3e-05\n"
                                          "machine error -0.0412 deg (search did not converge)\n"
                                          "input  /data/run 1/quartz_refine.DAT\n"
                                          "report /data/run 1/quartzRefine.out\n");
}

} // namespace
} // namespace quarvex
