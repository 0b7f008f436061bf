#include "sdk/step/StepReaderEngine.h"

#include <filesystem>
#include <iterator>
#include <string>
#include <utility>

#include <cadex/STEP_ReaderParameters.hxx>
#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/model/EngineRegistry.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/step/StepBodies.h"
#include "sdk/step/StepFacets.h"
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
        if (BuildStepModel(myContent, *myGeometry, model)) {
            return true;
        }
        internal::Reports::Add(internal::Report::Kind::Refused, "nothing in the file can be shown");
        return false;
    }

private:
    // All is made here, so that the text need not stay.
    bool Read(std::string bytes, const Base_UTF16String& fileName, const Base_ReaderParameters& parameters)
    {
        const auto preferred =
            static_cast<const STEP_ReaderParameters&>(parameters).PreferredBRepRepresentationType();
        ClearText text;
        if (const internal::ProgressRange first(0, 2); !text.Load(std::move(bytes))) {
            return false; // with its reason
        }
        const internal::ProgressRange second(1, 2);
        if (!ReadStepContent(text, fileName, myContent)) {
            return false; // with its reason
        }
        if (auto facets = std::make_unique<StepFacets>(); facets->Read(text, myContent)) {
            myGeometry = std::move(facets);
            return true;
        }
        return RunGuarded(EngineUse::Geometry, [&] {
            auto bodies = std::make_unique<StepBodies>();
            bodies->Read(text, myContent, preferred);
            myContent.hasGeometry = bodies->HasItems();
            myGeometry = std::move(bodies);
            return true;
        });
    }

    StepContent myContent;
    std::unique_ptr<StepGeometry> myGeometry;
};

} // namespace

std::unique_ptr<internal::ReaderEngine> MakeStepEngine()
{
    return std::make_unique<StepEngine>();
}

} // namespace cadex::step
