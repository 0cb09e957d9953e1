#include "TidewellCLI/SelectionOptions.h"

#include <CLI/CLI.hpp>

namespace {

void addChats(CLI::App& command, const std::string& name, std::vector<std::string>& chats, const std::string& help) {
  const auto fault = [](const std::string& given) { return given.empty() ? "may not be empty" : std::string(); };
  command.add_option(name, chats, help)->allow_extra_args(false)->check(fault, "")->type_name("CHAT");
}

void addDay(CLI::App& command, const std::string& name, std::optional<Day>& day, const std::string& help) {
  const auto take = [name, &day](const std::string& text) {
    day = dayFromISO8601(text);
    if (!day) throw CLI::ValidationError(name, "\"" + text + "\" is no day as \"2024-05-31\"");
  };
  command.add_option_function<std::string>(name, take, help)->type_name("DATE");
}

}  // namespace

void SelectionOptions::addOptions(CLI::App& command) {
  addChats(command, "--chat", selection.chats,
           "A chat to take, by its name, its number or its JID; every other one is left out. May be repeated");
  addChats(command, "--not-chat", selection.notChats, "A chat to leave out, named in the same way. May be repeated");
  addDay(command, "--since", selection.since, "The first day of the messages to take, as \"2024-05-01\"");
  addDay(command, "--until", selection.until, "The last day of them, as \"2024-05-31\"");
}

void SelectionOptions::requireSense() const {
  const bool isEndless = !selection.since || !selection.until;
  if (!isEndless && *selection.until < *selection.since) {
    throw CLI::ValidationError("--until", "comes before --since");
  }
}
