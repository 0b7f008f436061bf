#include <cadex/Base_Reader.hxx>
#include <cadex/Base_Writer.hxx>

#include <algorithm>
#include <deque>
#include <exception>
#include <new>
#include <string>
#include <unordered_set>
#include <utility>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/model/Elements.h"
#include "sdk/model/EngineRegistry.h"

namespace cadex {

namespace {

void ReportRefusal(const char* reason) noexcept
{
    try {
        internal::Reports::Add(internal::Report::Kind::Refused, reason);
    } catch (...) { // NOLINT(bugprone-empty-catch): without memory for the reason it is not told
    }
}

template <typename Call>
bool Caught(const Call& call) noexcept
{
    try {
        return call();
    } catch (const std::bad_alloc&) {
        ReportRefusal("there is not enough memory");
    } catch (const std::exception& error) {
        ReportRefusal(error.what());
    } catch (...) {
        ReportRefusal("the engine failed in an unknown way");
    }
    return false;
}

/// Runs a call into an engine as a stage; whatever it throws is a failure, and so is a cancelled one.
template <typename Call>
bool Guarded(internal::ProgressStage stage, Call call) noexcept
{
    const internal::ProgressRange range(stage);
    const bool isDone = !internal::Progress::IsCancelled() && Caught(call);
    if (!isDone && !internal::Reports::Have(internal::Report::Kind::Refused)) {
        ReportRefusal("the engine gave up"); // what it gave up at is reported as left out
    }
    return !internal::Progress::ReportCancel() && isDone;
}

/// A fresh engine; null, which is reported, when this build has none for the format.
template <typename Factory>
auto Made(const Factory& factory)
{
    auto engine = factory ? factory() : nullptr;
    if (engine == nullptr) {
        ReportRefusal("this build has no engine for the format");
    }
    return engine;
}

bool InRange(internal::Format format)
{
    return format > internal::Format::None && static_cast<int>(format) < internal::FormatCount;
}

Base_UTF16String TextOf(const std::filesystem::path& path)
{
    return Base_UTF16String(reinterpret_cast<const char*>(path.u8string().c_str()));
}

/// Looks for a part with a shape; what several instances share is looked through once.
class ShapeSearch : public ModelData_Model::VoidElementVisitor
{
public:
    void operator()(const ModelData_Part& part) override
    {
        const ModelData_PolyRepresentation mesh = part.PolyRepresentation(ModelData_RM_Any);
        isFound = isFound || !part.BRepRepresentation().IsNull() || (!mesh.IsNull() && mesh.Get().Size() > 0);
    }
    bool VisitEnter(const ModelData_Assembly& assembly) override
    {
        return !isFound && mySeen.insert(assembly.Impl()).second;
    }
    bool VisitEnter(const ModelData_Instance&) override { return !isFound; }

