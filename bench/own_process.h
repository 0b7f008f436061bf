// Work in a process of its own: what it made, its processor time and its memory, and how it ended.
#pragma once

#include <cstdio>
#include <functional>
#include <type_traits>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

/// `Made` is copied byte by byte.
template <class Made>
struct Run
{
    static_assert(std::is_trivially_copyable_v<Made>);

    Made made;
    bool ended = false; ///< by itself, in time
    int signal = 0;     ///< that ended it; SIGALRM when it took too long
    double seconds = 0; ///< of the processor
    double megabytes = 0;
};

/// `limit`: seconds after which it is ended; 0 for none.
template <class Made>
Run<Made> InOwnProcess(const std::function<Made()>& work, unsigned limit = 0)
{
    Run<Made> run;
    int ends[2];
    if (pipe(ends) != 0) {
        return run;
    }
    std::fflush(stdout); // or the child prints it once more
    const pid_t child = fork();
    if (child == 0) {
        alarm(limit);
        const Made made = work();
        const bool told = write(ends[1], &made, sizeof made) == static_cast<ssize_t>(sizeof made);
        _exit(told ? 0 : 1);
    }
    close(ends[1]);
    Made made;
    if (read(ends[0], &made, sizeof made) == static_cast<ssize_t>(sizeof made)) {
        run.made = made;
    }
    close(ends[0]);
    int status = 0;
    rusage usage = {};
    wait4(child, &status, 0, &usage);
    run.ended = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    run.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
    };
    run.seconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
#if defined(__APPLE__)
    run.megabytes = static_cast<double>(usage.ru_maxrss) / 1048576.0; // bytes there, kilobytes elsewhere
#else
    run.megabytes = static_cast<double>(usage.ru_maxrss) / 1024.0;
#endif
    return run;
}
