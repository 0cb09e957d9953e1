#pragma once

namespace CLI {
class App;
}

// Each adds its command to the program. The command runs while the arguments
// are parsed and leaves the program's exit code in `exitCode`.
void addListCommand(CLI::App& app, int& exitCode);
void addScanCommand(CLI::App& app, int& exitCode);
void addExportCommand(CLI::App& app, int& exitCode);
void addDedupeCommand(CLI::App& app, int& exitCode);
void addVerifyCommand(CLI::App& app, int& exitCode);
void addRenderCommand(CLI::App& app, int& exitCode);
