// An end to kernel algorithms that might run for ever on damaged geometry.
//
//     const Handle(Deadline) deadline = new Deadline(10);
//     BRepMesh_IncrementalMesh mesher(shape, parameters, deadline->Start());
#pragma once

#include <ctime>

#include <Message_ProgressIndicator.hxx>

#include <cadex/internal/Progress.hxx>

namespace cadex::occt {

/// Breaks the kernel off when the process has used that much processor time, or the user has cancelled.
class Deadline : public Message_ProgressIndicator
{
public:
    explicit Deadline(double seconds)
        : myEnd(std::clock() + static_cast<std::clock_t>(seconds * CLOCKS_PER_SEC))
    {
    }

    bool IsPassed() const { return std::clock() > myEnd || !internal::Progress::GoesOn(); }

protected:
    Standard_Boolean UserBreak() override { return IsPassed(); }
    void Show(const Message_ProgressScope&, const Standard_Boolean) override {}

private:
    const std::clock_t myEnd;
};

} // namespace cadex::occt
