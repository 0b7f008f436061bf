// How deep geometry may be made of other geometry.
#pragma once

#include "sdk/step/StepGeometryReader.h"

namespace cadex::step {

/// Counts one level while it lives. Throws Damaged beyond what a sound file has: records that lead to
/// themselves, or chains that would overflow the stack.
class StepGeometryReader::Nesting
{
public:
    Nesting(StepGeometryReader& reader, RecordId record) : myReader(reader)
    {
        if (myReader.myDepth >= Maximal) {
            throw Damaged("geometry that is made of itself", record);
        }
        ++myReader.myDepth;
        myReader.CountStep();
    }
    ~Nesting() { --myReader.myDepth; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

private:
    static constexpr int Maximal = 32;

    StepGeometryReader& myReader;
};

} // namespace cadex::step
