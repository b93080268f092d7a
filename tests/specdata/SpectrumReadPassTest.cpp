// The spectrum file reader reads each file in one pass, through a buffer of any size or from the
// file's bytes in memory: each gives the same record, and a named pipe with a writer is read like
// a file.
#include "specdata/SpecDataManager.h"

#include "common/QuarvexError.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace quarvex {
namespace {

// What a read gives: the record and the lines passed over, or the error's title and text.
struct Outcome {
    SpectrumRecord record;
    SkippedLines skipped;
    std::string error;
};

Outcome readThrough(const std::filesystem::path& path, std::size_t bufferSize) {
    Outcome outcome;
    try {
        outcome.record = READ_SPECDATA_RECORD(path, &outcome.skipped, bufferSize);
    } catch (const QuarvexError& error) {
        outcome.error = error.title() + ": " + error.text();
    }
    return outcome;
}

std::string fileBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The same read on the file's bytes, read here beforehand, as the format entry point does.
Outcome readFromBytes(const std::filesystem::path& path) {
    const std::string bytes = fileBytes(path);
    Outcome outcome;
    try {
        outcome.record = READ_SPECDATA_RECORD(path, bytes, &outcome.skipped);
    } catch (const QuarvexError& error) {
        outcome.error = error.title() + ": " + error.text();
    }
    return outcome;
}

// The pairs-only reading of the library compilation, from the file or from its bytes.
Outcome readPairs(const std::filesystem::path& path, bool fromBytes) {
    const std::string bytes = fileBytes(path);
    Outcome outcome;
    try {
        outcome.record =
            fromBytes ? FILL_IN_SPECDATA_ARRAYS(path, bytes, 0) : FILL_IN_SPECDATA_ARRAYS(path, 0);
        outcome.skipped = {outcome.record.skippedLines, outcome.record.firstSkippedLine, false};
    } catch (const QuarvexError& error) {
        outcome.error = error.title() + ": " + error.text();
    }
    return outcome;
}

void expectSameOutcome(const Outcome& a, const Outcome& b, const std::string& what) {
    EXPECT_EQ(a.error, b.error) << what;
    EXPECT_EQ(a.record.x, b.record.x) << what;
    EXPECT_EQ(a.record.y, b.record.y) << what;
    EXPECT_EQ(a.record.name, b.record.name) << what;
    EXPECT_EQ(a.record.dtype, b.record.dtype) << what;
    EXPECT_EQ(a.record.waveInfo, b.record.waveInfo) << what;
    EXPECT_EQ(a.record.header.names, b.record.header.names) << what;
    EXPECT_EQ(a.record.header.locality, b.record.header.locality) << what;
    EXPECT_EQ(a.record.header.id, b.record.header.id) << what;
    EXPECT_EQ(a.record.header.chemistry, b.record.header.chemistry) << what;
    EXPECT_EQ(a.record.comments, b.record.comments) << what;
    EXPECT_EQ(a.skipped.count, b.skipped.count) << what;
    EXPECT_EQ(a.skipped.firstLine, b.skipped.firstLine) << what;
    EXPECT_EQ(a.skipped.calibrated, b.skipped.calibrated) << what;
}

struct CraftedFile {
    const char* what;
    std::string content;
    std::vector<float> x; // expected points, worked out by hand
    std::vector<float> y;
    std::vector<std::string> comments;
    std::string dtype;
    SkippedLines skipped;
    std::string error; // a part of the expected message; empty when the read succeeds
};

std::vector<CraftedFile> craftedFiles() {
    const std::string longName(300, 'n');
    const std::string longComment(300, 'c');
    return {
        {"keys, comments, CRLF and no final newline",
         "##NAMES=Quartz\r\n<COM>\r\ndtype: XRD\r\nwave: 1.5406\r\nmeasured today\r\n</COM>\r\n"
         "20 2\r\n10 1",
         {10, 20},
         {1, 2},
         {"measured today"},
         "XRD",
         {},
         ""},
        {"long lines are cut at 256 characters",
         "##NAMES=" + longName + "\n<COM>\n" + longComment + "\n</COM>\n1 2 " +
             std::string(300, 'x') + "\n" + std::string(2000, 'y') + "\n3 4\n",
         {1, 3},
         {2, 4},
         {std::string(256, 'c')},
         "RAMAN",
         {1, 6, false},
         ""},
        {"two comment blocks, the second unclosed",
         "<COM>\nfirst\nwave: w\n</COM>\n1 1\n<COM>\nsecond\n<COM>\n2 2\n",
         {1},
         {1},
         {"first", "second", "<COM>", "2 2"},
         "RAMAN",
         {},
         ""},
        // Channels 1 and 2: x = 0·i² + 2·i + 10; the second number of "6 7" is the value.
        {"calibration keys after the channels",
         "5\n6 7\nword\nCAL_SLOPE 2\nCAL_OFFSET 10\n",
         {12, 14},
         {5, 7},
         {},
         "ENERGY",
         {1, 3, true},
         ""},
        {"one number beyond float in a file of pairs",
         "1 2\n1e39\n3 4\n",
         {1, 3},
         {2, 4},
         {},
         "RAMAN",
         {1, 2, false},
         ""},
        {"a channel beyond float",
         "CAL_OFFSET 1\nCAL_SLOPE 1\n1\n1e39\n",
         {},
         {},
         {},
         "",
         {},
         "line 4 holds a value that is not a finite"},
        // The pairs are read first: their error is told even though a channel's comes earlier.
        {"a pair beyond float after a channel beyond float",
         "CAL_OFFSET 1\nCAL_SLOPE 1\n1e39\n2 1e39\n",
         {},
         {},
         {},
         "",
         {},
         "line 4 holds a value that is not a finite"},
        {"a NUL byte in the middle",
         std::string("1 2\n3\0 4\n5 6\n", 13),
         {},
         {},
         {},
         "",
         {},
         "not a text file"},
        {"no data",
         "##NAMES=x\nword\n",
         {},
         {},
         {},
         "",
         {},
         "1 line skipped (not two numbers), first at line 2"},
    };
}

constexpr std::size_t kBufferSizes[] = {1, 2, 3, 7, 64};

TEST(SpectrumReadPass, EveryBufferSizeReadsTheShippedExamplesAlike) {
    int files = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(test::sourcePath("data/raman/examples"))) {
        if (entry.path().extension() != ".txt" ||
            entry.path().stem().string().starts_with("LICENSE")) {
            continue;
        }
        ++files;
        const Outcome reference = readThrough(entry.path(), LineReader::kDefaultBufferSize);
        EXPECT_EQ(reference.error, "") << entry.path();
        EXPECT_GT(reference.record.x.size(), 100U) << entry.path();
        for (const std::size_t bufferSize : kBufferSizes) {
            expectSameOutcome(readThrough(entry.path(), bufferSize), reference,
                              entry.path().filename().string() + " through " +
                                  std::to_string(bufferSize) + " bytes");
        }
        expectSameOutcome(readFromBytes(entry.path()), reference,
                          entry.path().filename().string() + " from memory");
    }
    EXPECT_GE(files, 10);
}

