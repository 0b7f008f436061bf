#include "fuzz/Target.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

namespace Zemtar::Fuzz {

namespace fs = std::filesystem;

const std::vector<Target>& Targets()
{
    static const std::vector<Target> all = [] {
        std::vector<Target> targets;
        for (const auto& part : {TextTargets(), ReaderTargets(), HostTargets(), ImageTargets()}) {
            targets.insert(targets.end(), part.begin(), part.end());
        }
        return targets;
    }();
    return all;
}

const Target* FindTarget(std::string_view name)
{
    for (const Target& target : Targets()) {
        if (target.name == name) {
            return &target;
        }
    }
    return nullptr;
}

void Require(bool holds, const char* promise)
{
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", promise);
        std::abort();
    }
}

void WriteSeeds(const Target& target, const std::string& folder)
{
    fs::create_directories(folder);
    int number = 0;
    for (const std::string& seed : target.seeds(target)) {
        WriteBytes((fs::path(folder) / ("seed" + std::to_string(number++))).string(), seed);
    }
}

std::string BytesOf(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void WriteBytes(const std::string& file, std::string_view bytes)
{
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

const std::string& WorkFolder()
{
    struct Folder
    {
        Folder()
        {
            // memory where there is such a place: thousands of small files a second
            std::error_code none;
            const fs::path root = fs::is_directory("/dev/shm", none) ? "/dev/shm" : fs::temp_directory_path();
            path = (root / ("zemtar-fuzz-" + std::to_string(std::random_device()()))).string();
            fs::create_directory(path);
        }
        ~Folder()
        {
            std::error_code ignored;
            fs::remove_all(path, ignored);
        }
        Folder(const Folder&) = delete;
        Folder& operator=(const Folder&) = delete;

        std::string path;
    };
    static const Folder folder;
    return folder.path;
}

} // namespace Zemtar::Fuzz
