// The same targets under libFuzzer:
//
//     zemtar-libfuzzer --list
//     zemtar-libfuzzer --target=step --seeds=FOLDER       writes the seeds and ends
//     zemtar-libfuzzer --target=step FOLDER -max_total_time=60
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/Target.h"

using namespace Zemtar::Fuzz;

namespace {

const Target* chosen = nullptr;

} // namespace

// libFuzzer leaves options with two dashes to us.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    std::string seeds;
    for (int i = 1; i < *argc; ++i) {
        const std::string argument = (*argv)[i];
        if (argument == "--list") {
            for (const Target& target : Targets()) {
                std::printf("%s\n", target.name);
            }
            std::exit(0);
        } else if (argument.starts_with("--target=")) {
            chosen = FindTarget(argument.substr(9));
        } else if (argument.starts_with("--seeds=")) {
            seeds = argument.substr(8);
        }
    }
    if (chosen == nullptr) {
        std::fprintf(stderr, "--target=NAME; --list shows the names\n");
        std::exit(2);
    }
    if (!seeds.empty()) {
        WriteSeeds(*chosen, seeds);
        std::exit(0);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    chosen->run(*chosen, {reinterpret_cast<const char*>(data), size});
    return 0;
}
