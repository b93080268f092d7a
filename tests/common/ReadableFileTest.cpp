// Files that are not regular text files: devices, pipes and sockets are refused before any read
// could wait on them; a line that never ends makes a file "not a text file".
#include "common/ReadableFile.h"
#include "common/LineReader.h"
#include "common/QuarvexError.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <string>

namespace quarvex {
namespace {

std::string refusal(const std::filesystem::path& path) {
    try {
        LineReader reader(path);
    } catch (const QuarvexError& error) {
        EXPECT_EQ(error.title(), kNotRegularFileTitle);
        return error.text();
    }
    return "not refused";
}

TEST(ReadableFile, DevicesPipesAndSocketsAreRefusedAtOnce) {
    test::TempFolder folder;
    const auto fifo = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const auto socketPath = folder.path() / "sock";
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    socketPath.string().copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);

    const struct {
        std::filesystem::path path;
        const char* text;
    } cases[] = {{"/dev/zero", "/dev/zero is a device, not a regular file"},
                 {fifo, "pipe is a named pipe, not a regular file"},
                 {socketPath, "sock is a socket, not a regular file"}};
    for (const auto& c : cases) {
        EXPECT_NE(refusal(c.path).find(c.text), std::string::npos) << c.path;
    }
    ::close(descriptor);
    // Missing files and folders are not refused: the readers report them as files they cannot
    // open, with their own messages.
    EXPECT_FALSE(openReadableFile(folder.path() / "missing"));
    EXPECT_FALSE(openReadableFile(folder.path()));
    EXPECT_TRUE(openReadableFile(folder.write("plain.txt", "1 2\n")));
}

TEST(ReadableFile, LineWithoutEndIsNotText) {
    test::TempFolder folder;
    const struct {
        std::size_t length;
        bool text;
    } cases[] = {{kMaxTextLineBytes, true}, {kMaxTextLineBytes + 1, false}};
    for (const auto& c : cases) {
        for (const std::size_t buffer : {std::size_t{4096}, LineReader::kDefaultBufferSize}) {
            LineReader reader(folder.write("line.txt", "first\n" + std::string(c.length, 'a')),
                              LineReader::kDefaultMaxLineLength, buffer);
            std::string_view line;
            ASSERT_TRUE(reader.next(line));
            EXPECT_EQ(reader.next(line), c.text) << c.length << " " << buffer;
            EXPECT_EQ(reader.notText(), !c.text) << c.length << " " << buffer;
            EXPECT_FALSE(reader.next(line));
        }
    }
}

} // namespace
} // namespace quarvex
