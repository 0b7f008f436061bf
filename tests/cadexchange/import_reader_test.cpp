// The façade: order of calls into the SDK, its settings, the messages, and what stays when something goes
// wrong.

#include "cadexchange/CZemtarCADExchangeReader.h"
#include "tests/support/ModelBuilder.h"
#include "tests/support/RecordingEngines.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <limits>
#include <new>
#include <sstream>

using namespace Zemtar;
using namespace Zemtar::Test;
namespace fs = std::filesystem;

namespace {

constexpr long Unlimited = -1;
/// How many allocations of the process succeed until one fails.
long allocationsLeft = Unlimited;

std::string errors; ///< what the last import wrote on standard error

std::unique_ptr<CZemtarDocument> Import(int type, const std::string& file, bool parallel = false,
                                        int factor = 50)
{
    CZemtarCADExchangeReader reader;
    reader.SetCADReaderType(static_cast<CZemtarCADExchangeReader::eReaderType>(type));
    reader.setUseParallelProcessing(parallel);
    reader.setTessellationFactor(factor);
    testing::internal::CaptureStderr();
    std::unique_ptr<CZemtarDocument> document(reader.Import(file));
    errors = testing::internal::GetCapturedStderr();
    return document;
}

} // namespace

void* operator new(std::size_t size)
{
    void* memory = allocationsLeft != Unlimited && allocationsLeft-- == 0 ? nullptr : std::malloc(size + 1);
    return memory ? memory : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return std::malloc(size + 1);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

TEST(ImportReader, EachTypeAsksItsFormatsReader)
{
    RecordingEngines engines;
    for (int type = 1; type <= 10; ++type) {
        engines.calls.clear();
        const auto document = Import(type, "/no/such/model.x", type % 2 == 0, 1 << 2 * type);
        std::string log;
        for (const std::string& call : engines.calls) {
            log.append(call).append("|");
        }
        const std::string n = std::to_string(type);
        const char* mode = type % 2 == 0 ? " parallel" : " serial";
        std::ostringstream expected;
        expected << n << " read model.x" << mode << (type == 10 ? " All|" : "|") << n << " transfer" << mode
                 << '|' << n << " released|";
        EXPECT_EQ(log, expected.str());
        ASSERT_TRUE(document) << "an empty model is an empty document";
        EXPECT_TRUE(document->IsUnitApplied());
        EXPECT_EQ(document->OriginalLengthUnit(), 3);
        EXPECT_EQ(errors, "");
        EXPECT_TRUE(IsParallel());
    }
    EXPECT_TRUE(Import(5, "x", false, std::numeric_limits<int>::min()));
    EXPECT_TRUE(Import(5, "x", false, std::numeric_limits<int>::max()));
}

TEST(ImportReader, FailuresAreOneLineAndNull)
{
    const struct
    {
        int type;
        bool reads;
        const char* message;
    } cases[] = {
        {11, true, "Reader is NULL!\n"},
        {-1, true, "Reader is NULL!\n"},
        {5, false, "Failed to read the file /no/\xC3\xA4.x\n"},
        {5, true, "Failed to transfer model data to specified format\n"},
    };
    RecordingEngines engines;
    engines.transfer = [](auto&) { return false; };
    for (const auto& c : cases) {
        engines.read = [&](const auto&) { return c.reads; };
        EXPECT_FALSE(Import(c.type, "/no/\xC3\xA4.x"));
        EXPECT_EQ(errors, c.message);
        EXPECT_TRUE(IsParallel());
    }
    cadex::Base_Settings::Default()->SetValue(cadex::Base_Settings::ConcurrentMode, false);
    EXPECT_FALSE(Import(0, "/no/such/model.x"));
    EXPECT_EQ(errors, "");
    EXPECT_FALSE(IsParallel()) << "without a type nothing is touched";
    cadex::Base_Settings::Default()->SetValue(cadex::Base_Settings::ConcurrentMode, true);
}

TEST(ImportReader, ReadsTheRepairedCopyThenTheSource)
{
    const fs::path source = fs::temp_directory_path() / "zemtar-import-test" / "part.IgS";
    fs::create_directories(source.parent_path());
    std::ofstream(source, std::ios::binary) << "Stra\xDF"
                                               "en in M\xFCnchen, Gef\xE4\xDF"
                                               "e und Gr\xF6\xDF"
                                               "en\n";
    RecordingEngines engines;
    std::vector<std::string> starts;
    engines.read = [&](const fs::path& file) {
        std::getline(std::ifstream(file), starts.emplace_back());
        return file == source;
    };
    EXPECT_TRUE(Import(4, source.string()));
    EXPECT_EQ(errors, "");
    ASSERT_EQ(starts.size(), 2u);
    EXPECT_EQ(starts[0].substr(0, 18), "Stra_en in M_nchen");
    EXPECT_EQ(starts[1].substr(0, 5), "Stra\xDF");
    engines.read = [](const auto&) { return false; };
    EXPECT_FALSE(Import(4, source.string()));
    EXPECT_EQ(errors, "Failed to read the file " + source.string() + "\n");
    fs::remove(fs::temp_directory_path() / source.filename());
    fs::remove_all(source.parent_path());
}

TEST(ImportReader, PlainlyBinaryFilesAreReadAsTheyAre)
{
    const fs::path source = fs::temp_directory_path() / "zemtar-import-test" / "part.jt";
    fs::create_directories(source.parent_path());
    RecordingEngines engines;
    std::vector<fs::path> files;
    engines.read = [&](const fs::path& file) {
        files.push_back(file);
        return false;
    };
    const std::string legacy = "Stra\xDF"
                               "en in M\xFCnchen, Gef\xE4\xDF"
                               "e und Gr\xF6\xDF"
                               "en\n";
    // The second is a text with a stray zero, the third one in UTF-16.
    for (const auto& [bytes, reads] : {std::pair(std::string("\1\0\2\0", 4) + legacy, 1u),
                                       {legacy + std::string(1, '\0'), 2u},
                                       {std::string("\xFF\xFE\xE4\0\xB0\x65", 6), 2u}}) {
        std::ofstream(source, std::ios::binary) << bytes;
        files.clear();
        EXPECT_FALSE(Import(5, source.string()));
        EXPECT_EQ(files.size(), reads) << bytes.size();
        EXPECT_EQ(files.back(), source);
    }
    fs::remove(fs::temp_directory_path() / source.filename());
    fs::remove_all(source.parent_path());
}

// Wherever memory runs out in the walk, the exception comes through, the switch is on again and the next
// import works.
TEST(ImportReader, AnExceptionInTheWalkLeavesNothingBehind)
{
    const auto part = MakePart("a part with a long name", {MakeGrid(2, Normals::Smooth, true)});
    const auto top = MakeAssembly("top", {cadex::ModelData_Instance(part), cadex::ModelData_Instance(part)});
    long allowed = 0;
    RecordingEngines engines;
    engines.transfer = [&](cadex::ModelData_Model& model) {
        model.SetName("model");
        model.AddRoot(top);
        allocationsLeft = allowed;
        return true;
    };
    std::unique_ptr<CZemtarDocument> document;
    CZemtarCADExchangeReader reader;
    for (reader.SetCADReaderType(CZemtarCADExchangeReader::eReaderJT); !document;
         allocationsLeft = Unlimited) {
        try {
            document.reset(reader.Import("/no/such/model.x"));
        } catch (const std::bad_alloc&) {
            ASSERT_TRUE(IsParallel());
            ++allowed;
        }
    }
    EXPECT_GT(allowed, 30);
    EXPECT_EQ(document->RootNodes().size(), 1u);
    EXPECT_EQ(document->Nodes().size(), 6u);
}