TEST(SpectrumReadPass, EveryBufferSizeReadsCraftedFilesAlike) {
    test::TempFolder folder;
    for (const CraftedFile& c : craftedFiles()) {
        const auto path = folder.write("crafted.txt", c.content);
        const Outcome reference = readThrough(path, LineReader::kDefaultBufferSize);
        if (c.error.empty()) {
            EXPECT_EQ(reference.error, "") << c.what;
            EXPECT_EQ(reference.record.x, c.x) << c.what;
            EXPECT_EQ(reference.record.y, c.y) << c.what;
            EXPECT_EQ(reference.record.comments, c.comments) << c.what;
            EXPECT_EQ(reference.record.dtype, c.dtype) << c.what;
            EXPECT_EQ(reference.skipped.count, c.skipped.count) << c.what;
            EXPECT_EQ(reference.skipped.firstLine, c.skipped.firstLine) << c.what;
            EXPECT_EQ(reference.skipped.calibrated, c.skipped.calibrated) << c.what;
        } else {
            EXPECT_NE(reference.error.find(c.error), std::string::npos)
                << c.what << ": " << reference.error;
        }
        for (const std::size_t bufferSize : kBufferSizes) {
            expectSameOutcome(readThrough(path, bufferSize), reference,
                              std::string(c.what) + " through " + std::to_string(bufferSize) +
                                  " bytes");
        }
        expectSameOutcome(readFromBytes(path), reference, std::string(c.what) + " from memory");
        expectSameOutcome(readPairs(path, true), readPairs(path, false),
                          std::string(c.what) + ", pairs from memory");
    }
}

