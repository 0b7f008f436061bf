#include "sdk/occt/EngineScope.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <IGESControl_Controller.hxx>
#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_SequenceOfPrinters.hxx>
#include <OSD.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>

#include "sdk/occt/FlatHealing.h"

#include <cadex/internal/Reports.hxx>

namespace cadex::occt {
namespace {

struct Setting
{
    const char* name;
    const char* value;
};

// NOTE: what the engine relies on when it reads or writes; the names are those of OpenCASCADE's user guides
// of the IGES processor. Everything else keeps OpenCASCADE's default.
constexpr Setting ExchangeSettings[] = {
    {"xstep.cascade.unit", "MM"},        {"read.precision.mode", "0"},     {"read.maxprecision.mode", "0"},
    {"read.stdsameparameter.mode", "0"}, {"read.surfacecurve.mode", "0"},  {"read.iges.onlyvisible", "0"},
    {"read.iges.faulty.entities", "0"},  {"write.surfacecurve.mode", "1"}, {"write.iges.brep.mode", "0"},
    {"write.iges.unit", "MM"},
};

std::recursive_mutex& EngineLock()
{
    static std::recursive_mutex lock;
    return lock;
}

// The settings as they were before the outermost guard, in the order in which they were changed.
std::vector<std::pair<std::string, std::string>>* savedSettings = nullptr;
int depth = 0;

// The controller takes a millisecond or more, so it is initialised when it is needed.
void InitialiseController(EngineUse use)
{
    static std::once_flag iges;
    if (use == EngineUse::Iges) {
        std::call_once(iges, [] { IGESControl_Controller::Init(); });
    }
}

// Faults of the processor become jumps to the nearest OCC_CATCH_SIGNALS. The handlers run on a stack of their
// own, so that running out of stack is one more fault instead of the end of the process.
class FaultHandlers
{
public:
    FaultHandlers()
    {
        for (std::size_t i = 0; i < std::size(Touched); ++i) {
            sigaction(Touched[i], nullptr, &mySaved[i]);
        }
        mySavedMode = OSD::SignalMode();
        OSD::SetSignal(false);
        // Interrupts and hang-ups stay the host's.
        for (std::size_t i = FaultCount; i < std::size(Touched); ++i) {
            sigaction(Touched[i], &mySaved[i], nullptr);
        }
        UseOwnStack();
    }

    ~FaultHandlers()
    {
        OSD::SetSignal(mySavedMode, false);
        for (std::size_t i = 0; i < std::size(Touched); ++i) {
            sigaction(Touched[i], &mySaved[i], nullptr);
        }
        if (myStack) {
            sigaltstack(&mySavedStack, nullptr);
        }
    }

    FaultHandlers(const FaultHandlers&) = delete;
    FaultHandlers& operator=(const FaultHandlers&) = delete;

private:
    static constexpr int Touched[] = {SIGSEGV, SIGBUS, SIGILL,  SIGFPE,  SIGSYS,
                                      SIGHUP,  SIGINT, SIGQUIT, SIGPIPE, SIGTERM};
    static constexpr std::size_t FaultCount = 5;
    static constexpr std::size_t StackSize = 256 * 1024;

    void UseOwnStack()
    {
        myStack.reset(static_cast<char*>(std::malloc(StackSize)));
        stack_t stack = {};
        stack.ss_sp = myStack.get();
        stack.ss_size = StackSize;
        if (!myStack || sigaltstack(&stack, &mySavedStack) != 0) {
            myStack.reset();
            return;
        }
        for (std::size_t i = 0; i < FaultCount; ++i) {
            struct sigaction action = {};
            sigaction(Touched[i], nullptr, &action);
            action.sa_flags |= SA_ONSTACK;
            sigaction(Touched[i], &action, nullptr);
        }
    }

    struct Free
    {
        void operator()(char* memory) const { std::free(memory); }
    };

    std::array<struct sigaction, std::size(Touched)> mySaved = {};
    OSD_SignalMode mySavedMode = OSD_SignalMode_AsIs;
    std::unique_ptr<char, Free> myStack;
    stack_t mySavedStack = {};
};

class Silence
{
public:
    Silence() : mySaved(Message::DefaultMessenger()->Printers())
    {
        Message::DefaultMessenger()->ChangePrinters().Clear();
    }
    ~Silence() { Message::DefaultMessenger()->ChangePrinters() = mySaved; }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    const Message_SequenceOfPrinters mySaved;
};

class Settings
{
public:
    explicit Settings(EngineUse use)
    {
        savedSettings = &mySaved;
        if (use != EngineUse::Geometry) {
            InitialiseController(use);
            for (const Setting& setting : ExchangeSettings) {
                SetEngineSetting(setting.name, setting.value);
            }
            myHealing.emplace();
        }
    }
    ~Settings()
    {
        while (!mySaved.empty()) {
            Interface_Static::SetCVal(mySaved.back().first.c_str(), mySaved.back().second.c_str());
            mySaved.pop_back();
        }
        savedSettings = nullptr;
    }
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

private:
    std::vector<std::pair<std::string, std::string>> mySaved;
    std::optional<FlatHealing> myHealing;
};

void Tell(const char* reason)
{
    internal::Reports::Add(internal::Report::Kind::LeftOut,
                           std::string("what failed in the geometry kernel: ") + reason);
}

// A fault jumps back into this frame past everything below it, so it holds nothing that has a destructor.
bool CatchFaults(const std::function<bool()>& work)
{
    try {
        OCC_CATCH_SIGNALS
        return work();
    } catch (const Standard_Failure& failure) {
        const char* text = failure.GetMessageString();
        Tell(text != nullptr && *text != 0 ? text : failure.DynamicType()->Name());
    } catch (const std::bad_alloc&) {
        Tell("there is not enough memory");
    } catch (const std::exception& error) {
        Tell(error.what());
    } catch (...) {
        Tell("unknown");
    }
    return false;
}

class Depth
{
public:
    Depth() { ++depth; }
    ~Depth() { --depth; }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;
};

} // namespace

bool RunGuarded(EngineUse use, const std::function<bool()>& work) noexcept
{
    try {
        const std::lock_guard<std::recursive_mutex> lock(EngineLock());
        const Depth nesting;
        if (depth > 1) {
            InitialiseController(use);
            return CatchFaults(work);
        }
        const Silence silence;
        const Settings settings(use);
        const FaultHandlers handlers;
        return CatchFaults(work);
    } catch (const Standard_Failure&) {
        return false;
    } catch (...) {
        return false;
    }
}

bool SetEngineSetting(const char* name, const char* value)
{
    if (!Interface_Static::IsPresent(name)) {
        return false;
    }
    const char* before = Interface_Static::CVal(name);
    std::string saved = before != nullptr ? before : "";
    if (!Interface_Static::SetCVal(name, value)) {
        return false;
    }
    if (savedSettings != nullptr) {
        savedSettings->emplace_back(name, std::move(saved));
    }
    return true;
}

bool SetEngineSetting(const char* name, int value)
{
    return SetEngineSetting(name, std::to_string(value).c_str());
}

} // namespace cadex::occt
