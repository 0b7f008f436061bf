// What the engine tells of its work, and when it forgets.
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <cadex/JT_Reader.hxx>
#include <cadex/JT_Writer.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/STEP_Reader.hxx>
#include <cadex/STEP_Writer.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/model/EngineRegistry.h"

using namespace cadex;
using internal::Report;
using internal::Reports;

TEST(Reports, AreCountedInOrderOnOneLine)
{
    Reports::Clear();
    Reports::Add(Report::Kind::LeftOut, "a\nface\t\x7F.", 12);
    Reports::Add(Report::Kind::Repaired, "a face  .", 13);
    Reports::Add(Report::Kind::LeftOut, "a face  .", 14);
    const std::vector<Report> reports = Reports::Take();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0].text, "a face  .");
    EXPECT_EQ(reports[0].record, 12U);
    EXPECT_EQ(reports[0].count, 2U);
    EXPECT_EQ(reports[1].kind, Report::Kind::Repaired);
    EXPECT_EQ(reports[1].count, 1U);
    EXPECT_TRUE(Reports::Take().empty());
}

TEST(Reports, AreBoundedAndComeFromAnyThread)
{
    Reports::Clear();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            for (int k = 0; k < 1000; ++k) {
                Reports::Add(Report::Kind::Noted, std::to_string(i * 1000 + k));
                Reports::Add(Report::Kind::Noted, "0");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Reports::Take().size(), 1000U);
}

TEST(Reports, EachFileBeginsAnewAndFailuresSayWhy)
{
    Reports::Clear();
    Reports::Add(Report::Kind::Noted, "of the file before");
    EXPECT_FALSE(STEP_Reader().ReadFile("/no/such/file.stp"));
    std::vector<Report> reports = Reports::Take();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].kind, Report::Kind::Refused);
    EXPECT_EQ(reports[0].text, "there is no such file");

    ASSERT_FALSE(internal::CanWrite(internal::Format::Creo));
    auto& registry = internal::EngineRegistry::Instance();
    const internal::ReaderFactory before =
        registry.SetReader(internal::Format::JT, []() -> std::unique_ptr<internal::ReaderEngine> {
            throw std::runtime_error("why not");
        });
    EXPECT_FALSE(JT_Reader().ReadFile("x.jt"));
    reports = Reports::Take();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].text, "why not");
    registry.SetReader(internal::Format::JT, {});
    EXPECT_FALSE(JT_Reader().ReadFile("x.jt"));
    EXPECT_EQ(Reports::Take().size(), 1U);
    // an engine without a reason, and one that loses all it had
    struct Engine : internal::ReaderEngine
    {
        explicit Engine(bool isRead) : myIsRead(isRead) {}
        bool ReadFile(const std::filesystem::path&, const Base_ReaderParameters&) override
        {
            return myIsRead;
        }
        bool Transfer(ModelData_Model& model) override
        {
            Reports::Add(Report::Kind::LeftOut, "a body");
            model.AddRoot(ModelData_Part("without a shape"));
            return true;
        }
        bool myIsRead;
    };
    registry.SetReader(internal::Format::JT, [] { return std::make_unique<Engine>(false); });
    EXPECT_FALSE(JT_Reader().ReadFile("x.jt"));
    EXPECT_EQ(Reports::Take().at(0).text, "the engine gave up");
    registry.SetReader(internal::Format::JT, [] { return std::make_unique<Engine>(true); });
    JT_Reader reader;
    ModelData_Model model;
    model.AddRoot(ModelData_Part("of the caller's"));
    EXPECT_TRUE(reader.ReadFile("x.jt"));
    EXPECT_FALSE(reader.Transfer(model));
    EXPECT_EQ(model.NumberOfRoots(), 1U);
    EXPECT_EQ(Reports::Take().at(1).text, "nothing in the file can be shown");
    registry.SetReader(internal::Format::JT, before);

    Reports::Add(Report::Kind::Noted, "of the file before");
    STEP_Writer writer;
    EXPECT_TRUE(writer.Transfer(ModelData_Model("empty")));
    EXPECT_TRUE(Reports::Take().empty());
}
