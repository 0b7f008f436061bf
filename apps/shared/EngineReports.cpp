#include "apps/shared/EngineReports.h"

#include <QStringList>

#include <utility>

#if __has_include(<cadex/internal/Reports.hxx>)
#include <cadex/internal/Reports.hxx>
#define ZEMTAR_ENGINE_REPORTS 1
#endif

QString EngineReport::Line() const
{
    QStringList details;
    if (record > 0) {
        details << QStringLiteral("#%1").arg(record);
    }
    if (count > 1) {
        details << QStringLiteral("%1 times").arg(count);
    }
    return details.isEmpty()
               ? QStringLiteral("%1: %2").arg(kind, text)
               : QStringLiteral("%1 (%2): %3").arg(kind, details.join(QStringLiteral(", ")), text);
}

namespace {

std::vector<EngineReport>& AddedReports()
{
    static std::vector<EngineReport> reports;
    return reports;
}

} // namespace

void AddReport(const EngineReport& report)
{
    AddedReports().push_back(report);
}

#ifdef ZEMTAR_ENGINE_REPORTS
namespace {

QString NameOf(cadex::internal::Report::Kind kind)
{
    using Kind = cadex::internal::Report::Kind;
    switch (kind) {
    case Kind::Refused:
        return QStringLiteral("refused");
    case Kind::LeftOut:
        return QStringLiteral("left out");
    case Kind::Repaired:
        return QStringLiteral("repaired");
    case Kind::Noted:
        break;
    }
    return QStringLiteral("noted");
}

} // namespace

void ClearEngineReports()
{
    AddedReports().clear();
    cadex::internal::Reports::Clear();
}

std::vector<EngineReport> TakeEngineReports()
{
    std::vector<EngineReport> reports = std::exchange(AddedReports(), {});
    for (const cadex::internal::Report& report : cadex::internal::Reports::Take()) {
        reports.push_back({NameOf(report.kind), QString::fromStdString(report.text),
                           static_cast<qint64>(report.record), static_cast<qint64>(report.count)});
    }
    return reports;
}
#else
void ClearEngineReports()
{
    AddedReports().clear();
}

std::vector<EngineReport> TakeEngineReports()
{
    return std::exchange(AddedReports(), {});
}
#endif
