#include "TestSupport.h"

#include "CommitKill.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

namespace quarvex::test {

TempFolder::TempFolder() {
    static std::atomic<unsigned> counter{0};
    const auto unique = std::to_string(std::random_device{}()) + "-" + std::to_string(counter++);
    path_ = std::filesystem::temp_directory_path() / ("quarvex-test-" + unique);
    std::filesystem::create_directories(path_);
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TempFolder::write(std::string_view name, std::string_view content) const {
    const std::filesystem::path file = path_ / name;
    std::ofstream out(file, std::ios::binary);
    out << content;
    return file;
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

std::filesystem::path sourcePath(std::string_view relative) {
    return std::filesystem::path(QUARVEX_SOURCE_DIR) / relative;
}

ProgramRun runProgram(const std::string& commandLine) {
    TempFolder streams;
    const auto out = streams.path() / "stdout";
    const auto err = streams.path() / "stderr";
    const std::string full = commandLine + " >'" + out.string() + "' 2>'" + err.string() + "'";
    const int raw = std::system(full.c_str());
    ProgramRun run;
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    run.out = readFile(out);
    run.err = readFile(err);
    return run;
}

bool killedAtCommitStep(int step, const std::function<void(const CommitStepHook&)>& write) {
    constexpr int kEndedAtStep = 42;
    const pid_t child = ::fork();
    if (child == 0) {
        try {
            write([step](int now) {
                if (now == step) {
                    ::_exit(kEndedAtStep); // no clean-up at all, as after a kill
                }
            });
        } catch (...) {
            ::_exit(1);
        }
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == kEndedAtStep;
}

} // namespace quarvex::test
