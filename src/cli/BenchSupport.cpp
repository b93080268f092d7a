#include "cli/BenchSupport.h"

#include "common/WorkingFolders.h"

#include <fcntl.h>
#include <iostream>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

extern char** environ;

namespace quarvex::cli {

namespace {

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

} // namespace

double peakMemoryMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0; // ru_maxrss is in kilobytes on Linux
}

ProcessFigures runProgram(const std::string& program, const std::vector<std::string>& arguments,
                          const std::string& output) {
    std::cout << std::flush;
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (!output.empty()) {
        posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                         0644);
    }
    ProcessFigures figures;
    pid_t child = 0;
    int status = 0;
    rusage usage{};
    figures.seconds = secondsTaken([&] {
        if (posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ) == 0) {
            wait4(child, &status, 0, &usage);
        } else {
            child = 0;
        }
    });
    posix_spawn_file_actions_destroy(&actions);
    if (child == 0) {
        std::cerr << "cannot start " << program << '\n';
        return figures;
    }
    figures.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1;
    figures.cpuSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    figures.peakMegabytes = static_cast<double>(usage.ru_maxrss) / 1024.0;
    return figures;
}

ProcessFigures runSelf(const std::vector<std::string>& arguments, const std::string& output) {
    return runProgram((executableFolder() / "quarvex-cli").string(), arguments, output);
}

} // namespace quarvex::cli
