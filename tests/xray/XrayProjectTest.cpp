// X-ray projects: new, save and read back reproduce every value bit for bit; a failed save
// leaves the previous project whole; damaged projects are refused with the file and line.
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
    };
    for (const DamageCase& c : cases) {
        test::TempFolder folder;
        const auto mainFile = XRAYPROJNEW(folder.path() / "q", testProject());
        XRAYPROJSAVE(mainFile, testProject());
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

} // namespace
} // namespace quarvex
