// Listening to the engines, and cancelling them at every step that they tell of.
#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <cadex/IFC_Writer.hxx>
#include <cadex/Rhino_Writer.hxx>
#include <cadex/STEP_Writer.hxx>
#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "tests/sdk/ReadModels.h"
#include "tests/sdk/ScratchFolder.h"

using namespace cadex;
using namespace cadex::test;
using internal::Progress;
using internal::ProgressListening;
using internal::ProgressRange;
using internal::ProgressStage;
using internal::Reports;

namespace {

constexpr const char* Pump = ZEMTAR_SOURCE_DIR "/examples/pump.step";
constexpr std::chrono::milliseconds Always(0);

struct Step
{
    ProgressStage stage;
    double fraction;
};

/// What the work tells when nobody stops it.
std::vector<Step> StepsOf(const std::function<void()>& work)
{
    std::vector<Step> steps;
    const ProgressListening listening(
        [&](ProgressStage stage, double fraction) {
            steps.push_back({stage, fraction});
            return true;
        },
        Always);
    work();
    EXPECT_FALSE(listening.IsCancelled());
    return steps;
}

void ExpectOrder(const std::vector<Step>& steps)
{
    for (std::size_t i = 0; i < steps.size(); ++i) {
        EXPECT_GE(steps[i].fraction, 0);
        EXPECT_LE(steps[i].fraction, 1);
        if (i > 0 && steps[i].stage == steps[i - 1].stage) {
            EXPECT_GE(steps[i].fraction, steps[i - 1].fraction) << "step " << i;
        } else if (i > 0) {
            EXPECT_GT(steps[i].stage, steps[i - 1].stage);
        }
    }
}

/// Runs the work again and again, cancelled at each of its steps in turn (where they are many, at some from
/// first to last); the work says whether it was done.
void CancelAtEach(std::size_t steps, const std::function<bool()>& work, const std::function<void()>& check)
{
    constexpr std::size_t MostRuns = 24;
    const std::size_t runs = std::min(steps, MostRuns);
    for (std::size_t run = 0; run < runs; ++run) {
        const std::size_t last = run * (steps - 1) / std::max<std::size_t>(runs - 1, 1);
        std::size_t calls = 0;
        const ProgressListening listening([&](ProgressStage, double) { return calls++ < last; }, Always);
        EXPECT_FALSE(work()) << "cancelled at step " << last;
        EXPECT_TRUE(listening.IsCancelled());
        EXPECT_EQ(calls, last + 1) << "the listener was asked again";
        const std::vector<internal::Report> reports = Reports::Take();
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_EQ(reports.front().kind, internal::Report::Kind::Refused);
        EXPECT_EQ(reports.front().text, "cancelled");
        check();
    }
}

template <typename Writer>
bool Write(const ModelData_Model& model, const std::filesystem::path& file)
{
    Writer writer;
    return writer.Transfer(model) && writer.WriteFile(file.string().c_str());
}

using WriteCall = bool (*)(const ModelData_Model&, const std::filesystem::path&);

class Exports : public testing::TestWithParam<std::pair<const char*, WriteCall>>
{
};

} // namespace

TEST(Progress, AnImportTellsOfItsStagesAndEndsAtAnyOfThem)
{
    ModelData_Model whole{Base_UTF16String()};
    const std::vector<Step> steps = StepsOf([&] { EXPECT_TRUE(Import(Pump, whole)); });
    ExpectOrder(steps);
    for (const ProgressStage stage :
         {ProgressStage::Reading, ProgressStage::Building, ProgressStage::Meshing}) {
        EXPECT_GE(std::count_if(steps.begin(), steps.end(), [&](const Step& s) { return s.stage == stage; }),
                  3);
    }
    CancelAtEach(
        steps.size(),
        [] {
            ModelData_Model model{Base_UTF16String()};
            return Import(Pump, model) && !Progress::IsCancelled();
        },
        [] {});
    ModelData_Model again{Base_UTF16String()};
    ASSERT_TRUE(Import(Pump, again));
    EXPECT_EQ(Outline::Of(again), Outline::Of(whole));
}

TEST_P(Exports, EndAtAnyStepWithoutAFile)
{
    ModelData_Model model{Base_UTF16String()};
    ASSERT_TRUE(Import(Pump, model));
    const ScratchFolder folder;
    const std::filesystem::path file = folder.Path() / (std::string("pump.") + GetParam().first);
    const WriteCall write = GetParam().second;
    const std::vector<Step> steps = StepsOf([&] { EXPECT_TRUE(write(model, file)); });
    ExpectOrder(steps);
    EXPECT_GE(steps.size(), 5U);
    EXPECT_EQ(steps.back().stage, ProgressStage::Writing);
    WriteBytes(file, "older");
    CancelAtEach(
        steps.size(), [&] { return write(model, file); },
        [&] {
            EXPECT_EQ(BytesOf(file), "older");
            EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
        });
}

INSTANTIATE_TEST_SUITE_P(Formats, Exports,
                         testing::Values(std::pair{"step", WriteCall(Write<STEP_Writer>)},
                                         std::pair{"ifc", WriteCall(Write<IFC_Writer>)},
                                         std::pair{"3dm", WriteCall(Write<Rhino_Writer>)}),
                         [](const auto& each) { return "As" + std::string(each.param.first); });

TEST(Progress, AReaderThatWasCancelledHasNothingToTransfer)
{
    STEP_Reader reader;
    {
        const ProgressListening listening([](ProgressStage, double) { return false; });
        EXPECT_FALSE(reader.ReadFile(Pump));
        EXPECT_FALSE(reader.ReadFile(Pump)) << "a second try within the same import";
    }
    ModelData_Model model{Base_UTF16String()};
    EXPECT_FALSE(reader.Transfer(model));
    EXPECT_TRUE(reader.ReadFile(Pump)) << "the next import is not cancelled";
}

TEST(Progress, ListenersAreCalledSeldomOnTheirThreadAndMayFail)
{
    int calls = 0;
    const ProgressListening outer([&](ProgressStage, double) { return ++calls > 0; }, std::chrono::hours(1));
    {
        const ProgressRange stage(ProgressStage::Meshing);
        for (int i = 0; i < 1000; ++i) {
            EXPECT_TRUE(Progress::GoesOn(static_cast<std::size_t>(i), 1000));
        }
        EXPECT_EQ(calls, 1);
        std::thread([] {
            const ProgressRange other(ProgressStage::Writing);
            EXPECT_TRUE(Progress::GoesOn(1, 2));
        }).join();
        EXPECT_EQ(calls, 1);
        const ProgressListening inner(
            [](ProgressStage, double) -> bool { throw std::runtime_error("full"); });
        EXPECT_FALSE(Progress::GoesOn());
        std::thread([] { EXPECT_FALSE(Progress::GoesOn()); }).join();
    }
    EXPECT_TRUE(Progress::GoesOn()) << "the outer listener has its place again";
}
