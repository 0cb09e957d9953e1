#include <CLI/CLI.hpp>

#include "TidewellCLI/Arguments.h"
#include "TidewellCLI/Commands.h"
#include "TidewellCLI/Interruption.h"
#include "TidewellCLI/Output.h"
#include "TidewellCLI/PasswordSource.h"

int main(int argumentCount, char** arguments) {
  reserveStandardStreams();
  Interruption::install(showTyping);
  int exitCode = ExitCode::done;
  CLI::App app("Gets WhatsApp chats and media out of a local iPhone backup. The backup is never changed.", "tidewell");
  app.set_version_flag("--version", "tidewell " TIDEWELL_VERSION);
  app.failure_message(Arguments::wrongUsage);
  app.require_subcommand(1);
  addListCommand(app, exitCode);
  addScanCommand(app, exitCode);
  addExportCommand(app, exitCode);
  addDedupeCommand(app, exitCode);
  addVerifyCommand(app, exitCode);
  addRenderCommand(app, exitCode);
  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::ParseError& error) {
    // Help and the version are told by such an error, too.
    if (app.exit(error) != 0) return ExitCode::usage;
  }
  if (flushOutput()) return exitCode;
  printErrorLine("The result could not be written.");
  return exitCode == ExitCode::done ? ExitCode::failed : exitCode;
}
