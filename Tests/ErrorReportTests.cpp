#include "TidewellCore/ErrorReport.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <new>

#include "TidewellCore/Platform/PropertyList.h"
#include "TidewellCore/TidewellError.h"

namespace {

TEST(ErrorReport, ShowsTheCoresOwnErrors) {
  EXPECT_EQ(ErrorReport::of(TidewellError::destinationNotWritable("/out")),
            (ErrorReport{.caseName = "destinationNotWritable",
                         .errorDescription = "Cannot write to the destination folder “/out”.",
                         .recoverySuggestion = "Choose a folder you can write to, such as Documents or Desktop."}));
  EXPECT_EQ(ErrorReport::of(TidewellError::cancelled()),
            (ErrorReport{.caseName = "cancelled", .errorDescription = "The export was cancelled."}));
}

TEST(ErrorReport, ShowsWhatTheFileSystemSaysWithItsPath) {
  const std::filesystem::filesystem_error error("Could not open the file", "/x/a.jpg",
                                                std::make_error_code(std::errc::permission_denied));
  const ErrorReport report = ErrorReport::of(error);
  EXPECT_EQ(report.caseName, "ioFailure");
  EXPECT_THAT(report.errorDescription, testing::StartsWith("Could not open the file"));
  EXPECT_THAT(report.errorDescription, testing::HasSubstr("/x/a.jpg"));
  EXPECT_EQ(report.recoverySuggestion, std::nullopt);
}

TEST(ErrorReport, ShowsWhatAPropertyListSays) {
  EXPECT_EQ(ErrorReport::of(PropertyListError("The property list is empty.")),
            (ErrorReport{.caseName = "ioFailure", .errorDescription = "The property list is empty."}));
}

TEST(ErrorReport, ShowsThatMemoryRanOut) {
  EXPECT_EQ(ErrorReport::of(std::bad_alloc()).errorDescription, "This computer has not enough free memory.");
}

}  // namespace
