// An engine double for every format: what an import asks of the SDK is written down, and the test says what
// comes back. The engines of the build are put back at the end.
#pragma once

#include "cadexchange/CZemtarCADExchangeReader.h"
#include "host/CZemtarDocument.h"
#include "sdk/model/EngineRegistry.h"

#include <cadex/Base_Settings.hxx>
#include <cadex/ModelData_SceneGraphElement.hxx>
#include <cadex/STEP_ReaderParameters.hxx>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Zemtar::Test {

inline bool IsParallel()
{
    return cadex::Base_Settings::Default()->BoolValue(cadex::Base_Settings::ConcurrentMode, true);
}

class RecordingEngines
{
public:
    std::vector<std::string> calls; ///< "10 read pump.step serial All", "10 transfer serial", "10 released"
    std::function<bool(const std::filesystem::path&)> read = [](const auto&) { return true; };
    std::function<bool(cadex::ModelData_Model&)> transfer = [](auto&) { return true; };

    RecordingEngines()
    {
        for (int i = 0; i < cadex::internal::FormatCount; ++i) {
            m_before.push_back(Set(i, [this, i] { return std::make_unique<Engine>(*this, i); }));
        }
    }
    ~RecordingEngines()
    {
        for (int i = 0; i < cadex::internal::FormatCount; ++i) {
            Set(i, m_before[static_cast<std::size_t>(i)]);
        }
    }

private:
    class Engine : public cadex::internal::ReaderEngine
    {
    public:
        Engine(RecordingEngines& owner, int format) : m_owner(owner), m_format(format) {}
        ~Engine() override { m_owner.calls.push_back(std::to_string(m_format) + " released"); }
        bool ReadFile(const std::filesystem::path& file,
                      const cadex::Base_ReaderParameters& parameters) override
        {
            const auto* step = dynamic_cast<const cadex::STEP_ReaderParameters*>(&parameters);
            const bool all =
                step && step->PreferredBRepRepresentationType() == cadex::STEP_ReaderParameters::All;
            Record("read " + file.filename().string(), all ? " All" : "");
            return m_owner.read(file);
        }
        bool Transfer(cadex::ModelData_Model& model) override
        {
            Record("transfer", "");
            return m_owner.transfer(model);
        }

    private:
        void Record(const std::string& call, const char* more)
        {
            m_owner.calls.push_back(std::to_string(m_format) + " " + call +
                                    (IsParallel() ? " parallel" : " serial") + more);
        }
        RecordingEngines& m_owner;
        int m_format;
    };

    static cadex::internal::ReaderFactory Set(int format, cadex::internal::ReaderFactory factory)
    {
        return cadex::internal::EngineRegistry::Instance().SetReader(
            static_cast<cadex::internal::Format>(format), std::move(factory));
    }
    std::vector<cadex::internal::ReaderFactory> m_before;
};

/// What the importer makes of a model with these roots.
inline std::unique_ptr<CZemtarDocument>
ImportModel(const std::vector<cadex::ModelData_SceneGraphElement>& roots)
{
    RecordingEngines engines;
    engines.transfer = [&](cadex::ModelData_Model& model) {
        for (const auto& root : roots) {
            model.AddRoot(root);
        }
        return true;
    };
    CZemtarCADExchangeReader reader;
    reader.SetCADReaderType(CZemtarCADExchangeReader::eReaderJT);
    return std::unique_ptr<CZemtarDocument>(reader.Import("/no/such/model.x"));
}

} // namespace Zemtar::Test
