#pragma once

#include <QString>

#include <vector>

/// One thing that the engine refused, left out or repaired while it read or wrote a file.
struct EngineReport
{
    QString kind;      ///< "refused", "left out", "repaired" or "noted"
    QString text;      ///< one line
    qint64 record = 0; ///< number of the record in the file; 0 when there is none
    qint64 count = 1;  ///< how often the same came

    /// "left out (#17, 3 times): a face without a surface", for a person.
    QString Line() const;
};

/// Forgets what the engine told so far; called before each import and export.
void ClearEngineReports();
/// Adds what an export of the programs' own has to tell.
void AddReport(const EngineReport& report);
/// Takes what the engine told since, and what was added. Nothing of the engine with an SDK that tells
/// nothing.
std::vector<EngineReport> TakeEngineReports();
