// Named values of an element, in order of addition; a name may occur more than once.
//
//     ModelData_PropertyTable table{initialized()};
//     table.Add("Material", Base_UTF16String("Steel"));
//     part.AddProperties(table);
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>
#include <ctime>

#include <cadex/ModelData_BaseObject.hxx>
#include <cadex/ModelData_Box.hxx>
#include <cadex/ModelData_Point.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_PropertyTable : public ModelData_BaseObject
{
public:
    typedef time_t TimeVal;
    /// Seconds since 1970-01-01 UTC.
    struct TimeType
    {
        TimeType(TimeVal theTimeVal) : myValue(theTimeVal) {}
        TimeVal myValue;
    };

    class Visitor
    {
    public:
        virtual ~Visitor() = default;
        virtual void operator()(const Base_UTF16String& theName, I32 theValue) = 0;
        virtual void operator()(const Base_UTF16String& theName, I64 theValue) = 0;
        virtual void operator()(const Base_UTF16String& theName, float theValue) = 0;
        virtual void operator()(const Base_UTF16String& theName, double theValue) = 0;
        virtual void operator()(const Base_UTF16String& theName, TimeType theValue) = 0;
        virtual void operator()(const Base_UTF16String& theName, const Base_UTF16String& theValue) = 0;
        virtual void operator()(const Base_UTF16String& theName, const ModelData_Point& theValue) = 0;
        virtual void operator()(const Base_UTF16String& theName, const ModelData_Box& theValue) = 0;
    };

    ModelData_PropertyTable() = default; ///< null handle
    ModelData_PropertyTable(initialized);

    void Add(const Base_UTF16String& theName, I32 theValue);
    void Add(const Base_UTF16String& theName, I64 theValue);
    void Add(const Base_UTF16String& theName, float theValue);
    void Add(const Base_UTF16String& theName, double theValue);
    void Add(const Base_UTF16String& theName, TimeType theValue);
    void Add(const Base_UTF16String& theName, const Base_UTF16String& theValue);
    void Add(const Base_UTF16String& theName, const ModelData_Point& theValue);
    void Add(const Base_UTF16String& theName, const ModelData_Box& theValue);
    /// Appends copies of the other table's entries.
    void Add(const ModelData_PropertyTable& theTable);

    /// 0 on a null handle.
    std::size_t Size() const;
    bool IsEmpty() const { return Size() == 0; }
    /// Visits the entries in order of addition; none on a null handle.
    void Accept(Visitor& theVisitor) const;

    static IdType GetTypeId() { return internal::TypePropertyTable; }
};

} // namespace cadex
