// Spectrum edits with undo and redo: every kind of edit undone bit for bit and redone; many
// levels; a new edit ends redo; damaged or missing records; bad input changes nothing.
#include "specdata/SpectrumEdits.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "specdata/SpecDataManager.h"
#include "specdata/SpectrumRecords.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

namespace quarvex {
namespace {

bool sameBits(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

// Every field an edit or its undo may change.
void expectSameSpectrum(const SpectrumRecord& a, const SpectrumRecord& b, const std::string& why) {
    EXPECT_TRUE(sameBits(a.x, b.x)) << why << ": x";
    EXPECT_TRUE(sameBits(a.y, b.y)) << why << ": y";
    EXPECT_EQ(a.comments, b.comments) << why;
    EXPECT_EQ(a.dtype, b.dtype) << why;
    EXPECT_EQ(a.waveInfo, b.waveInfo) << why;
    EXPECT_EQ(a.header.names, b.header.names) << why;
    EXPECT_EQ(a.path, b.path) << why;
}

class SpectrumEditsTest : public ::testing::Test {
protected:
    void SetUp() override {
        SET_UP_FOLDERS(home.path());
        MINERALINFO info;
        // A second spectrum first, so that the edited one is not index 0.
        READ_SPECDATA_FILE(specdata, info,
                           test::sourcePath("data/raman/examples/silicon_horiba_633nm_top.txt"));
        index = READ_SPECDATA_FILE(
            specdata, info, test::sourcePath("data/raman/examples/calcite_bwtek_532nm_icv.txt"));
        specdata.yColumn(index)[kSpike] += 1.0e6F; // at x = 688.89: a cosmic ray
    }

    static constexpr std::size_t kSpike = 200;

    SpectrumRecord current() const { return spectrumRecord(specdata, index); }

    test::TempFolder home;
    SPECDATA_GLOBALS specdata;
    UndoHistory history;
    int index = 0;
};

TEST_F(SpectrumEditsTest, EachKindOfEditIsUndoneBitForBitAndRedone) {
    BaselineEdit polynomial;
    polynomial.method = BaselineMethod::Polynomial;
    polynomial.anchors = {150, 600, 1300, 1900};
    BaselineEdit arpls;
    arpls.method = BaselineMethod::Arpls;
    BaselineEdit snip;
    snip.method = BaselineMethod::Snip;
    const std::pair<const char*, SpectrumEdit> edits[] = {
        {"trim", TrimEdit{300, 1200}},
        {"despike", DespikeEdit{}},
        {"spike by hand at 689", ManualSpikeEdit{689.0, {}}},
        {"ALS", BaselineEdit{}},
        {"arPLS", arpls},
        {"SNIP", snip},
        {"polynomial", polynomial},
        {"smoothing 10 cm-1", SmoothEdit{10.0, 0, 2}},
    };
    for (const auto& [name, edit] : edits) {
        const SpectrumRecord before = current();
        const EditOutcome outcome = applyEdit(specdata, history, home.path(), index, edit);
        const SpectrumRecord after = current();
        EXPECT_FALSE(sameBits(before.y, after.y) && sameBits(before.x, after.x)) << name;
        ASSERT_EQ(after.comments.size(), before.comments.size() + 1) << name;
        EXPECT_EQ(after.comments.back(), "processing: " + outcome.processingLine) << name;

        EXPECT_EQ(undoLastEdit(history, home.path(), specdata), outcome.label) << name;
        expectSameSpectrum(current(), before, std::string(name) + " undone");
        EXPECT_EQ(redoLastEdit(history, home.path(), specdata), outcome.label) << name;
        expectSameSpectrum(current(), after, std::string(name) + " redone");
        undoLastEdit(history, home.path(), specdata);
    }
}

TEST_F(SpectrumEditsTest, ManyLevelsAndANewEditEndsRedo) {
    const SpectrumRecord original = current();
    applyEdit(specdata, history, home.path(), index, TrimEdit{200, 1500});
    const SpectrumRecord trimmed = current();
    applyEdit(specdata, history, home.path(), index, DespikeEdit{});
    applyEdit(specdata, history, home.path(), index, BaselineEdit{});
    undoLastEdit(history, home.path(), specdata);
    undoLastEdit(history, home.path(), specdata);
    expectSameSpectrum(current(), trimmed, "two undone");
    undoLastEdit(history, home.path(), specdata);
    expectSameSpectrum(current(), original, "three undone");
    EXPECT_THROW(undoLastEdit(history, home.path(), specdata), QuarvexError);

    redoLastEdit(history, home.path(), specdata);
    expectSameSpectrum(current(), trimmed, "one redone");
    applyEdit(specdata, history, home.path(), index, SmoothEdit{0, 5, 2});
    EXPECT_TRUE(history.redo.empty());
    EXPECT_THROW(redoLastEdit(history, home.path(), specdata), QuarvexError);

    CREATE_APPEND_UNDO_FILE(history, home.path());
    EXPECT_TRUE(history.undo.empty());
    EXPECT_TRUE(std::filesystem::is_empty(home.path() / kUndoRecordsFolder));
}

TEST_F(SpectrumEditsTest, DamagedOrMissingRecordIsReportedAndChangesNothing) {
    struct Case {
        const char* name;
        void (*damage)(const std::filesystem::path&);
        const char* message;
    };
    const Case cases[] = {
        {"deleted", [](const std::filesystem::path& file) { std::filesystem::remove(file); },
         "cannot be read"},
        {"cut short",
         [](const std::filesystem::path& file) {
             const std::string text = test::readFile(file);
             std::ofstream(file, std::ios::trunc) << text.substr(0, text.size() / 2);
         },
         "damaged"},
        {"overwritten with binary",
         [](const std::filesystem::path& file) {
             std::ofstream(file, std::ios::binary | std::ios::trunc) << std::string(64, '\0');
         },
         "cannot be read"},
    };
    for (const Case& c : cases) {
        applyEdit(specdata, history, home.path(), index, TrimEdit{150, 1800});
        applyEdit(specdata, history, home.path(), index, DespikeEdit{});
        const SpectrumRecord edited = current();
        c.damage(history.undo.back().file);
        try {
            undoLastEdit(history, home.path(), specdata);
            ADD_FAILURE() << c.name << ": no error";
        } catch (const QuarvexError& error) {
            EXPECT_EQ(error.title(), "Undo") << c.name;
            EXPECT_NE(error.text().find(c.message), std::string::npos)
                << c.name << ": " << error.text();
        }
        expectSameSpectrum(current(), edited, c.name);
        EXPECT_TRUE(history.undo.empty()) << c.name << ": undo goes no further";
    }
}

TEST_F(SpectrumEditsTest, BadInputChangesNothingAndRecordsNothing) {
    const SpectrumRecord original = current();
    BaselineEdit zeroPenalty;
    zeroPenalty.als.penalty = 0.0;
    const std::pair<const char*, SpectrumEdit> edits[] = {
        {"trim 900:200", TrimEdit{900, 200}},
        {"trim to 2 points", TrimEdit{300, 304}},
        {"zero penalty", zeroPenalty},
        {"window wider than the spectrum", SmoothEdit{1.0e5, 0, 2}},
        {"spike by hand outside the spectrum", ManualSpikeEdit{50.0, {}}},
    };
    for (const auto& [name, edit] : edits) {
        EXPECT_THROW(applyEdit(specdata, history, home.path(), index, edit), QuarvexError) << name;
        expectSameSpectrum(current(), original, name);
        EXPECT_TRUE(history.undo.empty()) << name;
    }
}

TEST_F(SpectrumEditsTest, SaveAsMovesThePathAndUndoFollows) {
    applyEdit(specdata, history, home.path(), index, TrimEdit{200, 1500});
    const auto saved = home.path() / "cleaned.txt";
    ORGANIZE_SAVEFILE(specdata, history, index, saved, SpectrumFileFormat::Program);
    EXPECT_EQ(specdata.PATH[static_cast<std::size_t>(index)], saved.string());
    EXPECT_EQ(specdata.NAME[static_cast<std::size_t>(index)], "cleaned.txt");
    EXPECT_NO_THROW(undoLastEdit(history, home.path(), specdata));
    ORGANIZE_SAVEFILE(specdata, history, index, home.path() / "export.csv",
                      SpectrumFileFormat::Csv);
    EXPECT_EQ(specdata.PATH[static_cast<std::size_t>(index)], saved.string()) << "CSV exports";
}

} // namespace
} // namespace quarvex
