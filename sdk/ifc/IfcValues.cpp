// Values of arguments: lists, numbers, references, typed values and strings.
#include <limits>

#include "sdk/ifc/IfcFile.h"
#include "sdk/part21/Strings.h"

namespace cadex::ifc {

using part21::Cursor;

ListReader::ListReader(std::string_view list) : myCursor(list)
{
    if (myCursor.EnterTyped().empty() && !myCursor.EnterList()) {
        myCursor = Cursor();
    }
}

bool ListReader::Next(std::string_view& item)
{
    if (!myCursor.More() || myCursor.Failed()) {
        return false;
    }
    item = myCursor.Raw();
    return !myCursor.Failed();
}

void ReadNumbers(std::string_view list, std::vector<double>& numbers)
{
    Cursor(list).AppendReals(numbers);
}

bool ReadNumber(std::string_view text, double& value)
{
    Cursor cursor(text);
    cursor.EnterTyped();
    const double number = cursor.Real();
    value = cursor.Failed() ? value : number;
    return !cursor.Failed();
}

Id ReadReference(std::string_view text)
{
    const part21::RecordId id = Cursor(text).Reference();
    return id > std::numeric_limits<Id>::max() ? 0 : static_cast<Id>(id);
}

TypedValue ReadTyped(std::string_view text)
{
    Cursor cursor(text);
    const std::string_view type = cursor.EnterTyped();
    return type.empty() || cursor.Failed() ? TypedValue{{}, text} : TypedValue{type, cursor.Raw()};
}

Base_UTF16String ReadString(std::string_view quoted)
{
    return part21::DecodeString(Cursor(quoted).String());
}

} // namespace cadex::ifc
