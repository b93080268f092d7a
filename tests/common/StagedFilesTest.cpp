// Files written together: after a kill at any step of the commit (simulated in a child process)
// or a failure, the set is entirely old or, once the interrupted commit is finished, entirely
// new; no temporary file outlives the next write.
#include "common/StagedFiles.h"

#include "CommitKill.h"
#include "TestSupport.h"
#include "common/AtomicFile.h"
#include "common/QuarvexError.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace quarvex {
namespace {

const std::vector<std::string> kNames = {"main.txt", "sub/one.txt", "sub/two.txt"};

struct SetFolder {
    test::TempFolder folder;
    std::filesystem::path journal() const { return folder.path() / "set.quarvex-journal"; }

    void writeOld() const {
        std::filesystem::create_directories(folder.path() / "sub");
        for (const auto& name : kNames) {
            folder.write(name, "old " + name);
        }
    }
    void writeNew(const CommitStepHook& hook) const {
        StagedFiles files(journal(), "Test", hook);
        for (const auto& name : kNames) {
            files.add(folder.path() / name) << "new " << name;
        }
        files.commitAll();
    }
    // "old" or "new" when every file of the set is from the same write, else "mixed".
    std::string state() const {
        std::string seen;
        for (const auto& name : kNames) {
            const std::string content = test::readFile(folder.path() / name);
            const std::string which = content.substr(0, 3);
            if (content != which + " " + name || (!seen.empty() && seen != which)) {
                return "mixed";
            }
            seen = which;
        }
        return seen;
    }
    // Files whose names mark them as temporary or as a journal.
    int leftovers() const {
        int count = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
            const std::string name = entry.path().filename().string();
            count += name.find(kTemporaryMarker) != std::string::npos ||
                     name.ends_with(".quarvex-journal");
        }
        return count;
    }
};

TEST(StagedFiles, KillAtEveryStepLeavesOldOrNewAndNoLeftovers) {
    const int steps = 2 * static_cast<int>(kNames.size()) + 2;
    for (int step = 0; step < steps; ++step) {
        SetFolder set;
        set.writeOld();
        ASSERT_TRUE(test::killedAtCommitStep(step, [&](const CommitStepHook& hook) {
            set.writeNew(hook);
        })) << step;
        // Up to the journal's step the old set stands; after it, the new set is the written one
        // (the renames it names may be cut short: the next user of the set completes them).
        const bool journalWritten = step > static_cast<int>(kNames.size());
        finishInterruptedCommit(set.journal(), "Test");
        EXPECT_EQ(set.state(), journalWritten ? "new" : "old") << step;
        // The next write completes and removes what the killed one left.
        removeStaleTemporaryFiles(set.folder.path());
        removeStaleTemporaryFiles(set.folder.path() / "sub");
        EXPECT_EQ(set.leftovers(), 0) << step;
        set.writeNew({});
        EXPECT_EQ(set.state(), "new") << step;
        EXPECT_EQ(set.leftovers(), 0) << step;
    }
}

TEST(StagedFiles, FailureAtEveryStepLeavesOldOrNew) {
    const int steps = 2 * static_cast<int>(kNames.size()) + 2;
    for (int step = 0; step < steps; ++step) {
        SetFolder set;
        set.writeOld();
        EXPECT_THROW(set.writeNew([step](int now) {
            if (now == step) {
                throw QuarvexError("disk full", "Test");
            }
        }),
                     QuarvexError);
        finishInterruptedCommit(set.journal(), "Test");
        EXPECT_EQ(set.state(), step > static_cast<int>(kNames.size()) ? "new" : "old") << step;
        EXPECT_EQ(set.leftovers(), 0) << step;
    }
}

TEST(StagedFiles, DamagedJournalIsRefused) {
    SetFolder set;
    set.writeOld();
    for (const std::string journal :
         {"5 main.txt\n", "3 ../x\n8 main.txt\n", "8 main.txt\n8 main.txt\n", "zz"}) {
        set.folder.write("set.quarvex-journal", journal);
        EXPECT_THROW(finishInterruptedCommit(set.journal(), "Test"), QuarvexError) << journal;
        EXPECT_EQ(set.state(), "old") << journal;
    }
}

TEST(AtomicFile, RemovesOnlyTheTemporaryFilesOfEndedProcesses) {
    test::TempFolder folder;
    const pid_t ended = ::fork();
    if (ended == 0) {
        ::_exit(0);
    }
    ::waitpid(ended, nullptr, 0);
    const std::string marker(kTemporaryMarker);
    const auto stale = folder.write("a.rsf" + marker + std::to_string(ended) + "-3", "x");
    const auto running = folder.write("b.rsf" + marker + std::to_string(::getppid()) + "-0", "x");
    const auto own = folder.write("c.rsf" + marker + std::to_string(::getpid()) + "-0", "x");
    const auto foreign = folder.write("d.rsf.tmp12-0", "x");
    removeStaleTemporaryFiles(folder.path());
    EXPECT_FALSE(std::filesystem::exists(stale));
    for (const auto& kept : {running, own, foreign}) {
        EXPECT_TRUE(std::filesystem::exists(kept)) << kept;
    }
    // A commit removes what ended writers of its own destination left, and nothing else.
    const auto left = folder.write("QV.ini" + marker + std::to_string(ended) + "-0", "x");
    const auto other = folder.write("e.rsf" + marker + std::to_string(ended) + "-0", "x");
    AtomicFile preferences(folder.path() / "QV.ini");
    ASSERT_TRUE(preferences.commit());
    EXPECT_FALSE(std::filesystem::exists(left));
    EXPECT_TRUE(std::filesystem::exists(other));
}

} // namespace
} // namespace quarvex
