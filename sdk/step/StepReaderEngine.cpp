#include "sdk/step/StepReaderEngine.h"

#include <filesystem>
#include <iterator>
#include <string>
#include <utility>

#include <cadex/STEP_ReaderParameters.hxx>

#include "sdk/model/EngineRegistry.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/step/StepFacets.h"
#include "sdk/step/StepKernel.h"
#include "sdk/step/StepModelBuilder.h"
#include "sdk/step/StepText.h"
#include "sdk/text/FileBytes.h"

namespace cadex::step {

using occt::EngineUse;
using occt::RunGuarded;
using text::ReadBytes;
using text::StemOf;
namespace {

class StepEngine : public internal::ReaderEngine
{
public:
    ~StepEngine() override
    {
        // The kernel's records are destroyed under the guard they were made under.
        RunGuarded(EngineUse::Step, [this] {
            myKernel.reset();
            return true;
        });
    }

    bool ReadFile(const std::filesystem::path& file, const Base_ReaderParameters& parameters) override
    {
        std::string bytes;
        return ReadBytes(file, bytes) && Read(std::move(bytes), StemOf(file), parameters);
    }

    bool ReadStream(std::istream& stream, const Base_ReaderParameters& parameters) override
    {
        return Read(std::string(std::istreambuf_iterator<char>(stream), {}), Base_UTF16String(), parameters);
    }

    bool Transfer(ModelData_Model& model) override
    {
        if (myIsFaceted) {
            return BuildStepModel(myContent, myFacets, model);
        }
        return myKernel != nullptr && RunGuarded(EngineUse::Step, [&] {
                   return myKernel->Transfer(myPreferred) && BuildStepModel(myContent, *myKernel, model);
               });
    }

private:
    bool Read(std::string bytes, const Base_UTF16String& fileName, const Base_ReaderParameters& parameters)
    {
        myPreferred = static_cast<const STEP_ReaderParameters&>(parameters).PreferredBRepRepresentationType();
        ClearText text;
        if (!text.Load(std::move(bytes)) || !ReadStepContent(text, fileName, myContent)) {
            return false;
        }
        myIsFaceted = myFacets.Read(text, myContent);
        if (myIsFaceted) {
            return true;
        }
        myKernel = std::make_unique<StepKernel>();
        return RunGuarded(EngineUse::Step, [&] { return myKernel->Read(text, myContent); });
    }

    STEP_ReaderParameters::BRepRepresentationType myPreferred = STEP_ReaderParameters::Auto;
    StepContent myContent;
    StepFacets myFacets;
    bool myIsFaceted = false;
    std::unique_ptr<StepKernel> myKernel;
};

} // namespace

std::unique_ptr<internal::ReaderEngine> MakeStepEngine()
{
    return std::make_unique<StepEngine>();
}

} // namespace cadex::step
