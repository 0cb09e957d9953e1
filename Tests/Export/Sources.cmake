target_sources(TidewellCoreTests PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/ArchiveDestinationTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ArchiveExportTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ArchiveMediaTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ArchiveReading.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ArchiveTextTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/BackupVerificationTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CopyAheadTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/EarlyEndTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/EveryKindExportTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportPlanTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportPlannerTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportPreferencesTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportReceiptTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportScene.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExportTimingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/DamagedEndsTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExporterDamageTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExporterDestinationTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExporterDriveTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExporterFaultyDriveTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExporterFolderTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExporterKeyTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExporterNamingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExporterTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FormerFoldersTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/GrowingArchiveTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/KnownMediaTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/LibraryFoldersTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MediaCopierTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MovedFilesTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/NamedFailuresTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/OnTheDiskTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PhaseClockTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PlantedLinksTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PlannedChatTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ProgressReporterTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/RenderingPlanTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/RenderingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/RerenderingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/SelectionExportTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/SentDigestTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/VerificationTests.cpp)

# Where the golden listings are, to be compared and, on request, written anew.
set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/ArchiveDestinationTests.cpp ${CMAKE_CURRENT_LIST_DIR}/EveryKindExportTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ExporterTests.cpp PROPERTIES
  COMPILE_DEFINITIONS TIDEWELL_GOLDEN_FOLDER="${CMAKE_CURRENT_LIST_DIR}/Golden")
