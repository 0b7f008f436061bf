// Base of every writer's parameters.
//
//     writer.Parameters().LengthUnit() = Base_LU_Inches;
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/Base_LengthUnit.hxx>
#include <cadex/Base_UTF16String.hxx>

namespace cadex {

class CADEX_EXPORT Base_WriterParameters
{
public:
    virtual ~Base_WriterParameters() = default;

    /// Unit in which the file's lengths are written; the geometry keeps its size.
    Base_LengthUnit LengthUnit() const { return myLengthUnit; }
    Base_LengthUnit& LengthUnit() { return myLengthUnit; }

    /// Header data of the file, where the format has a place for it; empty by default.
    const Base_UTF16String& Author() const { return myAuthor; }
    Base_UTF16String& Author() { return myAuthor; }
    const Base_UTF16String& Organization() const { return myOrganization; }
    Base_UTF16String& Organization() { return myOrganization; }
    const Base_UTF16String& OriginatingSystem() const { return myOriginatingSystem; }
    Base_UTF16String& OriginatingSystem() { return myOriginatingSystem; }

protected:
    Base_WriterParameters() = default;
    Base_WriterParameters(const Base_WriterParameters&) = default;
    Base_WriterParameters& operator=(const Base_WriterParameters&) = default;

private:
    Base_LengthUnit myLengthUnit = Base_LU_Millimeters;
    Base_UTF16String myAuthor;
    Base_UTF16String myOrganization;
    Base_UTF16String myOriginatingSystem;
};

} // namespace cadex
