#include <cadex/internal/Reports.hxx>

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

namespace cadex {
namespace internal {
namespace {

constexpr std::size_t MostReports = 1000;

struct State
{
    std::mutex lock;
    std::vector<Report> reports;
    std::map<std::pair<Report::Kind, std::string>, std::size_t> places;
};

State& TheState()
{
    static State state;
    return state;
}

std::string WithoutControls(std::string text)
{
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            c = ' ';
        }
    }
    return text;
}

} // namespace

void Reports::Add(Report::Kind kind, std::string text, std::uint64_t record)
{
    text = WithoutControls(std::move(text));
    State& state = TheState();
    const std::lock_guard guard(state.lock);
    const auto [place, isNew] = state.places.try_emplace({kind, text}, state.reports.size());
    if (!isNew) {
        ++state.reports[place->second].count;
    } else if (state.reports.size() < MostReports) {
        state.reports.push_back({kind, std::move(text), record, 1});
    } else {
        state.places.erase(place);
    }
}

void Reports::Clear()
{
    Take();
}

bool Reports::Have(Report::Kind kind)
{
    State& state = TheState();
    const std::lock_guard guard(state.lock);
    return std::any_of(state.reports.begin(), state.reports.end(),
                       [kind](const Report& report) { return report.kind == kind; });
}

std::vector<Report> Reports::Take()
{
    State& state = TheState();
    const std::lock_guard guard(state.lock);
    state.places.clear();
    return std::exchange(state.reports, {});
}

} // namespace internal
} // namespace cadex
