// Hundreds of files damaged at random: none may end the process, hang it, throw or print.
#include <csignal>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/sdk/MeshModels.h"
#include "tests/sdk/ReadModels.h"
#include "tests/sdk/SeedFiles.h"

namespace cadex::test {
namespace {

// Far more than the mesher gives a damaged surface on a busy machine.
constexpr unsigned SecondsForOneFile = 150;
constexpr int FilesInOneProcess = 20;

// Damages a copy of the text in one of several ways; the same number always gives the same damage.
class Damage
{
public:
    Damage(std::string text, unsigned seed) : myText(std::move(text)), myRandom(seed) {}

    std::string Run(bool iges)
    {
        switch (Below(6)) {
        case 0:
            FlipBytes();
            break;
        case 1:
            DropLines();
            break;
        case 2:
            ChangeNumbers(iges ? "0123456789" : "#");
            break;
        case 3:
            myText.resize(Below(myText.size()));
            break;
        case 4:
            ChangeNumbers(",(");
            break;
        default:
            FlipBytes();
            ChangeNumbers(iges ? "," : "#");
            DropLines();
        }
        return myText;
    }

private:
    std::size_t Below(std::size_t limit)
    {
        return static_cast<std::size_t>(myRandom() % std::max<std::size_t>(limit, 1));
    }

    void FlipBytes()
    {
        for (std::size_t i = 1 + Below(20); i > 0; --i) {
            myText[Below(myText.size())] = static_cast<char>(Below(256));
        }
    }

    void DropLines()
    {
        for (std::size_t i = 1 + Below(5); i > 0; --i) {
            const std::size_t start = myText.find('\n', Below(myText.size()));
            if (start != std::string::npos) {
                myText.erase(start, myText.find('\n', start + 1) - start);
            }
        }
    }

    // Behind some of the marks the number becomes another: near, far, negative or huge.
    void ChangeNumbers(const char* marks)
    {
        static const char* const Odd[] = {"0", "-1", "999999999", "1E308", "4294967296", "0.5"};
        for (std::size_t i = 1 + Below(8); i > 0; --i) {
            const std::size_t mark = myText.find_first_of(marks, Below(myText.size()));
            if (mark == std::string::npos) {
                continue;
            }
            const std::size_t end =
                std::min(myText.find_first_not_of("0123456789.+-", mark + 1), myText.size());
            const std::string number =
                Below(4) == 0 ? Odd[Below(std::size(Odd))] : std::to_string(Below(3000));
            // Columns count in IGES: the line keeps its length where it can.
            const std::size_t width = end - mark - 1;
            myText.replace(mark + 1, width,
                           number.size() < width ? std::string(width - number.size(), '0') + number : number);
        }
    }

    std::string myText;
    std::mt19937 myRandom;
};

struct Outcome
{
    bool good = false;
    std::string why;
};

// Runs the work in a process of its own; what it writes to standard output or error comes back.
Outcome InOwnProcess(const std::function<void()>& work)
{
    int ends[2];
    if (pipe(ends) != 0) {
        return {false, "no pipe"};
    }
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        int status = 0;
        try {
            work();
        } catch (...) {
            status = 3;
        }
        _exit(status);
    }
    close(ends[1]);
    std::string printed;
    char buffer[4096];
    for (ssize_t read = 0; (read = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
        printed.append(buffer, static_cast<std::size_t>(read));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        return {false, (signal == SIGALRM ? "hangs" : "ended by signal " + std::to_string(signal)) +
                           (" " + printed)};
    }
    if (WEXITSTATUS(status) != 0) {
        return {false, "exit status " + std::to_string(WEXITSTATUS(status)) + " " + printed};
    }
    return {printed.empty(), "prints: " + printed};
}

void ImportDamaged(const Seed& seed, unsigned number, const std::filesystem::path& folder)
{
    const std::filesystem::path file = folder / ("damaged" + seed.extension);
    WriteBytes(file, Damage(seed.bytes, number).Run(seed.extension == ".igs"));
    alarm(SecondsForOneFile);
    ModelData_Model model;
    if (Import(file, model)) {
        Outline::Of(model);
    }
    alarm(0);
}

void TryAll(const std::vector<Seed>& seeds, unsigned count)
{
    const ScratchFolder folder;
    const auto one = [&](unsigned number) {
        ImportDamaged(seeds[number % seeds.size()], number, folder.Path());
    };
    for (unsigned first = 0; first < count; first += FilesInOneProcess) {
        const Outcome all = InOwnProcess([&] {
            for (unsigned number = first; number < std::min(count, first + FilesInOneProcess); ++number) {
                one(number);
            }
            // Whatever happened before, the next file is read.
            const Seed& good = seeds[first % seeds.size()];
            const std::filesystem::path file = folder.Path() / ("good" + good.extension);
            WriteBytes(file, good.bytes);
            ModelData_Model model;
            if (!Import(file, model) || model.NumberOfRoots() == 0) {
                _exit(4);
            }
        });
        if (all.good) {
            continue;
        }
        ADD_FAILURE() << "files " << first << " and on: " << all.why;
        for (unsigned number = first; number < std::min(count, first + FilesInOneProcess); ++number) {
            const Outcome single = InOwnProcess([&] { one(number); });
            const Seed& seed = seeds[number % seeds.size()];
            const std::string kept = ZEMTAR_BINARY_DIR "/damaged-" + std::to_string(number) + seed.extension;
            if (!single.good) {
                WriteBytes(kept, Damage(seed.bytes, number).Run(seed.extension == ".igs"));
            }
            EXPECT_TRUE(single.good) << kept << ": " << single.why;
        }
    }
}

} // namespace

TEST(DamagedFiles, Step)
{
    TryAll(StepSeeds(), 300);
}

TEST(DamagedFiles, Iges)
{
    TryAll(IgesSeeds(), 100);
}

} // namespace cadex::test
