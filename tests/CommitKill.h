// Killing a writer in the middle of its commit, for the tests of all-or-nothing writing.
#pragma once

#include "common/StagedFiles.h"

#include <functional>

namespace quarvex::test {

/// Runs `write` in a child process whose commit ends the process abruptly (like a kill) just
/// before commit step `step`; true when the child ended there.
bool killedAtCommitStep(int step, const std::function<void(const CommitStepHook&)>& write);

} // namespace quarvex::test
