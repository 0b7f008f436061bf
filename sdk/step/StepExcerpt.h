// The part of a STEP file that the kernel needs, in its shortest form.
#pragma once

#include <cstddef>
#include <streambuf>
#include <string_view>
#include <vector>

#include "sdk/step/StepText.h"

namespace cadex::step {

/// Gives the bytes of a STEP file that holds what products, their placements and their shapes refer to, over
/// any number of steps, and nothing else: no properties, styles, annotations, approvals. Blanks, comments and
/// zeros behind numbers are left out, too; the values are the same to the last bit. The kernel, which takes a
/// quarter of an import to scan the text, has less to do, and never sees damaged or too modern records that
/// no shape needs. A text without products is given whole. Made piece by piece as it is read; the text must
/// outlive it.
class StepExcerpt : public std::streambuf
{
public:
    explicit StepExcerpt(const ClearText& text);

    /// True once a record was met that is not well-formed: what was given before it ends there, and whoever
    /// read it must drop it.
    bool IsMalformed() const { return myIsMalformed; }

protected:
    int_type underflow() override;

private:
    void SelectNeeded();
    void Reserve(std::size_t size);
    void Append(std::string_view text);
    void AppendHeader();
    void AppendRecord(const ClearText::Record& record);

    const ClearText& myText;
    std::vector<bool> myNeeded;         // by the place of the record
    std::vector<std::uint32_t> myOrder; // places of the records, in the order of the file
    std::size_t myNext = 0;             // in myOrder
    bool myHasHeader = false;
    bool myHasEnd = false;
    bool myIsMalformed = false;
    std::vector<char> myPiece;
    std::size_t myUsed = 0;
};

} // namespace cadex::step