// Reads `path` on a thread of its own, so that a read that hangs fails the test after a bound
// instead of stalling it (the thread is then left behind).
std::future<SpectrumRecord> readInBackground(const std::filesystem::path& path) {
    auto promise = std::make_shared<std::promise<SpectrumRecord>>();
    std::future<SpectrumRecord> result = promise->get_future();
    std::thread([promise, path] {
        try {
            promise->set_value(READ_SPECDATA_RECORD(path));
        } catch (...) {
            promise->set_exception(std::current_exception());
        }
    }).detach();
    return result;
}

constexpr auto kBound = std::chrono::seconds(20);

TEST(SpectrumReadPass, ANamedPipeWithAWriterIsReadOnce) {
    test::TempFolder folder;
    std::string content = "##NAMES=Quartz\n<COM>\ndtype: RAMAN\nfrom a pipe\n</COM>\n";
    for (int i = 0; i < 30'000; ++i) {
        content += std::to_string(i) + " 1\n"; // about 200 KB: more than a pipe holds at once
    }
    const auto fifo = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    // Opened for reading and writing, the pipe has a writer before the reader comes. The writer
    // cannot finish before the reader has taken most of the data, and closes after the last byte.
    const int writer = ::open(fifo.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(writer, 0);
    std::thread([writer, content] {
        std::size_t written = 0;
        while (written < content.size()) {
            const ssize_t wrote =
                ::write(writer, content.data() + written, content.size() - written);
            if (wrote <= 0) {
                break;
            }
            written += static_cast<std::size_t>(wrote);
        }
        ::close(writer);
    }).detach();

    std::future<SpectrumRecord> reading = readInBackground(fifo);
    ASSERT_EQ(reading.wait_for(kBound), std::future_status::ready) << "the read of a pipe hangs";
    const SpectrumRecord fromPipe = reading.get();
    const SpectrumRecord fromFile = READ_SPECDATA_RECORD(folder.write("file.txt", content));
    ASSERT_EQ(fromPipe.x.size(), 30'000U);
    EXPECT_EQ(fromPipe.x, fromFile.x);
    EXPECT_EQ(fromPipe.y, fromFile.y);
    EXPECT_EQ(fromPipe.header.names, "Quartz");
    EXPECT_EQ(fromPipe.comments, std::vector<std::string>{"from a pipe"});
}

TEST(SpectrumReadPass, APipeWithoutWriterOrADeviceAnswersAtOnce) {
    test::TempFolder folder;
    const auto fifo = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const struct {
        std::filesystem::path path;
        const char* text;
    } cases[] = {{fifo, "No data points found in "}, {"/dev/zero", "is a device"}};
    for (const auto& c : cases) {
        std::future<SpectrumRecord> reading = readInBackground(c.path);
        ASSERT_EQ(reading.wait_for(kBound), std::future_status::ready) << c.path << " hangs";
        try {
            reading.get();
            ADD_FAILURE() << c.path << ": no error";
        } catch (const QuarvexError& error) {
            EXPECT_NE(error.text().find(c.text), std::string::npos) << error.text();
        }
    }
}

} // namespace
} // namespace quarvex