    bool isFound = false;

private:
    std::unordered_set<const void*> mySeen;
};

using Roots = std::deque<ModelData_SceneGraphElement>;

/// Nothing is no success: roots without a shape are sound only when nothing was lost on the way.
bool HasLostAll(const Roots& roots, std::size_t first)
{
    if (!internal::Reports::Have(internal::Report::Kind::LeftOut)) {
        return false;
    }
    ShapeSearch search;
    for (std::size_t i = first; i < roots.size() && !search.isFound; ++i) {
        roots[i].Accept(search);
    }
    return !search.isFound;
}

} // namespace

Base_Reader::Base_Reader(internal::Format theFormat) : myFormat(theFormat) {}

Base_Reader::~Base_Reader() = default;

bool Base_Reader::ReadFile(const Base_UTF16String& theFileName)
{
    myEngine.reset();
    internal::Reports::Clear();
    return Guarded(internal::ProgressStage::Reading, [&] {
        const internal::ReaderFactory& factory = internal::EngineRegistry::Instance().Reader(myFormat);
        const std::filesystem::path path = internal::PathOf(theFileName);
        auto engine = Made(factory);
        if (engine == nullptr || !engine->ReadFile(path, BaseParameters()) ||
            internal::Progress::IsCancelled()) {
            return false;
        }
        myBaseName = TextOf(path.stem());
        myEngine = std::move(engine);
        return true;
    });
}

bool Base_Reader::ReadFile(std::istream& theStream)
{
    myEngine.reset();
    internal::Reports::Clear();
    return Guarded(internal::ProgressStage::Reading, [&] {
        const internal::ReaderFactory& factory = internal::EngineRegistry::Instance().Reader(myFormat);
        auto engine = Made(factory);
        if (engine == nullptr || !engine->ReadStream(theStream, BaseParameters()) ||
            internal::Progress::IsCancelled()) {
            return false;
        }
        myBaseName.Clear();
        myEngine = std::move(engine);
        return true;
    });
}

bool Base_Reader::Transfer(ModelData_Model& theModel)
{
    const std::size_t before = internal::RootsOf(theModel).size();
    const bool isDone = Guarded(internal::ProgressStage::Building, [&] {
        if (myEngine == nullptr || !myEngine->Transfer(theModel)) {
            return false;
        }
        if (HasLostAll(internal::RootsOf(theModel), before)) {
            ReportRefusal("nothing in the file can be shown");
            return false;
        }
        if (theModel.Name().IsEmpty()) {
            theModel.SetName(myBaseName);
        }
        return true;
    });
    if (!isDone) {
        Roots& roots = static_cast<internal::ModelImpl*>(theModel.Impl())->roots;
        roots.resize(std::min(before, roots.size()));
    }
    return isDone;
}

Base_Writer::Base_Writer(internal::Format theFormat) : myFormat(theFormat) {}

Base_Writer::~Base_Writer() = default;

// An export begins here: what it reports must outlast the writing of the file.
bool Base_Writer::Transfer(const ModelData_Model& theModel)
{
    myEngine.reset();
    internal::Reports::Clear();
    return Guarded(internal::ProgressStage::Writing, [&] {
        const internal::WriterFactory& factory = internal::EngineRegistry::Instance().Writer(myFormat);
        auto engine = Made(factory);
        if (engine == nullptr || !engine->Transfer(theModel, BaseParameters())) {
            return false;
        }
        myEngine = std::move(engine);
        return true;
    });
}

bool Base_Writer::WriteFile(const Base_UTF16String& theFileName)
{
    return Guarded(internal::ProgressStage::Writing,
                   [&] { return myEngine != nullptr && myEngine->WriteFile(internal::PathOf(theFileName)); });
}

bool Base_Writer::WriteFile(std::ostream& theStream)
{
    return Guarded(internal::ProgressStage::Writing,
                   [&] { return myEngine != nullptr && myEngine->WriteStream(theStream); });
}

namespace internal {

EngineRegistry& EngineRegistry::Instance()
{
    static EngineRegistry registry = [] {
        EngineRegistry filled;
        RegisterEngines(filled);
        return filled;
    }();
    return registry;
}

ReaderFactory EngineRegistry::SetReader(Format format, ReaderFactory factory)
{
    return InRange(format) ? std::exchange(myReaders[static_cast<std::size_t>(format)], std::move(factory))
                           : ReaderFactory();
}

WriterFactory EngineRegistry::SetWriter(Format format, WriterFactory factory)
{
    return InRange(format) ? std::exchange(myWriters[static_cast<std::size_t>(format)], std::move(factory))
                           : WriterFactory();
}

// Slot 0 belongs to no format and stays empty.
const ReaderFactory& EngineRegistry::Reader(Format format) const
{
    return myReaders[InRange(format) ? static_cast<std::size_t>(format) : 0];
}

const WriterFactory& EngineRegistry::Writer(Format format) const
{
    return myWriters[InRange(format) ? static_cast<std::size_t>(format) : 0];
}

bool CanRead(Format format)
{
    return static_cast<bool>(EngineRegistry::Instance().Reader(format));
}

bool CanWrite(Format format)
{
    return static_cast<bool>(EngineRegistry::Instance().Writer(format));
}

std::filesystem::path PathOf(const Base_UTF16String& text)
{
    const std::string utf8 = text.ToUTF8();
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

} // namespace internal
} // namespace cadex
