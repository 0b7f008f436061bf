#include "sdk/iges/IgesReaderEngine.h"

#include <string>

#include <IGESControl_Reader.hxx>
#include <Interface_InterfaceModel.hxx>

#include <cadex/internal/Reports.hxx>

#include "sdk/iges/IgesModelBuilder.h"
#include "sdk/iges/IgesText.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/text/FileBytes.h"

namespace cadex::iges {

using internal::Report;
using internal::Reports;
using occt::EngineUse;
using occt::RunGuarded;
using text::StemOf;
namespace {

class IgesEngine : public internal::ReaderEngine
{
public:
    ~IgesEngine() override
    {
        // The kernel's entities are destroyed under the guard they were made under.
        RunGuarded(EngineUse::Iges, [this] {
            myReader.reset();
            return true;
        });
    }

    bool ReadFile(const std::filesystem::path& file, const Base_ReaderParameters&) override
    {
        myFindings = LookAt(file);
        if (!myFindings.isIges) {
            Reports::Add(Report::Kind::Refused, "the file is no IGES file");
            return false;
        }
        Tell();
        myFileName = StemOf(file);
        return RunGuarded(EngineUse::Iges, [&] {
            myReader = std::make_unique<IGESControl_Reader>();
            if (myReader->ReadFile(file.string().c_str()) != IFSelect_RetDone ||
                myReader->Model()->NbEntities() == 0) {
                Reports::Add(Report::Kind::Refused, "no entity of the IGES file can be read");
                return false;
            }
            return true;
        });
    }

    bool Transfer(ModelData_Model& model) override
    {
        return myReader != nullptr && RunGuarded(EngineUse::Iges, [&] {
                   if (BuildIgesModel(*myReader, myFindings, myFileName, model)) {
                       return true;
                   }
                   Reports::Add(Report::Kind::Refused, "nothing in the file can be shown");
                   return false;
               });
    }

private:
    void Tell() const
    {
        if (!myFindings.isWhole) {
            Reports::Add(Report::Kind::LeftOut,
                         "the file is cut off, or its lines are not as many as it says");
        }
        if (myFindings.bare > 0) {
            Reports::Add(Report::Kind::LeftOut, std::to_string(myFindings.bare) + " of " +
                                                    std::to_string(myFindings.entities) +
                                                    " entities have no parameters");
        }
    }

    Base_UTF16String myFileName;
    Findings myFindings;
    std::unique_ptr<IGESControl_Reader> myReader;
};

} // namespace

std::unique_ptr<internal::ReaderEngine> MakeIgesEngine()
{
    return std::make_unique<IgesEngine>();
}

} // namespace cadex::iges
