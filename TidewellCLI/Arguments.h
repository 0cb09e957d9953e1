#pragma once

#include <string>

namespace CLI {
class App;
class Error;
class Option;
}  // namespace CLI

// What the commands' arguments have in common.
namespace Arguments {

// A file or folder to be named; an empty name is wrong usage.
CLI::Option* addPath(CLI::App& command, const std::string& name, std::string& path, const std::string& description);

// What is told of wrong usage. Of arguments that nothing takes it repeats an
// option's name at most: a password may be among them.
std::string wrongUsage(const CLI::App* app, const CLI::Error& error);

}  // namespace Arguments
