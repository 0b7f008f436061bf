// The arguments of one record, read from left to right.
//
//     Cursor arguments = text.Arguments(point);       // #12=CARTESIAN_POINT('',(0.,0.,12.5));
//     arguments.Skip();
//     double xyz[3];
//     bool ok = arguments.Reals(xyz, 3);
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace cadex::part21 {

/// Number of a record in the file (#123); 0 is no record.
using RecordId = std::uint64_t;

/// A read of the wrong kind gives an empty value and passes the argument; running past the end, what is not
/// well-formed, and anything else than a number where a number is asked for mark the cursor as failed.
/// Nothing throws.
class Cursor
{
public:
    Cursor() = default;
    /// Stands before the first argument: `position` is behind the opening parenthesis.
    Cursor(const char* position, const char* end) : myPosition(position), myEnd(end) {}
    /// The arguments of such a text, separated by commas.
    explicit Cursor(std::string_view text) : Cursor(text.data(), text.data() + text.size()) {}

    /// Enters the list that is the next argument. After it Leave skips what is left of it.
    bool EnterList();
    void Leave();
    /// Enters a value with a type name, LENGTH_MEASURE(3.5), and gives the name; empty when the next argument
    /// has none.
    std::string_view EnterTyped();
    /// True while the list or record entered last has another argument.
    bool More();
    void Skip();
    /// The next argument as it stands, without the blanks around it.
    std::string_view Raw();

    /// The next argument as a reference (0 for $ and everything else), a number, a text or an enumerator
    /// without its points. The text is without its quotes and raw: see DecodeString.
    RecordId Reference();
    double Real();
    std::int64_t Integer();
    std::string_view String();
    std::string_view Enumerator();
    /// Fills the references of a list; anything else in it is left out.
    void References(std::vector<RecordId>& ids);
    std::vector<RecordId> References()
    {
        std::vector<RecordId> ids;
        References(ids);
        return ids;
    }
    /// Fills up to `count` numbers of a list; false when there are fewer.
    bool Reals(double* values, int count);
    /// Appends all numbers of the next argument, a number or a list of them, nested ones flattened. Stops at
    /// the first thing that is no number.
    void AppendReals(std::vector<double>& values);

    /// What kind the next argument is.
    enum class Kind
    {
        None,    ///< no further argument, or not well-formed
        Omitted, ///< $ or *
        Reference,
        Integer,
        Real,
        String,
        Enumerator,
        Typed,
        List,
        Binary
    };
    Kind Next();

    bool Failed() const { return myFailed; }

private:
    void SkipBlank();
    void Separate();
    bool IsNumber();
    const char* BehindNext();

    const char* myPosition = nullptr;
    const char* myEnd = nullptr;
    bool myFailed = false;
};

} // namespace cadex::part21
