#include "sdk/occt/StepEngine.h"

#include <filesystem>
#include <iterator>
#include <string>
#include <utility>

#include <cadex/STEP_ReaderParameters.hxx>

#include "sdk/model/EngineRegistry.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/occt/FileBytes.h"
#include "sdk/occt/StepFacets.h"
#include "sdk/occt/StepKernel.h"
#include "sdk/occt/StepModelBuilder.h"
#include "sdk/occt/StepStrings.h"
#include "sdk/occt/StepText.h"

namespace cadex {
namespace occt {
namespace {

class StepEngine : public internal::ReaderEngine
{
public:
    ~StepEngine() override
    {
        // The kernel's records are destroyed under the guard they were made under.
        RunGuarded(EngineUse::Exchange, [this] {
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
        return myKernel != nullptr && RunGuarded(EngineUse::Exchange, [&] {
                   return myKernel->Transfer(myContent, myPreferred) &&
                          BuildStepModel(myContent, *myKernel, model);
               });
    }

private:
    bool Read(std::string bytes, Base_UTF16String fileName, const Base_ReaderParameters& parameters)
    {
        myPreferred = static_cast<const STEP_ReaderParameters&>(parameters).PreferredBRepRepresentationType();
        StepText text;
        if (!text.Load(std::move(bytes)) || !myContent.structure.Build(text)) {
            return false;
        }
        AppearanceCache appearances;
        myContent.styles.Read(text, myContent.structure, appearances);
        myContent.properties.Read(text, myContent.structure);
        myContent.header = ReadStepHeader(text);
        myContent.fileName = RootName(text, std::move(fileName));
        myIsFaceted = myFacets.Read(text, myContent);
        if (myIsFaceted) {
            return true;
        }
        myKernel = std::make_unique<StepKernel>();
        return RunGuarded(EngineUse::Exchange, [&] { return myKernel->Read(text); });
    }

    // The name that the file gives itself, without folder and extension, else its name on disk.
    static Base_UTF16String RootName(const StepText& text, Base_UTF16String fileName)
    {
        StepCursor header = text.Header("FILE_NAME");
        std::string_view name = header.String();
        const std::size_t folder = name.find_last_of("/\\");
        if (folder != std::string_view::npos) {
            name.remove_prefix(folder + 1);
        }
        name = name.substr(0, name.rfind('.'));
        return IsBlankText(name) ? std::move(fileName) : DecodeStepString(name);
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

} // namespace occt
} // namespace cadex
