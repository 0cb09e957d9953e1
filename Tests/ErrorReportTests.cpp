#include "TidewellCore/ErrorReport.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <new>

#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PropertyList.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

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
  EXPECT_EQ(report.errorDescription, "Could not open the file “/x/a.jpg”: permission is missing.");
  EXPECT_EQ(report.recoverySuggestion, std::nullopt);
}

std::string descriptionOf(const char* attempt, const fs::path& path1, const fs::path& path2, std::errc code) {
  return ErrorReport::of(fs::filesystem_error(attempt, path1, path2, std::make_error_code(code))).errorDescription;
}

TEST(ErrorReport, NamesNoWorkingFile) {
  using enum std::errc;
  const fs::path hidden = fs::path("/x/Ana") / Files::partialName();
  EXPECT_EQ(descriptionOf("Could not write the file", hidden, {}, no_space_on_device),
            "Could not write the file in “/x/Ana”: the disk is full.");
  EXPECT_EQ(descriptionOf("cannot rename", hidden, "/x/Ana/a.jpg", read_only_file_system),
            "Could not rename “/x/Ana/a.jpg”: the disk can only be read.");
  const fs::path working = "/tmp/Tidewell-manifest-281812EB-E8AF-4A63-9C0D-674D2422BAFA";
  EXPECT_EQ(descriptionOf("Could not create a working folder", working, {}, read_only_file_system),
            "Could not create a working folder in “/tmp”: the disk can only be read.");
  EXPECT_EQ(descriptionOf("Could not write the file", working / "Manifest.db", {}, file_too_large),
            "Could not write the file in “/tmp”: a file may not be that large here.");
  EXPECT_EQ(descriptionOf("Could not write the file", "/x/Manifest.db", {}, file_too_large),
            "Could not write the file “/x/Manifest.db”: a file may not be that large here.");
}

TEST(ErrorReport, NamesNoFunctionOfTheStandardLibrary) {
  using enum std::errc;
  EXPECT_EQ(descriptionOf("symlink_status", "/x", {}, io_error), "Could not use “/x”: the disk reports an error.");
  EXPECT_EQ(descriptionOf("cannot create directories", "/x/y", {}, permission_denied),
            "Could not create the folder “/x/y”: permission is missing.");
  EXPECT_EQ(descriptionOf("directory iterator cannot open directory", "/x", {}, no_such_file_or_directory),
            "Could not read the folder “/x”: it is not there.");
}

TEST(ErrorReport, LeavesACauseThatIsToldAlready) {
  EXPECT_EQ(descriptionOf("This is not a regular file", "/x/a", {}, std::errc::invalid_argument),
            "This is not a regular file: “/x/a”.");
}

TEST(ErrorReport, ShowsWhatTheStandardLibraryReallyThrows) {
  try {
    fs::rename("/nowhere/a", "/nowhere/b");
    FAIL() << "nothing was thrown";
  } catch (const std::exception& error) {
    EXPECT_EQ(ErrorReport::of(error).errorDescription, "Could not rename “/nowhere/a”: it is not there.");
  }
}

TEST(ErrorReport, ShowsWhatAPropertyListSays) {
  EXPECT_EQ(ErrorReport::of(PropertyListError("The property list is empty.")),
            (ErrorReport{.caseName = "ioFailure", .errorDescription = "The property list is empty."}));
}

TEST(ErrorReport, ShowsThatMemoryRanOut) {
  EXPECT_EQ(ErrorReport::of(std::bad_alloc()).errorDescription, "This computer has not enough free memory.");
}

}  // namespace
