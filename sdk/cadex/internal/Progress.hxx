// How far a reading, meshing or writing of the open engine is, and its end before the end. A program listens
// for the time of one import or export:
//
//     ProgressListening listening([&](ProgressStage stage, double fraction) {
//         bar.Show(stage, fraction);
//         return !bar.IsCancelPressed();       // false cancels
//     });
//     bool ok = reader.ReadFile(name) && reader.Transfer(model);
//     mesher.Compute(model);
//     if (listening.IsCancelled()) ...          // drop the model: its meshes are not whole
//
// A cancelled reader or writer gives false, leaves no file, and its one report is "cancelled". A cancelled
// mesher, which has no result, leaves parts without meshes. All later calls fail at once while the same
// program listens.
//
// The commercial SDK has no such header: guard its use with __has_include(<cadex/internal/Progress.hxx>).
#pragma once

#include <cadex/Base_Export.hxx>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

namespace cadex {
namespace internal {

enum class ProgressStage
{
    Reading,  ///< the file is read and understood
    Building, ///< the model is made of what was read
    Meshing,
    Writing
};

struct ProgressState;

/// Installs a listener for the process until it is destroyed; one that was installed before has a pause. The
/// listener is called on the thread that installed it, and only from there, when a stage begins and then not
/// more often than the interval, with the fraction (0 to 1) of the stage that is done. It answers whether to
/// go on; an exception of its own cancels. It must not start another import or export.
class CADEX_EXPORT ProgressListening
{
public:
    using Listener = std::function<bool(ProgressStage stage, double fraction)>;

    explicit ProgressListening(Listener listener,
                               std::chrono::milliseconds interval = std::chrono::milliseconds(50));
    ~ProgressListening();
    ProgressListening(const ProgressListening&) = delete;
    ProgressListening& operator=(const ProgressListening&) = delete;

    bool IsCancelled() const;

private:
    std::unique_ptr<ProgressState> myState;
};

/// The engines' side. A check costs an atomic load while nobody listens and a look at the clock otherwise: a
/// body, a face or some thousand triangles are the right step. All calls are harmless on any thread.
class CADEX_EXPORT Progress
{
public:
    /// Says that `done` of `count` equal steps of the present range are behind; false once the work is to
    /// end.
    static bool GoesOn(std::size_t done, std::size_t count);
    /// The same where no step is known.
    static bool GoesOn();
    static bool IsCancelled();
    /// Whether it is cancelled; the one report is then that it was, whatever else failed on the way out.
    static bool ReportCancel() noexcept;
};

/// Makes steps that follow count within a part of the present range, or within a stage of their own:
///
///     for (std::size_t i = 0; i < parts.size() && Progress::GoesOn(i, parts.size()); ++i) {
///         const ProgressRange part(i, parts.size());
///         Write(parts[i]);                      // counts its own steps
///     }
class CADEX_EXPORT ProgressRange
{
public:
    explicit ProgressRange(ProgressStage stage);
    /// Step `step` of `count` equal ones.
    ProgressRange(std::size_t step, std::size_t count);
    ~ProgressRange();
    ProgressRange(const ProgressRange&) = delete;
    ProgressRange& operator=(const ProgressRange&) = delete;

private:
    ProgressState* myState; // whose range was changed; null where nobody listens on this thread
    double myLow = 0;       // the range before
    double myHigh = 1;
};

} // namespace internal
} // namespace cadex
