// The public readers and writers against engines put in for the test.
#include <cadex/Creo_Reader.hxx>
#include <cadex/JT_Reader.hxx>
#include <cadex/JT_Writer.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>

#include <gtest/gtest.h>

#include <iostream>
#include <stdexcept>
#include <string>

#include "sdk/model/EngineRegistry.h"

namespace {

using namespace cadex;
using internal::EngineRegistry;
using internal::Format;

enum class Mode
{
    Works,
    Refuses,
    Throws
};

Mode g_mode = Mode::Works; // what the engines below do next
std::string g_seen;

bool Behave()
{
    if (g_mode == Mode::Throws) {
        throw std::runtime_error("kernel");
    }
    return g_mode == Mode::Works;
}

class TestReader : public internal::ReaderEngine
{
public:
    bool ReadFile(const std::filesystem::path& file, const Base_ReaderParameters&) override
    {
        g_seen = Base_UTF16String(file.filename().c_str()).ToUTF8();
        return Behave();
    }
    bool Transfer(ModelData_Model& model) override
    {
        model.AddRoot(ModelData_Part("read"));
        return Behave();
    }
};

class TestWriter : public internal::WriterEngine
{
public:
    bool Transfer(const ModelData_Model&, const Base_WriterParameters& parameters) override
    {
        const auto& own = static_cast<const JT_WriterParameters&>(parameters);
        g_seen = std::to_string(own.FileSplitMode()) + ' ' + std::to_string(own.PolyRepresentationUnit());
        return Behave();
    }
    bool WriteFile(const std::filesystem::path&) override { return Behave(); }
};

class EngineBorder : public testing::Test
{
protected:
    EngineBorder()
    {
        g_mode = Mode::Works;
        myReader =
            EngineRegistry::Instance().SetReader(Format::JT, [] { return std::make_unique<TestReader>(); });
        myWriter =
            EngineRegistry::Instance().SetWriter(Format::JT, [] { return std::make_unique<TestWriter>(); });
    }
    ~EngineBorder() override
    {
        EngineRegistry::Instance().SetReader(Format::JT, myReader);
        EngineRegistry::Instance().SetWriter(Format::JT, myWriter);
    }

private:
    internal::ReaderFactory myReader;
    internal::WriterFactory myWriter;
};

TEST_F(EngineBorder, ReadsThenTransfersAndNamesTheModel)
{
    JT_Reader reader;
    ModelData_Model model;
    EXPECT_FALSE(reader.Transfer(model)) << "nothing was read";
    ASSERT_TRUE(reader.ReadFile("some folder/Getriebe \xE9\xBD\xBF.v2.jt"));
    EXPECT_EQ(g_seen, "Getriebe \xE9\xBD\xBF.v2.jt");
    ASSERT_TRUE(reader.Transfer(model));
    EXPECT_EQ(model.Name(), Base_UTF16String("Getriebe \xE9\xBD\xBF.v2"));
    EXPECT_EQ(model.NumberOfRoots(), 1u);
    ASSERT_TRUE(reader.ReadFile("b.jt") && reader.Transfer(model));
    EXPECT_EQ(model.Name(), Base_UTF16String("Getriebe \xE9\xBD\xBF.v2")) << "a name is kept";
    EXPECT_EQ(model.NumberOfRoots(), 2u);
}

TEST_F(EngineBorder, FailuresAndExceptionsAreFalseAndForgetTheFileBefore)
{
    JT_Reader reader;
    ModelData_Model model;
    for (const Mode mode : {Mode::Refuses, Mode::Throws}) {
        g_mode = Mode::Works;
        ASSERT_TRUE(reader.ReadFile("a.jt"));
        g_mode = mode;
        EXPECT_FALSE(reader.Transfer(model));
        EXPECT_FALSE(reader.ReadFile("b.jt"));
        g_mode = Mode::Works;
        EXPECT_FALSE(reader.Transfer(model));
        EXPECT_FALSE(reader.ReadFile(std::cin)) << "needs a file";
    }
}

TEST_F(EngineBorder, WritersPassTheirOwnParameters)
{
    JT_Writer writer;
    const ModelData_Model model;
    EXPECT_FALSE(writer.WriteFile("x.jt")) << "nothing was transferred";
    writer.Parameters().SetFileSplitMode(JT_WriterParameters::PerPart);
    writer.Parameters().PolyRepresentationUnit() = Base_LU_Inches;
    ASSERT_TRUE(writer.Transfer(model));
    EXPECT_EQ(g_seen, "1 3");
    EXPECT_TRUE(writer.WriteFile("x.jt") && writer.WriteFile("y.jt"));
    g_mode = Mode::Throws;
    EXPECT_FALSE(writer.WriteFile("x.jt"));
    EXPECT_FALSE(writer.Transfer(model));
    g_mode = Mode::Works;
    EXPECT_FALSE(writer.WriteFile("x.jt"));
}

TEST(Formats, WithoutAnEngineFail)
{
    EXPECT_FALSE(internal::CanRead(Format::Creo));
    EXPECT_FALSE(internal::CanRead(static_cast<Format>(99)) || internal::CanWrite(Format::None));
    EXPECT_TRUE(internal::CanWrite(Format::STEP));
    Creo_Reader reader;
    ModelData_Model model;
    EXPECT_FALSE(reader.ReadFile("part.prt"));
    EXPECT_FALSE(reader.Transfer(model));
    EngineRegistry& registry = EngineRegistry::Instance();
    const internal::WriterFactory before = registry.SetWriter(Format::JT, {});
    JT_Writer writer;
    EXPECT_FALSE(writer.Transfer(model));
    EXPECT_FALSE(writer.WriteFile("part.jt"));
    registry.SetWriter(Format::JT, before);
}

} // namespace
