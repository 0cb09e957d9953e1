#include "Tests/Fuzz/FuzzTargets.h"

#include <array>

#include "Tests/Fuzz/DatabaseTargets.h"
#include "Tests/Fuzz/DestinationTargets.h"
#include "Tests/Fuzz/LibraryTargets.h"
#include "Tests/Fuzz/MessageTargets.h"
#include "Tests/Fuzz/NameTargets.h"
#include "TidewellCore/Archive/ArchiveFormat.h"
#include "TidewellCore/Archive/ChatArchiveJSON.h"
#include "TidewellCore/Archive/MessageLine.h"
#include "TidewellCore/ChatData/EncodedMessage.h"
#include "TidewellCore/Crypto/BackupKeyBag.h"
#include "TidewellCore/Crypto/MBFileArchive.h"
#include "TidewellCore/Platform/Base64.h"
#include "TidewellCore/Platform/BinaryPropertyList.h"
#include "TidewellCore/Platform/Json.h"
#include "TidewellCore/Platform/Precondition.h"
#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/Platform/XMLPropertyList.h"
#include "TidewellCore/TidewellError.h"

namespace {

// Looks at texts alone: shared objects make a full walk exponential.
void checkTexts(const PropertyList& list) {
  const auto* text = list.as<std::string>();
  if (text != nullptr) precondition(Text::isValid(*text), "text of a property list is UTF-8");
  const auto* entries = list.as<PropertyListDictionary>();
  if (entries == nullptr) return;
  for (const auto& [key, value] : *entries) precondition(Text::isValid(key), "keys of a property list are UTF-8");
}

void binaryPropertyList(ByteView input) {
  try {
    checkTexts(parseBinaryPropertyList(input));
  } catch (const PropertyListError&) {
  }
}

void xmlPropertyList(ByteView input) {
  try {
    checkTexts(parseXMLPropertyList(input));
  } catch (const PropertyListError&) {
  }
}

void backupKeyBag(ByteView input) {
  try {
    const BackupKeyBag bag = BackupKeyBag::parse(input);
    precondition(!bag.salt.empty() && bag.iterations > 0 && !bag.classKeys.empty(), "a key bag is usable");
    precondition(bag.unwrappedClassKeyCount() == 0, "a key bag that was just read is locked");
  } catch (const TidewellError& error) {
    precondition(error.is<TidewellError::IOFailure>(), "an unreadable key bag is an ioFailure");
  }
}

void mbFileArchive(ByteView input) {
  const MBFileArchive::Metadata metadata = MBFileArchive::metadata(input);
  if (metadata.encryptionKey) precondition(metadata.encryptionKey->size() > 7, "a key is longer than 7 bytes");
}

void json(ByteView input) {
  const auto document = Json::parse(textOf(input));
  if (!document) return;
  const std::string written = document->write();
  const auto again = Json::parse(written);
  precondition(again && again->write() == written, "what JSON was written is read again");
}

void checkTextsOf(const Json& value) {
  if (const auto* text = value.as<std::string>()) precondition(Text::isValid(*text), "text of JSON is UTF-8");
  if (const auto* items = value.as<Json::Array>()) {
    for (const Json& item : *items) checkTextsOf(item);
  }
  if (const auto* entries = value.as<Json::Object>()) {
    for (const auto& [key, entry] : *entries) checkTextsOf(entry);
  }
}

bool liesWithin(std::string_view part, std::string_view whole) {
  return part.empty() || (part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

void archiveAssignment(ByteView input) {
  const std::string_view text = textOf(input);
  precondition(liesWithin(ChatArchiveJSON::extractJSONValue(text), text), "a value is a part of its text");
  for (const char* identifier : {"CHATS", "ARCHIVE", "__CHAT_PAYLOAD", ""}) {
    const auto remainder = ChatArchiveJSON::remainderAfterAssignment(text, identifier);
    precondition(liesWithin(remainder, text), "what follows is a part of its text");
    const auto value = ChatArchiveJSON::parseAssignment(text, identifier);
    if (!value) continue;
    checkTextsOf(*value);
    const std::string written = ChatArchiveJSON::assignment(identifier, *value);
    precondition(written.find('<') == std::string::npos, "no assignment closes its script");
    const auto again = ChatArchiveJSON::parseAssignment(written, identifier);
    precondition(again && again->write() == value->write(), "an assignment that was written is read again");
    precondition(ChatArchiveJSON::remainderAfterAssignment(written, identifier).empty(), "nothing follows it");
  }
}

// A line as either form; what is read is written, and survives a change.
void messageLine(ByteView input) {
  for (const auto form : {MessageLine::Form::object, MessageLine::Form::columns}) {
    const auto message = MessageLine::message(textOf(input), form);
    if (!message) continue;
    std::string written;
    MessageLine::append(written, *message, form);
    precondition(written.find_first_of("`$\n<") == std::string::npos, "no line ends its script or itself");
    precondition(MessageLine::message(written, form) == message, "a line that was written is read again");
    const auto withID = [](ArchiveMessage& record) { record.id += "+"; };
    Json::Object changed = ArchiveFormat::changed(*message, withID).value();
    precondition(ArchiveFormat::message(changed).id == ArchiveFormat::message(*message).id + "+", "a change is made");
    changed.erase("id");
    Json::Object others = *message;
    others.erase("id");
    precondition(changed == others, "all else stays");
  }
}

// The input once as the text and once as the message in it.
void encodedMessage(ByteView input) {
  EncodedMessage::holdsTime(textOf(input));
  const std::string text = Base64::encode(input);
  const bool isFound = EncodedMessage::holdsTime(text);
  precondition(EncodedMessage::holdsTime(text.substr(0, text.find('='))) == isFound, "padding may be left out");
}

constexpr std::array<FuzzTarget, 22> targets{{{"BinaryPropertyList", binaryPropertyList},
                                              {"XMLPropertyList", xmlPropertyList},
                                              {"BackupKeyBag", backupKeyBag},
                                              {"MBFileArchive", mbFileArchive},
                                              {"Json", json},
                                              {"ArchiveAssignment", archiveAssignment},
                                              {"MessageLine", messageLine},
                                              {"EncodedMessage", encodedMessage},
                                              {"MessageBlobs", MessageTargets::messageBlobs},
                                              {"GroupEvent", MessageTargets::groupEvent},
                                              {"VCard", MessageTargets::vCard},
                                              {"ChatDatabase", DatabaseTargets::chatDatabase},
                                              {"Contacts", DatabaseTargets::contacts},
                                              {"CallHistory", DatabaseTargets::callHistory},
                                              {"LinkedIdentities", DatabaseTargets::linkedIdentities},
                                              {"ManifestDatabase", DatabaseTargets::manifestDatabase},
                                              {"MessageFacts", LibraryTargets::messageFacts},
                                              {"FileNaming", NameTargets::fileNaming},
                                              {"FolderAllocation", NameTargets::folderAllocation},
                                              {"FolderManifest", DestinationTargets::folderManifest},
                                              {"Preferences", DestinationTargets::preferences},
                                              {"Archive", DestinationTargets::archive}}};

}  // namespace

std::span<const FuzzTarget> fuzzTargets() { return targets; }
