// Files that are wrong in one known way, and what the engine leaves behind.
#include <algorithm>
#include <csignal>
#include <functional>
#include <stdexcept>
#include <string>

#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Standard_DomainError.hxx>

#include <gtest/gtest.h>

#include <cadex/internal/Reports.hxx>

#include "sdk/occt/EngineScope.h"
#include "tests/sdk/MeshModels.h"
#include "tests/sdk/ReadModels.h"
#include "tests/sdk/SeedFiles.h"

namespace cadex::test {
namespace {

// Products 10, 20, 30 ... and a use of the second in the first for each pair.
std::string Structure(int products, const std::vector<std::pair<int, int>>& uses)
{
    std::string text =
        "ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n#1=APPLICATION_CONTEXT('');\n"
        "#2=PRODUCT_CONTEXT('',#1,'mechanical');\n#3=PRODUCT_DEFINITION_CONTEXT('',#1,'design');\n";
    for (int i = 1; i <= products; ++i) {
        const auto id = [i](int k) { return "#" + std::to_string(10 * i + k); };
        text += id(0) + "=PRODUCT('p','p','',(#2));\n" + id(1) + "=PRODUCT_DEFINITION_FORMATION('',''," +
                id(0) + ");\n" + id(2) + "=PRODUCT_DEFINITION('',''," + id(1) + ",#3);\n";
    }
    int next = 10 * products + 10;
    for (const auto& [parent, child] : uses) {
        text += "#" + std::to_string(next++) + "=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#" +
                std::to_string(10 * parent + 2) + ",#" + std::to_string(10 * child + 2) + ",$);\n";
    }
    return text + "ENDSEC;\nEND-ISO-10303-21;\n";
}

std::string Chain(int length, int usesOfEach)
{
    std::vector<std::pair<int, int>> uses;
    for (int i = 1; i < length; ++i) {
        uses.insert(uses.end(), static_cast<std::size_t>(usesOfEach), {i, i + 1});
    }
    return Structure(length, uses);
}

std::string Replaced(std::string text, const std::string& what, const std::string& with)
{
    const std::size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

std::string WithoutLines(const std::string& text, char section)
{
    std::istringstream lines(text);
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
        kept += line.size() > 72 && line[72] == section ? "" : line + "\n";
    }
    return kept;
}

} // namespace

TEST(BadFiles, AreRefusedAndTheNextIsRead)
{
    const std::string step = StepSeeds()[1].bytes;
    const std::string iges = IgesSeeds()[0].bytes;
    const struct
    {
        const char* name;
        std::string bytes;
        bool isRead;             ///< what is sound beside the damage
        std::string reason = {}; ///< why the file is refused, where it has one of its own
    } Files[] = {
        {"empty.stp", "", false},
        {"cut.stp", step.substr(0, step.size() / 2), false},
        {"noise.stp", std::string(3000, '\xA7') + '\0', false},
        {"other_text.stp", "solid ascii\nendsolid\n", false},
        {"no_data.stp", "ISO-10303-21;\nHEADER;\nENDSEC;\nEND-ISO-10303-21;\n", false},
        {"nothing_in_it.stp", Structure(0, {}), false},
        {"dangling_reference.stp", Replaced(step, "VERTEX_POINT('',#", "VERTEX_POINT('',#9"), true},
        {"same_number_twice.stp", Replaced(step, "#11 =", "#12 ="), true},
        {"text_without_start.stp", Replaced(step, "ADVANCED_FACE('", "ADVANCED_FACE("), false},
        {"record_in_a_record.stp", Replaced(step, "ADVANCED_FACE('',(", "ADVANCED_FACE('',(#1=X();"), true},
        {"contains_itself.stp", Structure(1, {{1, 1}}), false, "a product contains itself"},
        {"circle.stp", Structure(3, {{1, 2}, {2, 3}, {3, 2}}), false, "a product contains itself"},
        {"circle_without_root.stp", Structure(2, {{1, 2}, {2, 1}}), false, "a product contains itself"},
        {"deep.stp", Chain(900, 1), true},
        {"too_deep.stp", Chain(3000, 1), false, "products are nested too deep"},
        {"a_billion_parts.stp", Chain(40, 2), false, "products are used too many times"},
        {"lists_in_lists.stp",
         Replaced(Structure(1, {}), "ENDSEC;\nEND",
                  "#9=X(" + std::string(100000, '(') + std::string(100000, ')') + ");\nENDSEC;\nEND"),
         true},
        {"noise.igs", std::string(3000, '\xA7'), false},
        {"cut.igs", iges.substr(0, iges.size() / 2), false},
        {"no_terminate_section.igs", WithoutLines(iges, 'T'), true},
        {"no_parameters.igs", WithoutLines(iges, 'P'), false},
    };
    const ScratchFolder folder;
    for (const auto& file : Files) {
        const std::filesystem::path path = folder.Path() / (std::string("\xF0\x9F\x98\x80 ") + file.name);
        WriteBytes(path, file.bytes);
        ModelData_Model model;
        const bool done = Import(path, model);
        EXPECT_EQ(done, file.isRead) << file.name;
        EXPECT_EQ(model.NumberOfRoots() > 0, done) << file.name;
        const auto reports = internal::Reports::Take();
        EXPECT_NE(done, std::any_of(reports.begin(), reports.end(),
                                    [&](const internal::Report& report) {
                                        return report.kind == internal::Report::Kind::Refused &&
                                               (file.reason.empty() || report.text == file.reason);
                                    }))
            << file.name;
        ModelData_Model next;
        WriteBytes(folder.Path() / "good.stp", step);
        EXPECT_TRUE(Import(folder.Path() / "good.stp", next)) << "after " << file.name;
    }
    ModelData_Model model;
    EXPECT_FALSE(Import(folder.Path() / "missing.stp", model));
    EXPECT_FALSE(Import(folder.Path() / "missing.igs", model));
    std::filesystem::create_directory(folder.Path() / "folder.stp");
    EXPECT_FALSE(Import(folder.Path() / "folder.stp", model));
    EXPECT_FALSE(STEP_Reader().Transfer(model)) << "without a file";
}

// What the file does not say of shapes may be damaged or unknown.
TEST(BadFiles, DamageThatNoShapeNeedsIsNoHindrance)
{
    const ScratchFolder folder;
    WriteBytes(
        folder.Path() / "a.stp",
        Replaced(StepSeeds()[1].bytes, "ENDSEC;\nEND-ISO",
                 "#90001=SOMETHING_NEWER('x',#1);\n#90002=REPRESENTATION('',(#90001),$);\nENDSEC;\nEND-ISO"));
    ModelData_Model model;
    EXPECT_TRUE(Import(folder.Path() / "a.stp", model));
}

volatile int* volatile nowhere = nullptr;

// Deeper than any stack, in a way that the compiler cannot turn into a loop.
unsigned Descend(unsigned depth);
unsigned (*volatile descend)(unsigned) = Descend;

unsigned Descend(unsigned depth)
{
    volatile char space[1024] = {};
    const unsigned below = descend(depth + 1);
    return below + static_cast<unsigned>(space[below % 1024]);
}

TEST(EngineScope, TurnsEveryEndIntoFalseAndPutsTheProcessBack)
{
    const auto before = [](int signal) {
        struct sigaction action = {};
        sigaction(signal, nullptr, &action);
        return action.sa_handler;
    };
    signal(SIGSEGV, SIG_IGN);
    Interface_Static::SetCVal("xstep.cascade.unit", "M");
    const int printers = Message::DefaultMessenger()->Printers().Length();
    const std::function<bool()> Ends[] = {
        [] { return true; },
        [] { return false; },
        []() -> bool { throw Standard_DomainError("kernel"); },
        []() -> bool { throw std::runtime_error("standard"); },
        []() -> bool { throw 42; },
#if !defined(__SANITIZE_ADDRESS__)
        [] { return *nowhere == 0; },
        [] { return Descend(0) > 0; },
#endif
        [] { return occt::RunGuarded(occt::EngineUse::Iges, []() -> bool { throw 1; }); },
    };
    for (const auto& end : Ends) {
        EXPECT_EQ(occt::RunGuarded(occt::EngineUse::Iges, end), &end == &Ends[0]);
        EXPECT_EQ(before(SIGSEGV), SIG_IGN);
        EXPECT_STREQ(Interface_Static::CVal("xstep.cascade.unit"), "M");
        EXPECT_EQ(Message::DefaultMessenger()->Printers().Length(), printers);
    }
    EXPECT_TRUE(occt::RunGuarded(occt::EngineUse::Iges, [] {
        return std::string(Interface_Static::CVal("xstep.cascade.unit")) == "MM" &&
               Message::DefaultMessenger()->Printers().IsEmpty();
    }));
    signal(SIGSEGV, SIG_DFL);
    Interface_Static::SetCVal("xstep.cascade.unit", "MM");
}

} // namespace cadex::test
