// What the open engine refused, left out or repaired while it read or wrote the last file, and why. The
// library's own messages say that a file failed; these say what the engine knows about it.
//
//     reader.ReadFile(name); reader.Transfer(model); mesher.Compute(model);
//     for (const Report& report : Reports::Take()) { ... report.text ... }
//
// Base_Reader::ReadFile and Base_Writer::Transfer begin a new list.
//
// The commercial SDK has no such header: guard its use with __has_include(<cadex/internal/Reports.hxx>).
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace cadex {
namespace internal {

struct CADEX_EXPORT Report
{
    enum class Kind
    {
        Refused,  ///< the file as a whole
        LeftOut,  ///< a body, face, curve, style ... that is missing from the result
        Repaired, ///< taken in another way than the file gives it
        Noted
    };
    Kind kind = Kind::Noted;
    std::string text;         ///< UTF-8, one line, without control characters
    std::uint64_t record = 0; ///< number of the record in the file; 0 when there is none
    std::size_t count = 1;    ///< how often the same kind and text came, with the record of the first
};

/// One list for the process, guarded by a lock of its own: engines add from any thread. It holds at most a
/// thousand different reports; equal kinds and texts are counted, not repeated.
class CADEX_EXPORT Reports
{
public:
    static void Add(Report::Kind kind, std::string text, std::uint64_t record = 0);
    static void Clear();
    /// Whether something of this kind came since the last Clear or Take.
    static bool Have(Report::Kind kind);
    /// Everything since the last Clear or Take, in the order in which it first came.
    static std::vector<Report> Take();
};

} // namespace internal
} // namespace cadex
