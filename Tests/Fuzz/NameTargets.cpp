#include "Tests/Fuzz/NameTargets.h"

#include <set>
#include <string>
#include <vector>

#include "TidewellCore/Destination/FolderAllocator.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/Precondition.h"
#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/PortableNames.h"
#include "TidewellCore/UsedNames.h"

namespace {

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

void checkName(const std::string& name) {
  precondition(!name.empty() && name != "." && name != "..", "a name names something");
  precondition(name.find('/') == std::string::npos && name.find('\0') == std::string::npos, "a name is one component");
  precondition(name.size() <= FileNaming::maximumNameBytes, "a file system takes the name");
}

// `original` as a database gives it, which is UTF-8.
void checkNamesOf(const std::string& original, UsedNames& used) {
  static const DateFormatter stamps = FileNaming::stampFormatter(TimeZone{"UTC"}, Locale{"en_US"});
  checkName(FileNaming::sanitizeFolderName(original));
  const std::string exported = FileNaming::exportFileName(dateFromUnixTime(0), original, stamps);
  checkName(exported);
  for (const int index : {1, 2, 10, 12345678}) checkName(FileNaming::variant(exported, index));
  checkName(PortableNames::portable(exported));
  const UsedNames before = used;
  const std::string unique = used.uniquify(exported);
  checkName(unique);
  precondition(!before.contains(unique), "no two files have one name");
  precondition(used.contains(unique), "a name that was given is taken");
}

void checkFolders(const FolderAllocator::PlannedNames& planned, const ChatFolders& folders) {
  std::set<std::string> keys;
  for (const auto& [jid, names] : planned) {
    const auto folder = folders.find(jid);
    precondition(folder != folders.end(), "every chat has a folder");
    checkName(folder->second);
    precondition(!FolderAllocator::isReserved(folder->second), "no chat has a folder of the export's own");
    precondition(keys.insert(FileNaming::normalizedKey(folder->second)).second, "no two chats have one folder");
  }
}

}  // namespace

void NameTargets::fileNaming(ByteView input) {
  UsedNames used;
  for (const std::string_view line : split(textOf(input), '\n')) {
    if (Text::isValid(line)) checkNamesOf(std::string(line), used);
  }
}

void NameTargets::folderAllocation(ByteView input) {
  ChatTables tables;
  FolderAllocator::PlannedNames planned;
  FolderAllocator::FolderContents existing;
  FolderAssignment persisted;
  for (const std::string_view line : split(textOf(input), '\n')) {
    if (!Text::isValid(line)) continue;
    std::vector<std::string_view> fields = split(line, '\t');
    fields.resize(4);
    const ChatRecord chat{.pk = static_cast<std::int64_t>(tables.chats.size() + 1),
                          .jid = std::string(fields[0]),
                          .name = std::string(fields[1])};
    // A chat without a JID is that of nobody known, as ownerJID has it.
    if (Text::trimmed(chat.jid).empty()) continue;
    tables.chats.emplace(chat.pk, chat);
    planned.try_emplace(ChatStorageSnapshot().canonicalChatJID(chat.jid),
                        std::vector<std::string>{"2023-03-08_202640_a.jpg"});
    if (FileNaming::isSafeComponent(fields[2])) persisted.emplace(chat.jid, fields[2]);
    if (FileNaming::isSafeComponent(fields[3])) existing.emplace(fields[3], std::vector<std::string_view>{});
  }
  const ChatStorageSnapshot snapshot(std::move(tables));
  for (const NameForm form : {NameForm::plain, NameForm::portable}) {
    checkFolders(
        planned,
        FolderAllocator::allocate(
            {.exportFileNames = planned, .existing = existing, .persisted = persisted, .nameForm = form}, snapshot));
  }
}
