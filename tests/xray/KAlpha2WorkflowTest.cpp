// The workflow with K-alpha2 stripped on a synthetic K-alpha1 + K-alpha2 pattern of quartz with
// a zero shift of +0.08 deg: every peak is matched with K-alpha1, and the joint refinement of the
// refined lines recovers the shift and the reference cell.
#include "TestSupport.h"
#include "XrayPatternSupport.h"

#include "shell/ProgramState.h"
#include "xray/JointRefine.h"
#include "xray/XrayWorkflow.h"

#include <gtest/gtest.h>

namespace quarvex {
namespace {

TEST(KAlpha2Workflow, StrippedDoubletMatchesKAlpha1OnlyAndRefinesTheZero) {
    const test::ReferenceTable table = test::readReferenceTable("Quartz_Ka12.out");
    test::PatternRecipe recipe;
    recipe.zeroShiftDeg = 0.08;
    recipe.kAlpha2 = true;
    test::TempFolder folder;
    XrayRefineRequest request;
    request.pattern = folder.write("doublet.txt", test::syntheticPatternText(table, recipe));
    request.reference = test::sourcePath("data/xray/reference/Quartz_Ka12.out");
    request.match.tolerance = 0.15F;
    request.stripKAlpha2 = true;
    ProgramState state;
    const XrayRefineOutcome outcome =
        runXrayRefine({state.specdata, state.mineralInfo, state.diff, state.xrayPeak,
                       state.inoutparms, state.datastff},
                      request);
    ASSERT_TRUE(outcome.refined) << state.inoutparms.message;
    ASSERT_EQ(outcome.wavelengths.wavelengths.size(), 1U);
    const XrayPhase& phase = state.xrayPeak.phases.front();
    ASSERT_GE(phase.assignments.size(), 12U);
    for (const PeakAssignment& a : phase.assignments) {
        EXPECT_EQ(a.wave, 1);
    }
    JointRefineSettings settings;
    settings.refineZero = true;
    const JointRefineResult joint = refineJoint(jointInputFrom(state.datastff), settings);
    ASSERT_TRUE(joint.ok) << joint.message;
    // Fitted peak centres of a noisy stripped pattern: a few thousandths of a degree.
    EXPECT_NEAR(joint.zero, -0.08, 0.01);
    for (int m = 0; m < 3; ++m) {
        EXPECT_NEAR(joint.cell[m], table.cell[m], 3e-4 * table.cell[m]) << m;
    }
}

} // namespace
} // namespace quarvex
