// Every reader of the command-line tool on files that are not regular text files: each answers
// at once with a refusal and never waits on a device, a pipe or a socket.
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace quarvex {
namespace {

// A Unix socket file at `path` (the socket is closed again; its file stays).
void makeSocketFile(const std::filesystem::path& path) {
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(descriptor, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string text = path.string();
    ASSERT_LT(text.size(), sizeof(address.sun_path));
    text.copy(address.sun_path, text.size());
    ASSERT_EQ(::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    ::close(descriptor);
}

TEST(SpecialFilesCli, EveryReaderRefusesAtOnce) {
    test::TempFolder folder;
    const std::filesystem::path fifo = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    makeSocketFile(folder.path() / "sock");
    std::filesystem::create_directory(folder.path() / "dir");
    folder.write("long.txt", std::string((std::size_t{3} << 19) + 10, '7')); // 1.5 MiB, no newline
    const std::string data = folder.write("data.txt", "100 1\n200 2\n300 1\n").string();
    const std::string home = " --home '" + folder.path().string() + "' ";
    const std::string cli = std::string("timeout 10 ") + QUARVEX_CLI_PATH + home;

    // What a command line is run on: the file's text in the command and what runs beside it.
    const struct {
        const char* what;
        std::string file;
        std::string before; // started in the background first (a writer)
    } files[] = {
        {"a device", "/dev/zero", ""},
        {"a pipe without a writer", fifo.string(), ""},
        {"a pipe with a writer", fifo.string(),
         "(timeout 3 sh -c \"cat '" + data + "' > '" + fifo.string() + "'\" >/dev/null 2>&1 &); "},
        {"a socket", (folder.path() / "sock").string(), ""},
        {"a folder", (folder.path() / "dir").string(), ""},
        {"a line of 1.5 MiB", (folder.path() / "long.txt").string(), ""},
    };
    for (const char* command : {"info", "xray-ref", "refine", "xray-project show", "peaks"}) {
        // The spectrum loading reads a pipe once (see ReadsAPipeOnce).
        const bool readsPipes =
            std::string_view(command) == "info" || std::string_view(command) == "peaks";
        for (const auto& file : files) {
            if (readsPipes && file.file == fifo.string()) {
                continue;
            }
            const auto run = test::runProgram(file.before + cli + command + " '" + file.file + "'");
            const std::string what = std::string(command) + " on " + file.what;
            EXPECT_NE(run.status, 124) << what << ": it hung";
            EXPECT_NE(run.status, 0) << what;
            EXPECT_FALSE(run.err.empty()) << what;
        }
    }
    // A process substitution is a pipe as well.
    const auto substituted =
        test::runProgram("bash -c \"" + cli + "xray-ref <(cat '" + data + "')\"");
    EXPECT_NE(substituted.err.find("is a named pipe, not a regular file"), std::string::npos)
        << substituted.err;
    const auto device = test::runProgram(cli + "info /dev/zero");
    EXPECT_NE(device.err.find("/dev/zero is a device, not a regular file"), std::string::npos)
        << device.err;
    const auto socket =
        test::runProgram(cli + "xray-ref '" + (folder.path() / "sock").string() + "'");
    EXPECT_NE(socket.err.find("is a socket, not a regular file"), std::string::npos) << socket.err;
    const auto longLine =
        test::runProgram(cli + "info '" + (folder.path() / "long.txt").string() + "'");
    EXPECT_NE(longLine.err.find("not a text file"), std::string::npos) << longLine.err;
    const auto refineFolder =
        test::runProgram(cli + "refine '" + (folder.path() / "dir").string() + "'");
    EXPECT_NE(refineFolder.err.find("is a folder, not a refinement input file"), std::string::npos)
        << refineFolder.err;
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "dirRefine.out"));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "pipeRefine.out"));
}

// The spectrum loading reads its file once, so a pipe is read like a file: with a writer to the
// writer's end, without one as empty. Every run is bounded by `timeout`: a wait shows as 124.
TEST(SpecialFilesCli, ReadsAPipeOnce) {
    test::TempFolder folder;
    const std::string data = folder.write("data.txt", "100 1\n200 2\n300 1\n").string();
    const std::string cli =
        std::string("timeout 10 ") + QUARVEX_CLI_PATH + " --home '" + folder.path().string() + "' ";

    const auto substituted = test::runProgram("bash -c \"" + cli + "info <(cat '" + data + "')\"");
    EXPECT_EQ(substituted.status, 0) << substituted.err;
    const auto file = test::runProgram(cli + "info '" + data + "'");
    ASSERT_EQ(file.status, 0) << file.err;
    // The same points, ranges and header; only the name and path of the file differ.
    const auto afterName = [](const std::string& text) {
        return text.substr(std::min(text.find("  points"), text.size()));
    };
    EXPECT_EQ(afterName(substituted.out), afterName(file.out));

    const std::filesystem::path fifo = folder.path() / "quiet-pipe";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const auto empty = test::runProgram(cli + "info '" + fifo.string() + "'");
    EXPECT_NE(empty.status, 124) << "info waited for a writer";
    EXPECT_NE(empty.err.find("No data points found"), std::string::npos) << empty.err;
}

} // namespace
} // namespace quarvex
