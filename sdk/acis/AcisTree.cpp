#include "sdk/acis/AcisTree.h"

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/acis/AcisBinary.h"
#include "sdk/acis/AcisBodies.h"
#include "sdk/brep/DescribedPart.h"
#include "sdk/text/PlainText.h"

namespace cadex::acis {

namespace {

using internal::Report;
using internal::Reports;

void AddText(ModelData_PropertyTable& table, const char* key, std::string_view value)
{
    const Base_UTF16String decoded = text::DecodePlainString(value);
    if (!decoded.IsEmpty()) {
        table.Add(key, decoded);
    }
}

/// Null, and a report, where nothing is left of the body.
ModelData_Part MakePart(FileBody& body, const Base_UTF16String& name)
{
    for (std::size_t i = 0; i < body.lostFaces; ++i) {
        Reports::Add(Report::Kind::LeftOut, "a face that could not be read");
    }
    return brep::MakePart(std::move(body.description), name, body.properties);
}

} // namespace

bool AcisFile::Load(std::string bytes, const Base_UTF16String& name)
{
    myRecords.reset();
    myBytes = std::move(bytes);
    myName = name;
    try {
        if (IsBinary(myBytes)) {
            myBytes = TextFromBinary(myBytes);
        }
        myRecords.emplace(myBytes);
    } catch (const Unreadable& reason) {
        Reports::Add(Report::Kind::Refused, reason.what());
        return false;
    }
    return true;
}

void AcisFile::Build(ModelData_Model& model)
{
    if (!myRecords) {
        return;
    }
    const Records& records = *myRecords;
    ModelData_Assembly root(myName);
    std::vector<ModelData_Part> parts; // by body; null: nothing is left of it
    for (FileBody& body : ReadBodies(records)) {
        Base_UTF16String name = body.name;
        if (name.IsEmpty()) {
            name = Base_UTF16String(("Body " + std::to_string(parts.size() + 1)).c_str());
        }
        parts.push_back(body.twin ? parts[*body.twin] : MakePart(body, name));
        if (parts.back().IsNull()) {
            continue;
        }
        root.AddInstance(body.placement
                             ? ModelData_Instance(parts.back(), brep::TransformationOf(*body.placement), name)
                             : ModelData_Instance(parts.back(), name));
    }
    ModelData_PropertyTable table{initialized()};
    AddText(table, "Application", records.Head().product);
    AddText(table, "Kernel", records.Head().kernel);
    AddText(table, "Date", records.Head().date);
    root.AddProperties(table);
    model.AddRoot(root);
}

} // namespace cadex::acis
