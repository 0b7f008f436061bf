#include <cadex/ModelData_PropertyTable.hxx>

#include <variant>
#include <vector>

namespace cadex {

namespace {

using Value = std::variant<I32, I64, float, double, ModelData_PropertyTable::TimeType, Base_UTF16String,
                           ModelData_Point, ModelData_Box>;

struct Entry
{
    Base_UTF16String name;
    Value value;
};

class TableImpl : public internal::ObjectImpl
{
public:
    TableImpl() : ObjectImpl(internal::TypePropertyTable) {}

    std::vector<Entry> entries;
};

TableImpl& Ensure(ModelData_PropertyTable& table)
{
    if (table.IsNull()) {
        table.SetImpl(new TableImpl);
    }
    return *static_cast<TableImpl*>(table.Impl());
}

template <typename T>
void Append(ModelData_PropertyTable& table, const Base_UTF16String& name, const T& value)
{
    Ensure(table).entries.push_back({name, Value(std::in_place_type<T>, value)});
}

} // namespace

ModelData_PropertyTable::ModelData_PropertyTable(initialized)
{
    SetImpl(new TableImpl);
}

void ModelData_PropertyTable::Add(const Base_UTF16String& theName, I32 theValue)
{
    Append(*this, theName, theValue);
}

void ModelData_PropertyTable::Add(const Base_UTF16String& theName, I64 theValue)
{
    Append(*this, theName, theValue);
}

void ModelData_PropertyTable::Add(const Base_UTF16String& theName, float theValue)
{
    Append(*this, theName, theValue);
}

void ModelData_PropertyTable::Add(const Base_UTF16String& theName, double theValue)
{
    Append(*this, theName, theValue);
}

void ModelData_PropertyTable::Add(const Base_UTF16String& theName, TimeType theValue)
{
    Append(*this, theName, theValue);
}

void ModelData_PropertyTable::Add(const Base_UTF16String& theName, const Base_UTF16String& theValue)
{
    Append(*this, theName, theValue);
}

void ModelData_PropertyTable::Add(const Base_UTF16String& theName, const ModelData_Point& theValue)
{
    Append(*this, theName, theValue);
}

void ModelData_PropertyTable::Add(const Base_UTF16String& theName, const ModelData_Box& theValue)
{
    Append(*this, theName, theValue);
}

void ModelData_PropertyTable::Add(const ModelData_PropertyTable& theTable)
{
    if (!theTable.IsNull()) {
        const std::vector<Entry> other =
            static_cast<const TableImpl*>(theTable.Impl())->entries; // may be this one
        auto& own = Ensure(*this).entries;
        own.insert(own.end(), other.begin(), other.end());
    }
}

std::size_t ModelData_PropertyTable::Size() const
{
    return IsNull() ? 0 : static_cast<const TableImpl*>(Impl())->entries.size();
}

void ModelData_PropertyTable::Accept(Visitor& theVisitor) const
{
    if (IsNull()) {
        return;
    }
    for (const Entry& entry : static_cast<const TableImpl*>(Impl())->entries) {
        std::visit([&](const auto& value) { theVisitor(entry.name, value); }, entry.value);
    }
}

} // namespace cadex
