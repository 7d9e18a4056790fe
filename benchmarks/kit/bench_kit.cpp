// What a program that uses the library costs until it can be used, against one that is Qt alone.

#include "figure.h"

#include <cstdlib>
#include <filesystem>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ; // NOLINT(readability-redundant-declaration)

namespace {

constexpr int runs = 41;

struct Start
{
    double wall = 0; // ms, until the watcher ended the program
    double cpu = 0;  // ms, of all its threads
};

Start start(const std::vector<std::string>& command)
{
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    Start result;
    result.wall = milliseconds([&] {
        pid_t child = 0;
        int status = 1;
        rusage usage{};
        if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0 ||
            wait4(child, &status, 0, &usage) != child || status != 0) {
            std::fprintf(stderr, "%s did not start\n", arguments[0]);
            std::exit(2);
        }
        const auto ms = [](const timeval& time) {
            return 1000. * double(time.tv_sec) + double(time.tv_usec) / 1000.;
        };
        result.cpu = ms(usage.ru_utime) + ms(usage.ru_stime);
    });
    return result;
}

void report(Figures& figures, const std::string& name, const std::vector<std::string>& ours,
            const std::vector<std::string>& bare, double bound)
{
    std::vector<double> wall[2];
    std::vector<double> cpu[2];
    for (int i = -2; i < runs; ++i) { // the first ones fill caches
        const Start both[] = {start(ours), start(bare)};
        for (int side = 0; side < 2 && i >= 0; ++side) {
            wall[side].push_back(both[side].wall);
            cpu[side].push_back(both[side].cpu);
        }
    }
    std::printf("kit/%s: %.1f ms, of the processor %.1f ms; bare %.1f ms, %.1f ms\n", name.c_str(),
                median(wall[0]), median(cpu[0]), median(wall[1]), median(cpu[1]));
    figures.report(name.c_str(), median(wall[0]) / median(wall[1]), bound);
}

} // namespace

int main()
{
    char folder[] = "/tmp/bench_kit.XXXXXX"; // for the settings, which no run gets to write
    if (!mkdtemp(folder))
        return 2;
    const std::string programs = PROGRAMS;
    const std::string settings = std::string(folder) + "/settings";
    setenv("LD_PRELOAD", WATCHER, 1);
    Figures figures("kit");
    report(figures, "library", {programs + "kit_loaded"}, {programs + "kit_line"}, 1.15);
    report(figures, "editor", {programs + "kit_editor"}, {programs + "kit_line"}, 1.15);
    report(figures, "harrier", {programs + "harrier", "--settings", settings},
           {programs + "kit_window"}, 2);
    unsetenv("LD_PRELOAD");
    std::filesystem::remove_all(folder);
    return figures.result();
}
