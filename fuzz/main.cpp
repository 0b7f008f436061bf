// The plain driver: replays files, or damages the seeds of a target with a seed of its own.
//
//     zemtar-fuzz                                     the names of the targets
//     zemtar-fuzz NAME FILE or FOLDER...              feeds each file
//     zemtar-fuzz NAME --seconds 60 [--seed 7]        the target's own seeds, then damaged ones
//     zemtar-fuzz NAME --runs 1000 [--seed 7]
//     zemtar-fuzz all FOLDER --runs 100               all targets; each with the folder of its name in FOLDER
//
// What ends the process or takes more than a minute of the processor is kept as crash-NAME in the working
// folder.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/time.h>

#include "fuzz/Mutation.h"
#include "fuzz/Target.h"

using namespace Zemtar::Fuzz;

namespace {

constexpr int SecondsForOne = 60;
constexpr rlim_t MostMemory = rlim_t{6} << 30;

const std::string* atWork = nullptr;
std::string keptAs;

/// Keeps the input, then goes on with the end that the signal means.
void KeepAndEnd(int signal)
{
    if (atWork != nullptr) {
        WriteBytes(keptAs, *atWork);
        std::fprintf(stderr, "signal %d; the input is %s\n", signal, keptAs.c_str());
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void Feed(const Target& target, const std::string& bytes)
{
    atWork = &bytes;
    itimerval limit = {{0, 0}, {SecondsForOne, 0}}; // of the processor, however busy the machine is
    setitimer(ITIMER_PROF, &limit, nullptr);
    target.run(target, bytes);
    limit.it_value.tv_sec = 0;
    setitimer(ITIMER_PROF, &limit, nullptr);
    atWork = nullptr;
}

long Replay(const Target& target, const std::string& path)
{
    namespace fs = std::filesystem;
    if (!fs::is_directory(path)) {
        Feed(target, BytesOf(path));
        return 1;
    }
    long count = 0;
    for (const auto& entry : fs::directory_iterator(path)) {
        count += Replay(target, entry.path().string());
    }
    return count;
}

long Damage(const Target& target, unsigned seed, long runs, double seconds)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    const std::vector<std::string> seeds = target.seeds(target);
    Require(!seeds.empty(), "a target has seeds");
    for (const std::string& bytes : seeds) {
        Feed(target, bytes);
    }
    Mutation mutation(seeds, seed, target.longest);
    long count = 0;
    while (count < runs || Clock::now() < end) {
        Feed(target, mutation.Next());
        ++count;
    }
    return count;
}

struct Order
{
    std::string name;
    std::vector<std::string> paths;
    long runs = 0;
    double seconds = 0;
    unsigned seed = 1;
};

std::optional<Order> Parse(int argc, char** argv)
{
    Order order{argv[1], {}};
    if (order.name != "all" && FindTarget(order.name) == nullptr) {
        return std::nullopt;
    }
    for (int i = 2; i < argc; ++i) {
        const std::string argument = argv[i];
        if (!argument.starts_with("--")) {
            order.paths.push_back(argument);
            continue;
        }
        if (++i == argc) {
            return std::nullopt;
        }
        if (argument == "--seconds") {
            order.seconds = std::atof(argv[i]);
        } else if (argument == "--runs") {
            order.runs = std::atol(argv[i]);
        } else if (argument == "--seed") {
            order.seed = static_cast<unsigned>(std::atol(argv[i]));
        } else {
            return std::nullopt;
        }
    }
    return order;
}

void Do(const Order& order, const Target& target)
{
    namespace fs = std::filesystem;
    keptAs = fs::absolute(std::string("crash-") + target.name).string();
    long count = 0;
    for (const std::string& path : order.paths) {
        const fs::path own = order.name == "all" ? fs::path(path) / target.name : fs::path(path);
        count += fs::exists(own) ? Replay(target, own.string()) : 0;
    }
    if (order.runs > 0 || order.seconds > 0) {
        count += Damage(target, order.seed, order.runs, order.seconds);
    }
    std::printf("%s: %ld inputs\n", target.name, count);
    std::fflush(stdout);
}

} // namespace

#if defined(__SANITIZE_ADDRESS__)
// The signal by which the input is kept.
extern "C" const char* __asan_default_options()
{
    return "abort_on_error=1:detect_leaks=1:allocator_may_return_null=1";
}
#endif

int main(int argc, char** argv)
{
    if (argc < 2) {
        for (const Target& target : Targets()) {
            std::printf("%s\n", target.name);
        }
        return 0;
    }
    const std::optional<Order> order = Parse(argc, argv);
    if (!order) {
        std::fprintf(stderr,
                     "zemtar-fuzz NAME or all [--seconds N] [--runs N] [--seed N] [FILE or FOLDER...]\n");
        return 2;
    }
#if !defined(__SANITIZE_ADDRESS__)
    const rlimit memory = {MostMemory, MostMemory};
    setrlimit(RLIMIT_AS, &memory);
#endif
    for (const int signal : {SIGABRT, SIGPROF, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
        std::signal(signal, KeepAndEnd);
    }
    for (const Target& target : Targets()) {
        if (order->name == "all" || order->name == target.name) {
            Do(*order, target);
        }
    }
    return 0;
}
