#pragma once

#include "TidewellCore/Backup/BackupLibrary.h"
#include "TidewellCore/ChatData/ScanResult.h"
#include "TidewellCore/CleanUp/DedupeSummary.h"
#include "TidewellCore/Export/ExportSummary.h"
#include "TidewellCore/Export/RenderSummary.h"
#include "TidewellCore/Export/VerifySummary.h"
#include "TidewellCore/Platform/Json.h"

// Records as JSON: the keys are the names of the fields, absent values are
// left out, paths are text, dates are ISO 8601 in UTC.
namespace JsonRecords {

Json json(const BackupLibrarySnapshot& snapshot);
Json json(const ScanResult& result);
Json json(const ExportSummary& summary);
Json json(const DedupeSummary& summary);
Json json(const VerifySummary& summary);
Json json(const RenderSummary& summary);

}  // namespace JsonRecords
