// Every way of writing a file under a full disk, a vanishing folder, a read-only target, a killed process and
// failing allocations: what was there stays, or the new file is whole, and nothing else is left. Imports
// under the same leave the process as it was.
#include "apps/export/SceneExport.h"
#include "cadexchange/CZemtarCADExchangeReader.h"
#include "common/image/ZemtarImage.h"
#include "host/CZemtarDocument.h"
#include "tests/support/EngineFormats.h"
#include "tests/support/SceneBuilder.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cadex/Base_Settings.hxx>
#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/internal/Progress.hxx>

#if defined(__linux__)
#include <sys/mount.h>
#endif

// Allocations of this program, counted, and failing on demand.
namespace {

std::atomic<long> allocationsLeft{-1}; // negative: no end
std::atomic<long> allocationsAlive{0};

void* Allocated(std::size_t size, std::size_t alignment = 0)
{
    if (allocationsLeft.load() >= 0 && allocationsLeft.fetch_sub(1) <= 0) {
        allocationsLeft = 0;
        return nullptr;
    }
    void* memory = nullptr;
    if (alignment > alignof(std::max_align_t)) {
        memory = posix_memalign(&memory, alignment, size) == 0 ? memory : nullptr;
    } else {
        memory = std::malloc(size == 0 ? 1 : size);
    }
    allocationsAlive += memory != nullptr ? 1 : 0;
    return memory;
}

void* AllocatedOrThrown(std::size_t size, std::size_t alignment = 0)
{
    void* const memory = Allocated(size, alignment);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

void Freed(void* memory)
{
    allocationsAlive -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

} // namespace

void* operator new(std::size_t size)
{
    return AllocatedOrThrown(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocated(size);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return AllocatedOrThrown(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept
{
    Freed(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    Freed(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept
{
    Freed(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept
{
    Freed(memory);
}

namespace {

namespace fs = std::filesystem;
using namespace Zemtar;
using Test::EngineFormat;

std::string Content(const fs::path& file)
{
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

/// Called while a file is being written, as often as the writer looks; false ends the writing.
std::function<bool()> duringWrite;

bool LooksAround()
{
    return !duringWrite || duringWrite();
}

struct Output
{
    std::string extension;
    std::function<bool(const std::string& file)> write;
};

bool WriteEngine(const EngineFormat& format, const std::string& file)
{
    try {
        const cadex::internal::ProgressListening listening(
            [](cadex::internal::ProgressStage, double) { return LooksAround(); },
            std::chrono::milliseconds(0));
        const auto writer = format.writer();
        return writer->Transfer(Test::MakeSeedModel(true, 20)) && writer->WriteFile(file.c_str());
    } catch (const std::bad_alloc&) { // in what is the caller's
        return false;
    }
}

bool WriteScene(SceneFormat format, const std::string& file)
{
    try {
        const std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
        const Test::SceneBuilder scene(*document);
        Test::SceneBuilder::Points points;
        std::vector<unsigned> corners;
        for (unsigned i = 0; i < 3000; ++i) {
            points.push_back({0.001 * i, 0.002 * (i % 7), 0.003 * (i % 3)});
            corners.push_back(i);
        }
        scene.Mesh("mesh", nullptr, scene.Triangles(points, corners), {}, scene.Material(1, 0, 0));
        SceneExportSettings settings;
        settings.format = format;
        settings.progress = [](double) { return LooksAround(); };
        ExportScene(*document, file, settings);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// A picture whose file is some ten thousand bytes.
const QImage& Picture()
{
    static const QImage image = [] {
        QImage noise(64, 64, QImage::Format_ARGB32);
        unsigned state = 1;
        for (int y = 0; y < noise.height(); ++y) {
            for (int x = 0; x < noise.width(); ++x) {
                state = state * 1664525U + 1013904223U;
                noise.setPixel(x, y, state | 0xFF000000U);
            }
        }
        return noise;
    }();
    return image;
}

class Faults : public testing::Test
{
protected:
    Faults()
    {
        Picture().save(QString::fromStdString(source.string()));
        for (const EngineFormat& format : Zemtar::Test::EngineFormats) {
            if (format.CanWrite()) {
                outputs.push_back({format.extension,
                                   [&format](const std::string& file) { return WriteEngine(format, file); }});
            }
        }
        for (const auto& [extension, format] : {std::pair(".glb", SceneFormat::GLB),
                                                {".obj", SceneFormat::OBJ},
                                                {".ply", SceneFormat::PLY},
                                                {".stl", SceneFormat::STL}}) {
            outputs.push_back(
                {extension, [format = format](const std::string& file) { return WriteScene(format, file); }});
        }
        const CZemtarString in(source.string());
        outputs.push_back({".jpg", [in](const std::string& file) {
                               return ZemtarImage::ResizeImage(in, 60, 60, true, file.c_str(), 95);
                           }});
        outputs.push_back({".exr", [in](const std::string& file) {
                               return !ZemtarImage::ConvertToExr(in, file.c_str(), true).IsEmpty();
                           }});
        outputs.push_back({".bmp", [in](const std::string& file) {
                               return ZemtarImage::NormalMapFromTexture(in, file.c_str(), 2.0, false);
                           }});
        outputs.push_back(
            {".png", [in](const std::string& file) { return ZemtarImage::Flip(in, file.c_str(), true); }});
    }

    /// The files of a folder, without what OBJ has beside it.
    static std::vector<std::string> NamesIn(const fs::path& folder)
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() != ".mtl") {
                names.push_back(entry.path().filename().string());
            }
        }
        return names;
    }

    /// Bytes of the whole file; time stamps in it have a fixed length.
    std::size_t SizeOf(const Output& output)
    {
        const fs::path file = root / "whole" / ("a" + output.extension); // files hold their names
        if (sizes.count(output.extension) == 0) {
            fs::create_directory(file.parent_path());
            EXPECT_TRUE(output.write(file.string())) << output.extension;
            sizes[output.extension] = fs::file_size(file);
        }
        return sizes[output.extension];
    }

    /// Writes in a process of its own, once over a file and once where there is none, after `prepare` there.
    void Check(const Output& output, const char* fault, const std::function<void(const fs::path&)>& prepare,
               bool mayWrite = false, const fs::path& place = {})
    {
        const std::size_t size = SizeOf(output);
        for (const bool isThere : {true, false}) {
            const fs::path folder = (place.empty() ? root : place) / "out";
            const fs::path file = folder / ("a" + output.extension);
            fs::create_directory(folder);
            fs::permissions(folder, fs::perms::all);
            if (isThere) {
                std::ofstream(file) << "before";
            }
            const std::string name = file.string();
            const pid_t child = fork();
            if (child == 0) {
                const rlimit none = {0, 0};
                setrlimit(RLIMIT_CORE, &none);
                prepare(folder);
                _exit(output.write(name) ? 1 : 0);
            }
            int status = 0;
            waitpid(child, &status, 0);
            allocationsLeft = -1;
            const std::string what = output.extension + ": " + fault + (isThere ? ", over a file" : "");
            const bool isWritten = WIFEXITED(status) && WEXITSTATUS(status) == 1;
            if (WIFSIGNALED(status)) {
                EXPECT_TRUE(WTERMSIG(status) == SIGXFSZ || WTERMSIG(status) == SIGKILL)
                    << what << ": signal " << WTERMSIG(status);
            }
            EXPECT_TRUE(mayWrite || !isWritten) << what;
            if (!fs::exists(folder)) {
                continue;
            }
            const std::string left = Content(file);
            if (isWritten || left.size() == size) {
                EXPECT_EQ(left.size(), size) << what;
            } else {
                EXPECT_EQ(left, isThere ? "before" : "") << what;
                EXPECT_EQ(fs::exists(file), isThere) << what;
            }
            EXPECT_LE(NamesIn(folder).size(), fs::exists(file) ? 1U : 0U)
                << what << ": " << NamesIn(folder).front();
            fs::remove_all(folder);
        }
    }

    static void LimitFiles(std::size_t bytes, void (*handler)(int))
    {
        std::signal(SIGXFSZ, handler);
        const rlimit limit = {bytes, bytes};
        setrlimit(RLIMIT_FSIZE, &limit);
    }

    const QTemporaryDir scratch;
    const fs::path root = scratch.path().toStdString();
    const fs::path source = root / "source.png";
    std::vector<Output> outputs;
    std::map<std::string, std::size_t> sizes;
};

TEST_F(Faults, FilesThatMayNotGrowAreNotLeftHalf)
{
    for (const Output& output : outputs) {
        const std::size_t size = SizeOf(output);
        for (const std::size_t limit : {std::size_t{0}, std::size_t{100}, size / 2, size - 1}) {
            Check(output, "limit", [limit](const fs::path&) { LimitFiles(limit, SIG_IGN); });
        }
    }
}

TEST_F(Faults, ProcessesThatEndWhileTheyWriteLeaveNothing)
{
    for (const Output& output : outputs) {
        // The default action of the signal ends the process within its write.
        Check(output, "ended", [size = SizeOf(output)](const fs::path&) { LimitFiles(size / 2, SIG_DFL); });
    }
}

#if defined(__linux__)
TEST_F(Faults, FullDisks)
{
    const fs::path disk = root / "disk";
    fs::create_directory(disk);
    if (mount("none", disk.c_str(), "tmpfs", 0, "size=16k") != 0) {
        GTEST_SKIP() << "no small disk can be made here";
    }
    for (const Output& output : outputs) {
        if (SizeOf(output) > 16384) {
            Check(
                output, "full", [](const fs::path&) {}, false, disk);
        }
    }
    umount(disk.c_str());
}
#endif

TEST_F(Faults, ReadOnlyTargetsAndFoldersStay)
{
    const auto become = [] {
        if (geteuid() == 0 && setuid(65534) != 0) {
            _exit(0);
        }
    };
    fs::permissions(root, fs::perms::all);
    for (const Output& output : outputs) {
        Check(output, "read-only folder", [become](const fs::path& folder) {
            fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read |
                                        fs::perms::others_exec);
            become();
        });
        const std::size_t size = SizeOf(output);
        const fs::path file = root / "out" / ("a" + output.extension);
        fs::create_directory(root / "out");
        fs::permissions(root / "out", fs::perms::all);
        std::ofstream(file) << "before";
        fs::permissions(file, fs::perms::owner_read | fs::perms::others_read);
        const pid_t child = fork();
        if (child == 0) {
            become();
            _exit(output.write(file.string()) ? 1 : 0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(Content(file), "before") << output.extension << " of " << size;
        EXPECT_EQ(status, 0) << output.extension;
        fs::remove_all(root / "out");
    }
}

TEST_F(Faults, FoldersThatVanish)
{
    for (const Output& output : outputs) {
        Check(output, "no folder", [](const fs::path& folder) { fs::remove_all(folder); });
        for (const int look : {1, 3, 6}) {
            Check(
                output, "folder vanishes",
                [look](const fs::path& folder) {
                    duringWrite = [folder, left = look]() mutable {
                        if (--left == 0) {
                            fs::remove_all(folder);
                        }
                        return true;
                    };
                },
                true);
        }
    }
}

// Under the sanitizer, allocations are its own.
#if !defined(__SANITIZE_ADDRESS__)
TEST_F(Faults, AllocationsThatFail)
{
    for (const Output& output : outputs) {
        SizeOf(output);
        // FreeImage and the codecs behind Qt are C or not made for it: exceptions are not thrown through
        // them.
        if (output.extension == ".exr" || output.extension == ".jpg" || output.extension == ".png" ||
            output.extension == ".bmp") {
            continue;
        }
        for (long left = 0; left < 4000; left += 1 + left / 4) {
            Check(
                output, ("allocation " + std::to_string(left)).c_str(),
                [left](const fs::path&) { allocationsLeft = left; }, true);
        }
    }
}
#endif

struct Process
{
    std::vector<int> descriptors;
    std::vector<void (*)(int)> handlers;
    bool isConcurrent = false;

    static Process Now()
    {
        Process now;
        for (int number = 0; number < 256; ++number) {
            if (fcntl(number, F_GETFD) != -1) {
                now.descriptors.push_back(number);
            }
        }
        for (const int signal :
             {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGABRT}) {
            struct sigaction action = {};
            sigaction(signal, nullptr, &action);
            now.handlers.push_back(action.sa_handler);
        }
        now.isConcurrent =
            cadex::Base_Settings::Default()->BoolValue(cadex::Base_Settings::ConcurrentMode, true);
        return now;
    }
    bool operator==(const Process&) const = default;
};

class ImportFaults : public Faults
{
protected:
    struct Input
    {
        const EngineFormat& format;
        fs::path file;
    };
    std::vector<Input> Inputs()
    {
        std::vector<Input> inputs;
        for (const EngineFormat& format : Zemtar::Test::EngineFormats) {
            const fs::path file = root / (std::string("in") + format.extension);
            if (format.CanRead() && format.CanWrite() && WriteEngine(format, file.string())) {
                inputs.push_back({format, file});
            }
        }
        return inputs;
    }
    /// As the application imports: with the parallelism that is not the one set.
    static bool Import(const EngineFormat& format, const fs::path& file)
    {
        CZemtarCADExchangeReader reader;
        reader.SetCADReaderType(
            static_cast<CZemtarCADExchangeReader::eReaderType>(static_cast<int>(format.format)));
        reader.setUseParallelProcessing(true);
        const std::unique_ptr<CZemtarDocument> document(reader.Import(file.string().c_str()));
        return document != nullptr;
    }
};

TEST_F(ImportFaults, LeaveTheProcessAsItWas)
{
    cadex::Base_Settings::Default()->SetValue(cadex::Base_Settings::ConcurrentMode, false);
    std::signal(SIGFPE, SIG_IGN);
    testing::internal::CaptureStderr();
    for (const Input& input : Inputs()) {
        const std::string name = input.format.name;
        ASSERT_TRUE(Import(input.format, input.file)) << name; // whatever is made once is made
        const Process before = Process::Now();
        const std::string bytes = Content(input.file);
        const fs::path bad = root / ("bad" + std::string(input.format.extension));
        std::ofstream(bad, std::ios::binary) << bytes.substr(0, bytes.size() / 2);
        EXPECT_FALSE(Import(input.format, bad)) << name;
        std::ofstream(bad, std::ios::binary) << "noise";
        EXPECT_FALSE(Import(input.format, bad)) << name;
        EXPECT_FALSE(Import(input.format, root / "missing")) << name;
        EXPECT_FALSE(Import(input.format, root)) << name;
        EXPECT_TRUE(Process::Now() == before) << name;
        EXPECT_TRUE(Import(input.format, input.file)) << name;
        EXPECT_TRUE(Process::Now() == before) << name;
    }
    testing::internal::GetCapturedStderr();
    std::signal(SIGFPE, SIG_DFL);
    cadex::Base_Settings::Default()->SetValue(cadex::Base_Settings::ConcurrentMode, true);
}

#if !defined(__SANITIZE_ADDRESS__)
TEST_F(ImportFaults, NothingIsLeaked)
{
    testing::internal::CaptureStderr();
    for (const Input& input : Inputs()) {
        const std::string bytes = Content(input.file);
        const fs::path bad = root / ("bad" + std::string(input.format.extension));
        std::ofstream(bad, std::ios::binary) << bytes.substr(0, bytes.size() / 2);
        const auto round = [&] {
            Import(input.format, input.file);
            Import(input.format, bad);
            return allocationsAlive.load();
        };
        round();
        round();
        const long before = round();
        const long after = round();
        // the kernel's own reader keeps tables of its entities
        EXPECT_LE(after - before, input.format.isReadByKernel ? 1000 : 0) << input.format.name;
    }
    testing::internal::GetCapturedStderr();
}

TEST_F(ImportFaults, AllocationsThatFailAreFailures)
{
    testing::internal::CaptureStderr();
    for (const Input& input : Inputs()) {
        ASSERT_TRUE(Import(input.format, input.file)) << input.format.name;
        const Process before = Process::Now();
        for (long left = 0; left < 20000; left += 1 + left / 3) {
            cadex::ModelData_Model model;
            const auto reader = input.format.reader();
            const cadex::Base_UTF16String name(input.file.string().c_str());
            allocationsLeft = left;
            const bool isRead = reader->ReadFile(name) && reader->Transfer(model);
            allocationsLeft = -1;
            EXPECT_EQ(isRead, !model.IsEmpty()) << input.format.name << ' ' << left;
        }
        EXPECT_TRUE(Process::Now() == before) << input.format.name;
        EXPECT_TRUE(Import(input.format, input.file)) << input.format.name;
    }
    testing::internal::GetCapturedStderr();
}
#endif

} // namespace
